#include "katreewidgetitemcreator.h"

#include "kaobject2.h"
#include "katreewidgetitem.h"
#include "katreewidgetitemcreatorabstract.h"

KATreeWidgetItemCreator* KATreeWidgetItemCreator::instance()
{
    static KATreeWidgetItemCreator creator;
    return &creator;
}

void KATreeWidgetItemCreator::addCreator(KATreeWidgetItemCreatorAbstract* creator)
{
    if (creator && !m_creators.contains(creator)) {
        m_creators.append(creator);
        m_byKind.clear();
    }
}

void KATreeWidgetItemCreator::removeCreator(KATreeWidgetItemCreatorAbstract* creator)
{
    if (m_creators.removeAll(creator) > 0)
        m_byKind.clear();
}

const QVector<KATreeWidgetItemCreatorAbstract*>& KATreeWidgetItemCreator::creatorsOf(int kind)
{
    auto it = m_byKind.constFind(kind);
    if (it == m_byKind.constEnd()) {
        QVector<KATreeWidgetItemCreatorAbstract*> creators;
        for (KATreeWidgetItemCreatorAbstract* creator : qAsConst(m_creators)) {
            const QVector<KAObjectType> kinds = creator->itemKinds();
            if (kinds.isEmpty() || kinds.contains(KAObjectType(kind)))
                creators.append(creator);
        }
        it = m_byKind.insert(kind, creators);
    }
    return it.value();
}

KATreeWidgetItem* KATreeWidgetItemCreator::createItemTree(const KAObject2* object, QTreeWidgetItem* parentItem,
                                                         QTreeWidget* view)
{
    if (!object)
        return nullptr;
    // A shared copy: a creator may unregister itself while asked.
    const QVector<KATreeWidgetItemCreatorAbstract*> creators = creatorsOf(int(object->type()));
    for (KATreeWidgetItemCreatorAbstract* creator : creators) {
        if (KATreeWidgetItem* item = creator->createItem(object, parentItem, view))
            return item;
    }
    if (parentItem)
        return new KATreeWidgetItem(parentItem, object);
    return new KATreeWidgetItem(view, object);
}
