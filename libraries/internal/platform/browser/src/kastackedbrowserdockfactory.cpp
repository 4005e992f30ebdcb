#include "kastackedbrowserdockfactory.h"

#include "kastackedbrowsereditordockwidget.h"

KAStackedBrowserEditorFactoryInterface* KAStackedBrowserDockFactory::clone() const
{
    return new KAStackedBrowserDockFactory(*this);
}

KAStackedBrowserEditorInterface* KAStackedBrowserDockFactory::createEditor(KAStackedBrowserCtrl* ctrl)
{
    return new KAStackedBrowserEditorDockWidget(ctrl);
}
