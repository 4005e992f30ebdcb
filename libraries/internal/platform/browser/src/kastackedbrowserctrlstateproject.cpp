#include "kastackedbrowserctrlstateproject.h"

#include "kafilesystembrowserfilterpackage.h"
#include "kaprojectbrowserctrl.h"
#include "kastackedbrowsereditorinterface.h"

KAStackedBrowserCtrlStateProject::KAStackedBrowserCtrlStateProject(KAStackedBrowserCtrl* context)
    : KAStackedBrowserCtrlState(context)
    , m_ctrl(new KAProjectBrowserCtrl)
{
    m_filter->remove(KAObjectTypeProject);
    m_ctrl->init(flag(), m_filter);
}

KAStackedBrowserCtrlStateProject::~KAStackedBrowserCtrlStateProject()
{
    delete m_ctrl;
}

KAAbstractBrowserCtrl* KAStackedBrowserCtrlStateProject::getCtrl() const
{
    return m_ctrl;
}

void KAStackedBrowserCtrlStateProject::getTitle(QString& title) const
{
    title = tr("Project explorer", "Explorateur de projet");
}

// The project view never offers the project kind among its filters.
void KAStackedBrowserCtrlStateProject::enter()
{
    KAStackedBrowserCtrlState::enter();
    KAStackedBrowserEditorInterface* dock = editor();
    if (!dock)
        return;
    QList<KAObjectType> allowed = dock->getAllowedFilters();
    if (allowed.contains(KAObjectTypeProject)) {
        allowed.removeAll(KAObjectTypeProject);
        dock->setAllowedFilters(allowed);
        m_projectTypeRemoved = true;
    }
}

void KAStackedBrowserCtrlStateProject::leave()
{
    KAStackedBrowserCtrlState::leave();
    KAStackedBrowserEditorInterface* dock = editor();
    if (!dock || !m_projectTypeRemoved)
        return;
    QList<KAObjectType> allowed = dock->getAllowedFilters();
    allowed.append(KAObjectTypeProject);
    dock->setAllowedFilters(allowed);
    m_projectTypeRemoved = false;
}
