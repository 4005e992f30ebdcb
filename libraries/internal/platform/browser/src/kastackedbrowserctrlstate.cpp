#include "kastackedbrowserctrlstate.h"

#include "kaabstractbrowserctrl.h"
#include "kafilesystembrowserfilterpackage.h"
#include "kaprojectbrowserfilter.h"
#include "kastackedbrowserctrl.h"
#include "kastackedbrowsereditorinterface.h"
#include "tassert.h"

KAStackedBrowserCtrlState::KAStackedBrowserCtrlState(KAStackedBrowserCtrl* context)
    : m_context(context)
    , m_filter(nullptr)
{
    if (!context) {
        t_assert("context != NULL", "kastackedbrowserctrlstate", __LINE__, false);
        m_filter = new KAFileSystemBrowserFilterPackage;
        return;
    }
    m_filter = context->getFilter() ? new KAFileSystemBrowserFilterPackage(*context->getFilter())
                                    : new KAFileSystemBrowserFilterPackage;
}

KAStackedBrowserCtrlState::~KAStackedBrowserCtrlState()
{
    delete m_filter;
}

KAStackedBrowserEditorInterface* KAStackedBrowserCtrlState::editor() const
{
    return m_context ? m_context->editor() : nullptr;
}

KAFileSystemBrowserFilterPackage* KAStackedBrowserCtrlState::mainFilter() const
{
    return m_context ? m_context->getFilter() : nullptr;
}

bool KAStackedBrowserCtrlState::flag() const
{
    return m_context && m_context->flag();
}

void KAStackedBrowserCtrlState::search(const QString& text)
{
    if (KAAbstractBrowserCtrl* ctrl = getCtrl())
        ctrl->search(text);
}

void KAStackedBrowserCtrlState::enter()
{
    KAStackedBrowserEditorInterface* dock = editor();
    KAAbstractBrowserCtrl* ctrl = getCtrl();
    if (!dock || !ctrl)
        return;
    QWidget* view = ctrl->getEditor();
    if (!dock->contains(view))
        dock->addEditor(view);
    dock->setCurrentEditor(view);
    QString title;
    getTitle(title);
    dock->setTitle(title);
    QList<KAObjectType> active;
    for (const KAProjectBrowserFilter* entry : m_filter->list()) {
        if (entry->active)
            active.append(entry->type);
    }
    dock->setCurrentFilter(active);
}

// A search never survives a switch of view.
void KAStackedBrowserCtrlState::leave()
{
    if (KAStackedBrowserEditorInterface* dock = editor())
        dock->setCurrentSearch(QString(""));
    search(QString(""));
}
