#include "kamodulectrl.h"

#include "modulelauncherinterface.h"
#include "tassert.h"

#include <QAction>

namespace {
const char* const SourceFile = "libraries\\host\\shell\\kamodulectrl";
}

KAModuleCtrl::KAModuleCtrl(const QString& moduleId)
    : m_moduleId(moduleId)
{
    setObjectName(moduleId);
}

KAModuleCtrl::~KAModuleCtrl() = default;

void KAModuleCtrl::addAction(int id, QAction* action)
{
    if (!action) {
        t_assert("action != NULL", SourceFile, __LINE__, false);
        return;
    }
    QAction* previous = m_actions.value(id);
    if (previous == action)
        return;
    delete previous;
    action->setParent(this);
    m_actions.insert(id, action);
}

bool KAModuleCtrl::initView()
{
    return true;
}

void KAModuleCtrl::editorHasBeenClosed()
{
    ModuleLauncherInterface::returnMe()->closeModule(this);
}

void KAModuleCtrl::moduleCloseRequested()
{
    editorHasBeenClosed();
}
