#pragma once

#include "kahost_export.h"

#include <QList>
#include <QObject>
#include <QStringList>

class KAObject2Project;
class TProjectMgrObserver;
namespace TechDB { class TDatabase; }

// The host's project manager: knows the projects found under the workspace
// folders (plus any opened from elsewhere), keeps the open ones and the
// current one, opens, closes, creates and deletes projects, and tells its
// observers. May be asked to open a project from a pool thread (silently);
// everything else runs on the GUI thread.
class KAHOST_EXPORT ProjectMgrInterface : public QObject
{
    Q_OBJECT
public:
    enum TProjectAccessModeEnum { AccessModeOpened = 0, AccessModeBrowser = 1 };
    enum OpenMode { OpenNormal = 0, OpenReadOnly = 1, OpenSilent = 2 };

    static ProjectMgrInterface* returnMe();

    // Workspace folders searched for projects (one level of sub-folders and
    // the folders themselves); rescans at once.
    void setWorkspaceFolders(const QStringList& folders);
    QStringList workspaceFolders() const;
    void rescan();

    static bool isProjectFolder(const QString& folder);

    // The host's project list.
    QList<const KAObject2Project*> projectList() const;
    // The project whose folder is the given absolute path, or null; a
    // project folder not yet known is added to the list.
    const KAObject2Project* findProject(const QString& folder);
    // The project that holds a path (the folder itself or a parent folder).
    const KAObject2Project* projectOfPath(const QString& path);

    QList<const KAObject2Project*> openProjects() const;
    const KAObject2Project* currentProject() const;
    TechDB::TDatabase* currentDatabase() const;
    void setCurrentProject(const KAObject2Project* project);

    // Opens a project: it becomes current unless silent. Returns false (and
    // logs the reason unless silent) when the database is refused.
    bool openProject(const KAObject2Project* project, bool readOnly = false, bool silent = false);
    bool closeProject(const KAObject2Project* project);
    void closeAll();
    const KAObject2Project* createProject(const QString& folder, const QString& name);
    // Deletes the projects' folders from disk and forgets them.
    bool deleteProjects(const QList<const KAObject2Project*>& projects, bool flag);

    void registerObserver(TProjectMgrObserver* observer);
    void unregisterObserver(TProjectMgrObserver* observer);

signals:
    void projectListChanged();

private:
    ProjectMgrInterface();
    ~ProjectMgrInterface() override;
    class Private;
    Private* d; // owned
};
