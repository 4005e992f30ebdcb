#pragma once

#include "kastackedbrowserctrlstate.h"

class KAProjectBrowserCtrl;

class KABROWSER_EXPORT KAStackedBrowserCtrlStateProject : public KAStackedBrowserCtrlState
{
public:
    explicit KAStackedBrowserCtrlStateProject(KAStackedBrowserCtrl* context);
    ~KAStackedBrowserCtrlStateProject() override;

    KAAbstractBrowserCtrl* getCtrl() const override;
    KAProjectBrowserCtrl* projectCtrl() const { return m_ctrl; }
    void getTitle(QString& title) const override;
    void enter() override;
    void leave() override;
    bool projectTypeRemoved() const { return m_projectTypeRemoved; }

private:
    KAProjectBrowserCtrl* m_ctrl; // owned
    bool m_projectTypeRemoved = false;
};
