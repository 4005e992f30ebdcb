#include "katreewidgetitemsearch.h"

#include "kaobject2search.h"
#include "tpixmapcache.h"

#include <QTreeWidget>

KATreeWidgetItemSearch::KATreeWidgetItemSearch(QTreeWidgetItem* parentItem, QTreeWidget* view,
                                               const KAObject2Search* search)
    : KATreeWidgetItem(parentItem, search)
{
    setIcon(NameColumn, QIcon(TPixmapCache::find("search_object")));
    setToolTip(NameColumn, search->search());
    if (!parentItem && view)
        attach(view, nullptr);
}

const KAObject2Search* KATreeWidgetItemSearch::search() const
{
    return static_cast<const KAObject2Search*>(object());
}
