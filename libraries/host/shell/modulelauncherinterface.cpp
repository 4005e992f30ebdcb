#include "modulelauncherinterface.h"

#include "kamodulectrl.h"
#include "messageloggerinterface.h"
#include "tassert.h"

#include <QCoreApplication>

namespace {
const char* const SourceFile = "libraries\\host\\shell\\modulelauncherinterface";
}

ModuleLauncherInterface* ModuleLauncherInterface::returnMe()
{
    static ModuleLauncherInterface instance;
    return &instance;
}

ModuleLauncherInterface::ModuleLauncherInterface() = default;

// Modules still running when the process ends are left to it: by then the
// application object, which their widgets need, is gone. The host closes
// them when it quits (closeAll).
ModuleLauncherInterface::~ModuleLauncherInterface() = default;

void ModuleLauncherInterface::registerModule(const QString& id, Factory factory)
{
    if (id.isEmpty() || !factory) {
        t_assert("!id.isEmpty() && factory", SourceFile, __LINE__, false);
        return;
    }
    m_factories.insert(id, std::move(factory));
}

void ModuleLauncherInterface::unregisterModule(const QString& id)
{
    m_factories.remove(id);
}

bool ModuleLauncherInterface::isRegistered(const QString& id) const
{
    return m_factories.contains(id);
}

KAModuleCtrl* ModuleLauncherInterface::module(const QString& id) const
{
    for (const QPointer<KAModuleCtrl>& running : m_running) {
        if (running && running->moduleId() == id)
            return running;
    }
    return nullptr;
}

QList<KAModuleCtrl*> ModuleLauncherInterface::modules() const
{
    QList<KAModuleCtrl*> result;
    for (const QPointer<KAModuleCtrl>& running : m_running) {
        if (running)
            result.append(running);
    }
    return result;
}

KAModuleCtrl* ModuleLauncherInterface::current() const
{
    return m_current;
}

KAModuleCtrl* ModuleLauncherInterface::launch(const QString& id)
{
    if (KAModuleCtrl* running = module(id)) {
        m_current = running;
        return running;
    }
    const auto factory = m_factories.constFind(id);
    if (factory == m_factories.constEnd()) {
        t_assert("isRegistered(id)", SourceFile, __LINE__, false);
        return nullptr;
    }
    KAModuleCtrl* made = (*factory)();
    if (!made) {
        MessageLoggerInterface::Error(tr("The module %1 could not be created.", "Le module %1 n'a pas pu être créé.")
                                          .arg(id.toHtmlEscaped()));
        return nullptr;
    }
    // Listed before its view is built: a module that looks for the current
    // module while it builds finds itself.
    m_running.append(made);
    QPointer<KAModuleCtrl> previous = m_current;
    m_current = made;
    if (!made->initView()) {
        MessageLoggerInterface::Error(tr("The module %1 could not be shown.", "Le module %1 n'a pas pu être affiché.")
                                          .arg(id.toHtmlEscaped()));
        forget(made);
        m_current = previous;
        delete made;
        return nullptr;
    }
    if (QCoreApplication* app = QCoreApplication::instance()) {
        connect(app, &QCoreApplication::aboutToQuit, this, &ModuleLauncherInterface::closeAll,
                Qt::UniqueConnection);
    }
    emit moduleLaunched(id);
    return made;
}

void ModuleLauncherInterface::forget(KAModuleCtrl* module)
{
    for (int i = m_running.size() - 1; i >= 0; --i) {
        if (!m_running.at(i) || m_running.at(i) == module)
            m_running.removeAt(i);
    }
    if (!m_current || m_current == module)
        m_current = m_running.isEmpty() ? nullptr : m_running.last();
}

void ModuleLauncherInterface::closeModule(KAModuleCtrl* module)
{
    if (!module) {
        t_assert("module != NULL", SourceFile, __LINE__, false);
        return;
    }
    if (m_closing.contains(module))
        return;
    m_closing.insert(module);
    connect(module, &QObject::destroyed, this, [this, module]() { m_closing.remove(module); });
    const QString id = module->moduleId();
    forget(module);
    module->deleteLater();
    emit moduleClosed(id);
}

void ModuleLauncherInterface::closeAll()
{
    const QList<KAModuleCtrl*> running = modules();
    for (KAModuleCtrl* module : running) {
        const QString id = module->moduleId();
        forget(module);
        delete module;
        emit moduleClosed(id);
    }
}
