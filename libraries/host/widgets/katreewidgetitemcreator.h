#pragma once

#include "kahost_export.h"

#include <QHash>
#include <QVector>

class KAObject2;
class KATreeWidgetItem;
class KATreeWidgetItemCreatorAbstract;
class QTreeWidget;
class QTreeWidgetItem;

// The item factory of every view: asks the registered creators that make
// the object's kind, in registration order, and falls back to a plain
// KATreeWidgetItem. GUI thread only.
class KAHOST_EXPORT KATreeWidgetItemCreator
{
public:
    static KATreeWidgetItemCreator* instance();

    // The creator is not owned; it must be removed before it is destroyed.
    // Adding a creator twice keeps its first place.
    void addCreator(KATreeWidgetItemCreatorAbstract* creator);
    void removeCreator(KATreeWidgetItemCreatorAbstract* creator);
    int creatorCount() const { return m_creators.size(); }

    // The item of object under parentItem when given, else a top-level item
    // of view (a free item, owned by the caller, when both are null). Null
    // for a null object.
    KATreeWidgetItem* createItemTree(const KAObject2* object, QTreeWidgetItem* parentItem, QTreeWidget* view);

private:
    KATreeWidgetItemCreator() = default;
    const QVector<KATreeWidgetItemCreatorAbstract*>& creatorsOf(int kind);

    QVector<KATreeWidgetItemCreatorAbstract*> m_creators; // not owned
    // Per kind, the creators to ask; made when first needed, forgotten
    // whenever the registry changes.
    QHash<int, QVector<KATreeWidgetItemCreatorAbstract*>> m_byKind;
};
