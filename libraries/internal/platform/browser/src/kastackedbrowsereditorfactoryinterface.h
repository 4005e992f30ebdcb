#pragma once

#include "kabrowser_export.h"

class KAStackedBrowserCtrl;
class KAStackedBrowserEditorInterface;

// Made by the host module that places the explorer: makes its editor.
class KABROWSER_EXPORT KAStackedBrowserEditorFactoryInterface
{
public:
    virtual ~KAStackedBrowserEditorFactoryInterface();
    // A new copy of this factory; the caller owns it.
    virtual KAStackedBrowserEditorFactoryInterface* clone() const = 0;
    // A new editor for the controller; the caller owns it.
    virtual KAStackedBrowserEditorInterface* createEditor(KAStackedBrowserCtrl* ctrl) = 0;
};
