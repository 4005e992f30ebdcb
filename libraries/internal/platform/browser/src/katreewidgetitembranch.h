#pragma once

#include "kabrowser_export.h"
#include "katreewidgetitem.h"

// The item of a plug-in's branch root: it sorts by a fixed key, so that the
// branches follow the project in a set order whatever their names.
class KABROWSER_EXPORT KATreeWidgetItemBranch : public KATreeWidgetItem
{
public:
    KATreeWidgetItemBranch(QTreeWidget* view, const KAObject2* object, const QString& sortKey);
    KATreeWidgetItemBranch(QTreeWidgetItem* parentItem, const KAObject2* object, const QString& sortKey);
    // Under the parent item when there is one, at the view's top otherwise.
    static KATreeWidgetItemBranch* make(const KAObject2* object, QTreeWidgetItem* parentItem, QTreeWidget* view,
                                        const QString& sortKey);

    QString sortKey() const override { return m_branchKey; }

private:
    QString m_branchKey;
};
