#include "katreewidgetitemsearchfolder.h"

#include "kaobject2searchfolder.h"
#include "tpixmapcache.h"

#include <QTreeWidget>

KATreeWidgetItemSearchFolder::KATreeWidgetItemSearchFolder(QTreeWidgetItem* parentItem, QTreeWidget* view,
                                                           const KAObject2SearchFolder* folder,
                                                           QAction* saveAction)
    : KATreeWidgetItem(parentItem, folder)
    , m_action(folder->isResults() ? saveAction : nullptr)
{
    setIcon(NameColumn, QIcon(TPixmapCache::find("folder_search")));
    updateSortKey();
    if (!parentItem && view)
        attach(view, nullptr);
}

QString KATreeWidgetItemSearchFolder::sortKey() const
{
    return QStringLiteral("z");
}
