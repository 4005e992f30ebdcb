#include "kastackedbrowserctrlstatefilesystem.h"

#include "kafilesystembrowserctrl.h"
#include "kafilesystembrowserfilterpackage.h"
#include "kastackedbrowsereditorinterface.h"

KAStackedBrowserCtrlStateFileSystem::KAStackedBrowserCtrlStateFileSystem(KAStackedBrowserCtrl* context)
    : KAStackedBrowserCtrlState(context)
    , m_ctrl(new KAFileSystemBrowserCtrl(QStringLiteral("StackedBrowser")))
{
    m_filter->remove(KAObjectTypeGlobalIndexation);
    m_filter->remove(KAObjectTypeIdentifications);
    m_ctrl->init(m_filter, nullptr, false);
    m_ctrl->initView(nullptr);
    if (KAStackedBrowserEditorInterface* dock = editor())
        m_ctrl->setSearchProcessProgress(dock->getSearchProgressBar());
}

KAStackedBrowserCtrlStateFileSystem::~KAStackedBrowserCtrlStateFileSystem()
{
    delete m_ctrl;
}

KAAbstractBrowserCtrl* KAStackedBrowserCtrlStateFileSystem::getCtrl() const
{
    return m_ctrl;
}

void KAStackedBrowserCtrlStateFileSystem::getTitle(QString& title) const
{
    title = tr("File system explorer", "Explorateur de fichiers");
}
