#include "katreewidgetitemcreator.h"

#include "katreewidgetitem.h"
#include "katreewidgetitemcreatorabstract.h"

KATreeWidgetItemCreator* KATreeWidgetItemCreator::instance()
{
    static KATreeWidgetItemCreator creator;
    return &creator;
}

void KATreeWidgetItemCreator::addCreator(KATreeWidgetItemCreatorAbstract* creator)
{
    if (creator && !m_creators.contains(creator))
        m_creators.append(creator);
}

void KATreeWidgetItemCreator::removeCreator(KATreeWidgetItemCreatorAbstract* creator)
{
    m_creators.removeAll(creator);
}

KATreeWidgetItem* KATreeWidgetItemCreator::createItemTree(const KAObject2* object, QTreeWidgetItem* parentItem,
                                                         QTreeWidget* view)
{
    if (!object)
        return nullptr;
    // A shared copy: a creator may unregister itself while asked.
    const QVector<KATreeWidgetItemCreatorAbstract*> creators = m_creators;
    for (KATreeWidgetItemCreatorAbstract* creator : creators) {
        if (KATreeWidgetItem* item = creator->createItem(object, parentItem, view))
            return item;
    }
    if (parentItem)
        return new KATreeWidgetItem(parentItem, object);
    return new KATreeWidgetItem(view, object);
}
