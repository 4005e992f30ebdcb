#include "kaabstractbrowserlistviewstate.h"

#include "kaabstractbrowserlistview.h"
#include "katreewidgetitem.h"
#include "ttree.h"

KAAbstractBrowserListViewState::~KAAbstractBrowserListViewState() = default;

KAAbstractBrowserCtrl* KAAbstractBrowserListViewState::controller(KAAbstractBrowserListView* view) const
{
    return view->controller();
}

QTimer* KAAbstractBrowserListViewState::reactivateTimer(KAAbstractBrowserListView* view) const
{
    return view->reactivateTimer();
}

void KAAbstractBrowserListViewState::createSon(KAAbstractBrowserListView* view, TTree<KAObject2*>* node,
                                               KATreeWidgetItem* parentItem)
{
    view->buildChildren(node, parentItem);
}

KATreeWidgetItem* KAAbstractBrowserListViewState::fillTop(KAAbstractBrowserListView* view, TTree<KAObject2*>* root)
{
    view->setSortingEnabled(false);
    view->setUpdatesEnabled(false);
    KATreeWidgetItem* item = view->makeItem(root, nullptr);
    if (item)
        view->createSon(root, item);
    return item;
}
