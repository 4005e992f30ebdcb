#pragma once

#include "kastackedbrowserctrlstate.h"

class KAFileSystemBrowserCtrl;

class KABROWSER_EXPORT KAStackedBrowserCtrlStateFileSystem : public KAStackedBrowserCtrlState
{
public:
    explicit KAStackedBrowserCtrlStateFileSystem(KAStackedBrowserCtrl* context);
    ~KAStackedBrowserCtrlStateFileSystem() override;

    KAAbstractBrowserCtrl* getCtrl() const override;
    void getTitle(QString& title) const override;

private:
    KAFileSystemBrowserCtrl* m_ctrl; // owned
};
