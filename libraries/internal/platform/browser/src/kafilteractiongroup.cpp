#include "kafilteractiongroup.h"

#include "kaprojectbrowserfilter.h"
#include "kaprojectbrowserfilterpackage.h"

#include <QMenu>

KAFilterActionGroup::KAFilterActionGroup(const KAProjectBrowserFilterPackage* filter, QMenu* menu, QObject* parent)
    : QActionGroup(parent)
{
    setExclusive(false);
    if (!filter)
        return;
    for (const KAProjectBrowserFilter* entry : filter->list()) {
        if (!entry->active)
            continue;
        auto* action = new QAction(QIcon(entry->icon), entry->label, this);
        action->setCheckable(true);
        action->setChecked(true);
        action->setData(int(entry->type));
        if (menu)
            menu->addAction(action);
    }
}

QList<KAObjectType> KAFilterActionGroup::types(bool checkedOnly) const
{
    QList<KAObjectType> result;
    for (QAction* a : actions()) {
        if (!checkedOnly || a->isChecked())
            result.append(KAObjectType(a->data().toInt()));
    }
    return result;
}

void KAFilterActionGroup::setAllowed(const QList<KAObjectType>& types)
{
    for (QAction* a : actions())
        a->setEnabled(types.contains(KAObjectType(a->data().toInt())));
}

void KAFilterActionGroup::setCurrent(const QList<KAObjectType>& types)
{
    for (QAction* a : actions())
        a->setChecked(types.contains(KAObjectType(a->data().toInt())));
}

QAction* KAFilterActionGroup::action(KAObjectType type) const
{
    for (QAction* a : actions()) {
        if (a->data().toInt() == type)
            return a;
    }
    return nullptr;
}
