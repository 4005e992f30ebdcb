#pragma once

#include "kabrowser_export.h"
#include "kastackedbrowsereditorfactoryinterface.h"

// Makes the dock widget editor of the stacked explorer.
class KABROWSER_EXPORT KAStackedBrowserDockFactory : public KAStackedBrowserEditorFactoryInterface
{
public:
    KAStackedBrowserEditorFactoryInterface* clone() const override;
    KAStackedBrowserEditorInterface* createEditor(KAStackedBrowserCtrl* ctrl) override;
};
