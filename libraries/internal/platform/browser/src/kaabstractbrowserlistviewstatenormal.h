#pragma once

#include "kaabstractbrowserlistviewstate.h"

class KABROWSER_EXPORT KAAbstractBrowserListViewStateNormal : public KAAbstractBrowserListViewState
{
public:
    void init(KAAbstractBrowserListView* view) override;
    void fillTree(KAAbstractBrowserListView* view, TTree<KAObject2*>* root) override;
    void finishFill(KAAbstractBrowserListView* view) override;
};
