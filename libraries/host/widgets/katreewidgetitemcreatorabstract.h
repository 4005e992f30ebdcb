#pragma once

#include "kahost_export.h"
#include "kaobjecttype.h"

#include <QVector>

class KAObject2;
class KATreeWidgetItem;
class QTreeWidget;
class QTreeWidgetItem;

// Makes the tree items of the objects it knows. Registered with
// KATreeWidgetItemCreator by the modules that show objects of their own.
class KAHOST_EXPORT KATreeWidgetItemCreatorAbstract
{
public:
    virtual ~KATreeWidgetItemCreatorAbstract();

    // Makes the item of object under parentItem when given, else as a
    // top-level item of view; the item belongs to its parent or view.
    // Returns null when this creator does not make items for that object.
    // Runs for every item a view shows: keep it cheap.
    virtual KATreeWidgetItem* createItem(const KAObject2* object, QTreeWidgetItem* parentItem,
                                         QTreeWidget* view) = 0;

    // The kinds of the objects createItem() may make items of; empty (the
    // default) for any kind. A creator is never asked for another kind, so
    // a view full of objects that no creator makes does not ask them all
    // for every item.
    virtual QVector<KAObjectType> itemKinds() const;
};
