#include "kastackedbrowserctrl.h"

#include "kafilesystembrowserctrl.h"
#include "kafilesystembrowserfilterpackage.h"
#include "kaprojectbrowserctrl.h"
#include "kaprojectbrowserfilter.h"
#include "kastackedbrowserctrlstatefilesystem.h"
#include "kastackedbrowserctrlstateproject.h"
#include "kastackedbrowsereditorfactoryinterface.h"
#include "kastackedbrowsereditorinterface.h"
#include "tassert.h"

namespace {
const char* const SourceName = "kastackedbrowserctrl";

// The filter of a state back to the main one, less the active entries the
// user did not keep.
void narrow(KAFileSystemBrowserFilterPackage* target, const KAFileSystemBrowserFilterPackage* main,
            const QList<KAObjectType>& types)
{
    *target = *main;
    for (const KAProjectBrowserFilter* entry : target->list()) {
        if (entry->active && !types.contains(entry->type))
            target->remove(entry->type);
    }
}
} // namespace

KAStackedBrowserCtrl::KAStackedBrowserCtrl(const KAStackedBrowserEditorFactoryInterface& factory)
    : m_factory(factory.clone())
{
}

KAStackedBrowserCtrl::~KAStackedBrowserCtrl()
{
    m_state = nullptr;
    delete m_stateList[stateProject];
    delete m_stateList[stateFileSystem];
    m_stateList[stateProject] = m_stateList[stateFileSystem] = nullptr;
    delete m_factory;
    if (m_editor) {
        m_editor->close();
        delete m_editor;
    }
}

void KAStackedBrowserCtrl::init(KAFileSystemBrowserFilterPackage* filter, bool flag, stateEnum state)
{
    m_filter = filter;
    m_flag = flag;
    m_initialState = state;
    if (filter)
        m_extensions = filter->extensionAllowed();
    m_editor = m_factory->createEditor(this);
    changeState(state);
}

QWidget* KAStackedBrowserCtrl::getEditor() const
{
    return m_editor ? m_editor->widget() : nullptr;
}

KAStackedBrowserCtrlState* KAStackedBrowserCtrl::state(stateEnum state) const
{
    return state == stateProject || state == stateFileSystem ? m_stateList[state] : nullptr;
}

KAFileSystemBrowserCtrl* KAStackedBrowserCtrl::getFileSystemCtrl() const
{
    KAStackedBrowserCtrlState* fs = m_stateList[stateFileSystem];
    return fs ? static_cast<KAFileSystemBrowserCtrl*>(fs->getCtrl()) : nullptr;
}

void KAStackedBrowserCtrl::filterView(const QList<KAObjectType>& types)
{
    if (!m_state) {
        t_assert("m_state != 0", SourceName, __LINE__, false);
        return;
    }
    narrow(m_state->getFilter(), m_filter, types);
    m_state->getCtrl()->refreshCurrentView(false);
}

void KAStackedBrowserCtrl::filterFiles(const QStringList& extensions)
{
    if (m_filter)
        m_filter->setExtensionAllowed(extensions);
    for (KAStackedBrowserCtrlState* state : m_stateList) {
        if (state)
            state->getFilter()->setExtensionAllowed(extensions);
    }
    refreshAllViews();
}

void KAStackedBrowserCtrl::filterFiles()
{
    filterFiles(m_extensions);
}

void KAStackedBrowserCtrl::refreshAllViews()
{
    for (KAStackedBrowserCtrlState* state : m_stateList) {
        if (state)
            state->getCtrl()->refreshCurrentView(false);
    }
}

void KAStackedBrowserCtrl::refreshCurrentView(bool intuitive)
{
    if (m_state)
        m_state->getCtrl()->refreshCurrentView(intuitive);
}

void KAStackedBrowserCtrl::intuitiveDragStart(void* data, KAObjectType type)
{
    if (!m_state || m_state != m_stateList[stateProject])
        return;
    auto* prjCtrl = dynamic_cast<KAProjectBrowserCtrl*>(m_state->getCtrl());
    if (!prjCtrl) {
        t_assert("prjCtrl != 0", SourceName, __LINE__, false);
        return;
    }
    prjCtrl->intuitiveDragStart(data, type);
}

void KAStackedBrowserCtrl::intuitiveDragEnd(void* data)
{
    if (!m_state || m_state != m_stateList[stateProject])
        return;
    auto* prjCtrl = dynamic_cast<KAProjectBrowserCtrl*>(m_state->getCtrl());
    if (!prjCtrl) {
        t_assert("prjCtrl != 0", SourceName, __LINE__, false);
        return;
    }
    prjCtrl->intuitiveDragEnd(data);
}

void KAStackedBrowserCtrl::createState(stateEnum state)
{
    if (state == stateProject)
        m_stateList[stateProject] = new KAStackedBrowserCtrlStateProject(this);
    else if (state == stateFileSystem)
        m_stateList[stateFileSystem] = new KAStackedBrowserCtrlStateFileSystem(this);
    else
        t_assert("false", SourceName, __LINE__, false);
}

void KAStackedBrowserCtrl::changeState(stateEnum state)
{
    const bool valid = state == stateProject || state == stateFileSystem;
    if (valid && !m_stateList[state])
        createState(state);
    if (!valid || !m_stateList[state]) {
        t_assert("m_stateList[state] != 0", SourceName, __LINE__, false);
        return;
    }
    if (m_state == m_stateList[state])
        return;
    if (m_state)
        m_state->leave();
    m_state = m_stateList[state];
    m_state->enter();
}

void KAStackedBrowserCtrl::restoreState()
{
    changeState(m_initialState);
}

void KAStackedBrowserCtrl::registerFileSystemBrowserObserver(KAFileSystemBrowserObserver* observer)
{
    if (!m_stateList[stateFileSystem])
        createState(stateFileSystem);
    if (KAFileSystemBrowserCtrl* fs = getFileSystemCtrl())
        fs->registerObserver(observer);
}

void KAStackedBrowserCtrl::unregisterFileSystemBrowserObserver(KAFileSystemBrowserObserver* observer)
{
    if (KAFileSystemBrowserCtrl* fs = getFileSystemCtrl())
        fs->unregisterObserver(observer);
}

void KAStackedBrowserCtrl::restoreDefaultEditor()
{
    if (m_editor)
        m_editor->restoreDefaultPosition();
}

void KAStackedBrowserCtrl::search(const QString& text)
{
    if (m_editor)
        m_editor->setCurrentSearch(text);
    if (!m_state) {
        t_assert("m_state != 0", SourceName, __LINE__, false);
        return;
    }
    m_state->search(text);
}

KAFileSystemBrowserFilterPackage* KAStackedBrowserCtrl::getCurrentStateFilter() const
{
    if (!m_state) {
        t_assert("m_state != 0", SourceName, __LINE__, false);
        return nullptr;
    }
    return m_state->getFilter();
}

void KAStackedBrowserCtrl::resetCurrentStateFilter(bool intuitive)
{
    if (!m_state) {
        t_assert("m_state != 0", SourceName, __LINE__, false);
        return;
    }
    *m_state->getFilter() = *m_filter;
    refreshCurrentView(intuitive);
}
