#pragma once

#include "kahost_export.h"

#include <QHash>
#include <QList>
#include <QMutex>
#include <QObject>
#include <QSet>
#include <QStringList>
#include <QWaitCondition>

#include <functional>

class KAObject2Project;
class QFileInfo;
class TProjectMgrObserver;
namespace TechDB { class TDatabase; }

// The host's project manager: knows the projects found under the workspace
// folders (plus any opened from elsewhere), keeps the open ones and the
// current one, opens, closes, creates and deletes projects, and tells its
// observers. May be asked to open a project from a pool thread (silently)
// while the GUI thread reads the lists: every list is guarded by one mutex.
// Observers are told on the GUI thread only. The manager owns the project
// objects it lists; a project it forgets (deleted, or gone from the
// workspace) stays allocated until the manager is destroyed, so that no
// pointer handed out ever dangles.
class KAHOST_EXPORT ProjectMgrInterface : public QObject
{
    Q_OBJECT
public:
    enum TProjectAccessModeEnum { AccessModeOpened = 0, AccessModeBrowser = 1 };
    enum OpenMode { OpenNormal = 0, OpenReadOnly = 1, OpenSilent = 2 };

    static ProjectMgrInterface* returnMe();

    // Workspace folders searched for projects: the folders themselves and
    // their sub-folders down to depth levels below, at any depth when depth
    // is negative (never inside a project folder, never twice through a
    // link); rescans at once.
    void setWorkspaceFolders(const QStringList& folders, int depth = 1);
    QStringList workspaceFolders() const;
    void rescan();

    static bool isProjectFolder(const QString& folder);

    // The host's project list.
    QList<const KAObject2Project*> projectList() const;
    // The known project whose folder is the given path, or null. Only the
    // list is looked at, never the disk: cheap enough to ask for every
    // folder of a large listing.
    const KAObject2Project* findProject(const QString& folder) const;
    // The same for a folder's file info: an absolute one is taken as it
    // stands, which spares building its absolute path.
    const KAObject2Project* findProject(const QFileInfo& folder) const;
    // The same, but a project folder not known yet is read from the disk
    // and added to the list.
    const KAObject2Project* discoverProject(const QString& folder);
    // The project that holds a path (the folder itself or a parent folder),
    // discovered if need be.
    const KAObject2Project* projectOfPath(const QString& path);

    QList<const KAObject2Project*> openProjects() const;
    const KAObject2Project* currentProject() const;
    TechDB::TDatabase* currentDatabase() const;
    void setCurrentProject(const KAObject2Project* project);

    // Opens a project: it becomes current unless silent. Returns false (and
    // logs the reason unless silent) when the database is refused.
    bool openProject(const KAObject2Project* project, bool readOnly = false, bool silent = false);
    // Observers hear projectClosed(project) while the database still
    // exists; db() is null afterwards. Called from another thread, the close
    // is carried out later on the GUI thread.
    bool closeProject(const KAObject2Project* project);
    void closeAll();
    bool isOpen(const KAObject2Project* project) const;
    const KAObject2Project* createProject(const QString& folder, const QString& name);
    // Closes the projects, deletes their folders from disk (when flag is
    // true; false only forgets them) and forgets them. GUI thread only.
    bool deleteProjects(const QList<const KAObject2Project*>& projects, bool flag);

    // An observer is registered once however often it asks.
    void registerObserver(TProjectMgrObserver* observer);
    void unregisterObserver(TProjectMgrObserver* observer);

signals:
    void projectListChanged();

private:
    ProjectMgrInterface();
    ~ProjectMgrInterface() override;
    // Closes every database without telling observers: the application is
    // going away.
    static void shutdown();
    struct Found {
        QString folder;
        QString name;
        QString description;
        int state = 0;
    };
    static Found readFolder(const QString& folder);
    static QString cleanFolder(const QString& folder);
    void scanFolder(const QString& folder, int depth, QSet<QString>& visited, QSet<QString>& seen,
                    QList<Found>& found) const;
    // Under m_mutex.
    KAObject2Project* makeProjectLocked(const Found& found);
    void sortLocked();
    void forgetLocked(KAObject2Project* project);
    KAObject2Project* openProjectLocked(const KAObject2Project* project) const;
    bool onGuiThread() const;
    void notifyObservers(const std::function<void(TProjectMgrObserver*)>& call);
    bool closeProjectNow(KAObject2Project* project, bool notify);

    mutable QMutex m_mutex;        // guards every member below
    QWaitCondition m_openFinished; // with m_mutex: an open in progress ended
    QStringList m_workspaceFolders;
    int m_scanDepth = 1;
    QList<KAObject2Project*> m_projects;            // owned; sorted by name
    QHash<QString, KAObject2Project*> m_byFolder;   // not owned: index of m_projects
    QHash<uint, int> m_lastNames;                   // hash of a folder's last name: how many have it
    QSet<const KAObject2Project*> m_foundElsewhere; // outside the workspace: kept by rescans
    QList<KAObject2Project*> m_open;                // not owned (ours, or the caller's)
    QSet<const KAObject2Project*> m_opening;        // being opened by some thread
    KAObject2Project* m_current = nullptr;          // not owned
    QList<KAObject2Project*> m_graveyard;           // owned: forgotten projects
    QList<TProjectMgrObserver*> m_observers;        // not owned
};
