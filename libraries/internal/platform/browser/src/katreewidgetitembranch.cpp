#include "katreewidgetitembranch.h"

KATreeWidgetItemBranch::KATreeWidgetItemBranch(QTreeWidget* view, const KAObject2* object, const QString& sortKey)
    : KATreeWidgetItem(view, object)
    , m_branchKey(sortKey)
{
    updateSortKey();
}

KATreeWidgetItemBranch::KATreeWidgetItemBranch(QTreeWidgetItem* parentItem, const KAObject2* object,
                                               const QString& sortKey)
    : KATreeWidgetItem(parentItem, object)
    , m_branchKey(sortKey)
{
    updateSortKey();
}

KATreeWidgetItemBranch* KATreeWidgetItemBranch::make(const KAObject2* object, QTreeWidgetItem* parentItem,
                                                     QTreeWidget* view, const QString& sortKey)
{
    return parentItem ? new KATreeWidgetItemBranch(parentItem, object, sortKey)
                      : new KATreeWidgetItemBranch(view, object, sortKey);
}
