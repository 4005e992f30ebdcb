#pragma once

#include "kaabstractbrowserlistviewstate.h"

// Results arrive in bursts: sorting and repainting come back once, 100 ms
// after the last fill, instead of after every result.
class KABROWSER_EXPORT KAAbstractBrowserListViewStateSearch : public KAAbstractBrowserListViewState
{
public:
    void init(KAAbstractBrowserListView* view) override;
    void fillTree(KAAbstractBrowserListView* view, TTree<KAObject2*>* root) override;
    void finishFill(KAAbstractBrowserListView* view) override;
    bool keepsViewOnClear() const override { return true; }
};
