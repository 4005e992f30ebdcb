#pragma once

#include "kahost_export.h"

#include <QHash>
#include <QList>
#include <QObject>
#include <QPointer>
#include <QSet>
#include <QString>

#include <functional>

class KAModuleCtrl;

// The host's module launcher: knows how to make each module, launches a
// module once (a second launch brings the running one back) and closes it.
// GUI thread only.
class KAHOST_EXPORT ModuleLauncherInterface : public QObject
{
    Q_OBJECT
public:
    using Factory = std::function<KAModuleCtrl*()>;

    static ModuleLauncherInterface* returnMe();

    // The factory returns a new module made on the heap (or null). A second
    // registration under the same id replaces the first.
    void registerModule(const QString& id, Factory factory);
    void unregisterModule(const QString& id);
    bool isRegistered(const QString& id) const;

    // The running module of that id, made and shown (initView) on the first
    // launch; it becomes current. Null when the id is unknown, the factory
    // gives nothing or the view could not be shown (the module is then
    // deleted).
    KAModuleCtrl* launch(const QString& id);
    // The running module of that id, or null.
    KAModuleCtrl* module(const QString& id) const;
    QList<KAModuleCtrl*> modules() const;
    // The module launched or brought back last, among the running ones.
    KAModuleCtrl* current() const;

    // Closes a module: it leaves the running list at once and is deleted
    // later, from the event loop, so a module may ask for its own close
    // from inside one of its slots. A second request for the same module
    // changes nothing.
    void closeModule(KAModuleCtrl* module);
    // Deletes every running module now (the host is quitting).
    void closeAll();

signals:
    void moduleLaunched(const QString& id);
    void moduleClosed(const QString& id);

private:
    ModuleLauncherInterface();
    ~ModuleLauncherInterface() override;
    void forget(KAModuleCtrl* module);

    QHash<QString, Factory> m_factories;
    QList<QPointer<KAModuleCtrl>> m_running; // owned: deleted by closeModule/closeAll; launch order
    QPointer<KAModuleCtrl> m_current;        // not owned: one of m_running
    QSet<KAModuleCtrl*> m_closing;           // deleted later; left when destroyed
};
