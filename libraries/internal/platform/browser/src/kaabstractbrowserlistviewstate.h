#pragma once

#include "kabrowser_export.h"

template <typename T> class TTree;
class KAAbstractBrowserCtrl;
class KAAbstractBrowserListView;
class KAObject2;
class KATreeWidgetItem;
class QTimer;

// How a browser list view fills itself: normally, or as search results.
class KABROWSER_EXPORT KAAbstractBrowserListViewState
{
public:
    virtual ~KAAbstractBrowserListViewState();
    virtual void init(KAAbstractBrowserListView* view) = 0;
    virtual void fillTree(KAAbstractBrowserListView* view, TTree<KAObject2*>* root) = 0;
    virtual void createSon(KAAbstractBrowserListView* view, TTree<KAObject2*>* node, KATreeWidgetItem* parentItem);
    virtual void finishFill(KAAbstractBrowserListView* view) = 0;
    // The search state keeps its results when the controller clears the view.
    virtual bool keepsViewOnClear() const { return false; }

protected:
    KAAbstractBrowserCtrl* controller(KAAbstractBrowserListView* view) const;
    QTimer* reactivateTimer(KAAbstractBrowserListView* view) const;
    // Steps shared by both states: sorting and updates off, the top item
    // made and linked, its children built.
    KATreeWidgetItem* fillTop(KAAbstractBrowserListView* view, TTree<KAObject2*>* root);
};
