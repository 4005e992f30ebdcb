#include "kaabstractbrowserlistviewstatenormal.h"

#include "kaabstractbrowserlistview.h"
#include "ttree.h"

#include <QHeaderView>

void KAAbstractBrowserListViewStateNormal::init(KAAbstractBrowserListView* view)
{
    view->setColumnCount(2);
    view->setColumnHidden(1, true);
    view->header()->setSectionResizeMode(0, QHeaderView::Interactive);
    view->header()->setStretchLastSection(true);
}

void KAAbstractBrowserListViewStateNormal::fillTree(KAAbstractBrowserListView* view, TTree<KAObject2*>* root)
{
    if (!root || !root->data())
        return;
    fillTop(view, root);
    view->sortItems(1, Qt::AscendingOrder);
    view->setSortingEnabled(true);
    view->setUpdatesEnabled(true);
}

void KAAbstractBrowserListViewStateNormal::finishFill(KAAbstractBrowserListView*)
{
}
