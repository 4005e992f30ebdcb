#pragma once

#include "kahost_export.h"
#include "moduleobserver.h"

#include <QMap>
#include <QObject>
#include <QString>

class QAction;

// Base of the host modules (one per task the user can open: project
// selection, ...). A module is made by the module launcher, shows its view
// in initView and owns its actions. Modules are always made on the heap:
// closing one deletes it later.
class KAHOST_EXPORT KAModuleCtrl : public QObject, public ModuleObserver
{
    Q_OBJECT
public:
    explicit KAModuleCtrl(const QString& moduleId);
    ~KAModuleCtrl() override;

    const QString& moduleId() const { return m_moduleId; }

    // The module's actions by id (owned by the module).
    QMap<int, QAction*> getActionList() const { return m_actions; }
    // Takes ownership; an action already under that id is deleted.
    void addAction(int id, QAction* action);
    QAction* action(int id) const { return m_actions.value(id); }

    // Builds and shows the module's view; false when it could not be shown.
    // The default has nothing to show.
    virtual bool initView();
    // The module's editor was closed by the user: by default the module asks
    // the module launcher to close it.
    virtual void editorHasBeenClosed();

    // A close request from the module's ribbon ends in editorHasBeenClosed().
    void moduleCloseRequested() override;

private:
    QString m_moduleId;
    QMap<int, QAction*> m_actions; // owned (children of the module)
};
