#include "projectmgrinterface.h"

#include "kaobject2project.h"
#include "messageloggerinterface.h"
#include "tapplicationdata.h"
#include "tassert.h"
#include "tdatabase.h"
#include "tprojectmgrobserver.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <QMutexLocker>
#include <QThread>

#include <algorithm>

namespace {
const char* const SourceFile = "libraries\\host\\projectmanager\\projectmgrinterface";
}

ProjectMgrInterface* ProjectMgrInterface::returnMe()
{
    // Never destroyed: observers unregister from their destructors, which
    // may run during static destruction. The databases are closed when the
    // application object goes away (shutdown).
    static ProjectMgrInterface* instance = new ProjectMgrInterface;
    return instance;
}

ProjectMgrInterface::ProjectMgrInterface()
{
    // The manager belongs to the GUI thread even when a pool thread asks for
    // it first: observers are told from there.
    if (QCoreApplication* app = QCoreApplication::instance()) {
        if (QThread::currentThread() != app->thread())
            moveToThread(app->thread());
    }
    qAddPostRoutine(&ProjectMgrInterface::shutdown);
}

ProjectMgrInterface::~ProjectMgrInterface()
{
    for (KAObject2Project* project : qAsConst(m_open))
        closeProjectNow(project, false);
    qDeleteAll(m_projects);
    qDeleteAll(m_graveyard);
}

void ProjectMgrInterface::shutdown()
{
    ProjectMgrInterface* self = returnMe();
    QList<KAObject2Project*> open;
    {
        QMutexLocker lock(&self->m_mutex);
        open = self->m_open;
    }
    for (KAObject2Project* project : open)
        self->closeProjectNow(project, false);
}

bool ProjectMgrInterface::onGuiThread() const
{
    return QThread::currentThread() == thread();
}

namespace {

// The last name of a path, separators at its end aside.
QStringRef lastName(const QString& path)
{
    int end = path.size();
    while (end > 0 && (path.at(end - 1) == QLatin1Char('/') || path.at(end - 1) == QLatin1Char('\\')))
        --end;
    int start = end;
    while (start > 0 && path.at(start - 1) != QLatin1Char('/') && path.at(start - 1) != QLatin1Char('\\'))
        --start;
    return path.midRef(start, end - start);
}

} // namespace

QString ProjectMgrInterface::cleanFolder(const QString& folder)
{
    return QDir::cleanPath(QFileInfo(folder).absoluteFilePath());
}

bool ProjectMgrInterface::isProjectFolder(const QString& folder)
{
    return !folder.isEmpty() && QFileInfo(TechDB::TDatabase::databasePath(folder)).isFile();
}

// A project whose header cannot be read is still listed (under its folder
// name): opening it then says what is wrong with it.
ProjectMgrInterface::Found ProjectMgrInterface::readFolder(const QString& folder)
{
    Found found;
    found.folder = folder;
    QString name;
    if (TechDB::TDatabase::readProjectHeader(folder, &name, &found.description, &found.state, nullptr))
        found.name = name;
    if (found.name.isEmpty())
        found.name = QDir(folder).dirName();
    return found;
}

KAObject2Project* ProjectMgrInterface::makeProjectLocked(const Found& found)
{
    auto* project = new KAObject2Project(found.name, found.folder);
    project->setDescription(found.description);
    project->setProjectState(found.state);
    m_projects.append(project);
    m_byFolder.insert(found.folder, project);
    ++m_lastNames[qHash(lastName(found.folder))];
    return project;
}

void ProjectMgrInterface::sortLocked()
{
    std::stable_sort(m_projects.begin(), m_projects.end(), [](const KAObject2Project* a, const KAObject2Project* b) {
        const int c = a->name().compare(b->name(), Qt::CaseInsensitive);
        return c != 0 ? c < 0 : a->folder() < b->folder();
    });
}

void ProjectMgrInterface::forgetLocked(KAObject2Project* project)
{
    m_projects.removeAll(project);
    m_byFolder.remove(project->folder());
    const uint name = qHash(lastName(project->folder()));
    if (--m_lastNames[name] <= 0)
        m_lastNames.remove(name);
    m_foundElsewhere.remove(project);
    m_graveyard.append(project);
}

void ProjectMgrInterface::setWorkspaceFolders(const QStringList& folders, int depth)
{
    QStringList cleaned;
    for (const QString& folder : folders)
        cleaned.append(cleanFolder(folder));
    {
        QMutexLocker lock(&m_mutex);
        m_workspaceFolders = cleaned;
        m_scanDepth = depth;
    }
    rescan();
}

QStringList ProjectMgrInterface::workspaceFolders() const
{
    QMutexLocker lock(&m_mutex);
    return m_workspaceFolders;
}

void ProjectMgrInterface::rescan()
{
    // The disk is read without the lock; the lists are merged under it.
    QStringList workspace;
    int depth = 1;
    {
        QMutexLocker lock(&m_mutex);
        workspace = m_workspaceFolders;
        depth = m_scanDepth;
    }
    QList<Found> found;
    QSet<QString> seen;
    QSet<QString> visited;
    for (const QString& root : qAsConst(workspace))
        scanFolder(root, depth, visited, seen, found);
    QList<KAObject2Project*> elsewhere;
    {
        QMutexLocker lock(&m_mutex);
        for (KAObject2Project* project : qAsConst(m_projects)) {
            if (!seen.contains(project->folder()) && m_foundElsewhere.contains(project))
                elsewhere.append(project);
        }
    }
    QSet<const KAObject2Project*> stillOnDisk;
    for (KAObject2Project* project : elsewhere) {
        if (isProjectFolder(project->folder()))
            stillOnDisk.insert(project);
    }

    QMutexLocker lock(&m_mutex);
    for (const Found& f : qAsConst(found)) {
        KAObject2Project* project = m_byFolder.value(f.folder);
        if (!project) {
            makeProjectLocked(f);
            continue;
        }
        m_foundElsewhere.remove(project);
        // An open project's header is its database's business.
        if (!project->db() && !m_opening.contains(project)) {
            if (project->name() != f.name)
                project->setName(f.name);
            project->setDescription(f.description);
            project->setProjectState(f.state);
        }
    }
    const QList<KAObject2Project*> known = m_projects;
    for (KAObject2Project* project : known) {
        const bool keep = seen.contains(project->folder()) || stillOnDisk.contains(project)
            || m_open.contains(project) || m_opening.contains(project);
        if (!keep)
            forgetLocked(project);
    }
    sortLocked();
    lock.unlock();
    emit projectListChanged();
}

QList<const KAObject2Project*> ProjectMgrInterface::projectList() const
{
    QMutexLocker lock(&m_mutex);
    QList<const KAObject2Project*> result;
    result.reserve(m_projects.size());
    for (const KAObject2Project* project : m_projects)
        result.append(project);
    return result;
}

// The search stops at a project folder: what it holds is the project's.
// A folder reached twice, through a link or a workspace folder inside
// another, is searched once.
void ProjectMgrInterface::scanFolder(const QString& folder, int depth, QSet<QString>& visited,
                                     QSet<QString>& seen, QList<Found>& found) const
{
    if (isProjectFolder(folder)) {
        if (!seen.contains(folder)) {
            seen.insert(folder);
            found.append(readFolder(folder));
        }
        return;
    }
    if (depth == 0)
        return;
    const QString canonical = QFileInfo(folder).canonicalFilePath();
    if (canonical.isEmpty() || visited.contains(canonical))
        return;
    visited.insert(canonical);
    const QFileInfoList entries =
        QDir(folder).entryInfoList(QDir::Dirs | QDir::NoDotAndDotDot, QDir::Name | QDir::IgnoreCase);
    for (const QFileInfo& entry : entries)
        scanFolder(cleanFolder(entry.absoluteFilePath()), depth > 0 ? depth - 1 : depth, visited, seen, found);
}

const KAObject2Project* ProjectMgrInterface::findProject(const QString& folder) const
{
    if (folder.isEmpty())
        return nullptr;
    // Most folders asked for are not projects: a last name that no known
    // project has rules a folder out before its path is cleaned.
    const QStringRef name = lastName(folder);
    const bool dots = name == QLatin1String(".") || name == QLatin1String("..");
    QMutexLocker lock(&m_mutex);
    if (!dots && !m_lastNames.contains(qHash(name)))
        return nullptr;
    return m_byFolder.value(cleanFolder(folder));
}

const KAObject2Project* ProjectMgrInterface::findProject(const QFileInfo& folder) const
{
    return findProject(folder.isAbsolute() ? folder.filePath() : folder.absoluteFilePath());
}

const KAObject2Project* ProjectMgrInterface::discoverProject(const QString& folder)
{
    if (folder.isEmpty())
        return nullptr;
    const QString cleaned = cleanFolder(folder);
    {
        QMutexLocker lock(&m_mutex);
        if (const KAObject2Project* known = m_byFolder.value(cleaned))
            return known;
    }
    if (!isProjectFolder(cleaned))
        return nullptr;
    const Found found = readFolder(cleaned);
    KAObject2Project* project = nullptr;
    {
        QMutexLocker lock(&m_mutex);
        project = m_byFolder.value(cleaned);
        if (project)
            return project; // another thread was quicker
        project = makeProjectLocked(found);
        m_foundElsewhere.insert(project);
        sortLocked();
    }
    emit projectListChanged();
    return project;
}

const KAObject2Project* ProjectMgrInterface::projectOfPath(const QString& path)
{
    if (path.isEmpty())
        return nullptr;
    QString folder = cleanFolder(path);
    while (!folder.isEmpty()) {
        {
            QMutexLocker lock(&m_mutex);
            if (KAObject2Project* project = m_byFolder.value(folder))
                return project;
        }
        if (isProjectFolder(folder))
            return discoverProject(folder);
        const QString parent = QFileInfo(folder).path();
        if (parent == folder)
            break;
        folder = parent;
    }
    return nullptr;
}

QList<const KAObject2Project*> ProjectMgrInterface::openProjects() const
{
    QMutexLocker lock(&m_mutex);
    QList<const KAObject2Project*> result;
    for (const KAObject2Project* project : m_open)
        result.append(project);
    return result;
}

bool ProjectMgrInterface::isOpen(const KAObject2Project* project) const
{
    QMutexLocker lock(&m_mutex);
    return openProjectLocked(project) != nullptr;
}

KAObject2Project* ProjectMgrInterface::openProjectLocked(const KAObject2Project* project) const
{
    for (KAObject2Project* open : m_open) {
        if (open == project)
            return open;
    }
    return nullptr;
}

const KAObject2Project* ProjectMgrInterface::currentProject() const
{
    QMutexLocker lock(&m_mutex);
    return m_current;
}

TechDB::TDatabase* ProjectMgrInterface::currentDatabase() const
{
    QMutexLocker lock(&m_mutex);
    return m_current ? m_current->db() : nullptr;
}

void ProjectMgrInterface::setCurrentProject(const KAObject2Project* project)
{
    QMutexLocker lock(&m_mutex);
    if (!project) {
        m_current = nullptr;
        return;
    }
    KAObject2Project* open = openProjectLocked(project);
    if (!open) {
        t_assert("project is open", SourceFile, __LINE__, false);
        return;
    }
    m_current = open;
    TApplicationData::getInstance()->setCurrentProjectReadOnly(open->db() && open->db()->isReadOnly());
}

bool ProjectMgrInterface::openProject(const KAObject2Project* constProject, bool readOnly, bool silent)
{
    if (!constProject) {
        t_assert("project != NULL", SourceFile, __LINE__, false);
        return false;
    }
    // The manager's own projects, or one the caller made: either way the
    // database attaches itself to that very object.
    auto* project = const_cast<KAObject2Project*>(constProject);
    {
        QMutexLocker lock(&m_mutex);
        // Another thread opening the same project: wait for its outcome.
        while (m_opening.contains(project))
            m_openFinished.wait(&m_mutex);
        if (openProjectLocked(project)) {
            if (silent)
                return true;
            const bool changed = m_current != project;
            m_current = project;
            TApplicationData::getInstance()->setCurrentProjectReadOnly(project->db() && project->db()->isReadOnly());
            lock.unlock();
            // The project may have been opened silently by a background job:
            // views following the current project still need to hear of it.
            if (changed)
                notifyObservers([](TProjectMgrObserver* observer) { observer->projectOpened(); });
            return true;
        }
        m_opening.insert(project);
    }

    QString error;
    TechDB::TDatabase* db = TechDB::TDatabase::open(project, readOnly, &error);
    if (db) {
        if (QCoreApplication* app = QCoreApplication::instance()) {
            if (db->thread() != app->thread())
                db->moveToThread(app->thread());
        }
    }
    {
        QMutexLocker lock(&m_mutex);
        m_opening.remove(project);
        if (db) {
            m_open.append(project);
            if (!silent) {
                m_current = project;
                TApplicationData::getInstance()->setCurrentProjectReadOnly(readOnly);
            }
        }
        m_openFinished.wakeAll();
    }
    if (!db) {
        if (!silent)
            MessageLoggerInterface::Error(tr("Cannot open project <b>%1</b>: %2", "Impossible d'ouvrir le projet <b>%1</b> : %2")
                                              .arg(project->name().toHtmlEscaped(), error.toHtmlEscaped()));
        return false;
    }
    if (!silent)
        notifyObservers([](TProjectMgrObserver* observer) { observer->projectOpened(); });
    return true;
}

bool ProjectMgrInterface::closeProject(const KAObject2Project* constProject)
{
    if (!constProject)
        return false;
    KAObject2Project* project = nullptr;
    {
        QMutexLocker lock(&m_mutex);
        project = openProjectLocked(constProject);
    }
    if (!project)
        return false;
    if (!onGuiThread()) {
        QMetaObject::invokeMethod(this, [this, project]() { closeProject(project); }, Qt::QueuedConnection);
        return true;
    }
    return closeProjectNow(project, true);
}

bool ProjectMgrInterface::closeProjectNow(KAObject2Project* project, bool notify)
{
    // Observers look at the project while its database still exists.
    if (notify)
        notifyObservers([project](TProjectMgrObserver* observer) { observer->projectClosed(project); });
    TechDB::TDatabase* db = nullptr;
    {
        QMutexLocker lock(&m_mutex);
        if (!m_open.removeOne(project))
            return false;
        if (m_current == project) {
            m_current = nullptr;
            TApplicationData::getInstance()->setCurrentProjectReadOnly(false);
        }
        db = project->db();
        project->dbChange(nullptr);
    }
    delete db;
    return true;
}

void ProjectMgrInterface::closeAll()
{
    const QList<const KAObject2Project*> open = openProjects();
    for (int i = open.size() - 1; i >= 0; --i)
        closeProject(open.at(i));
}

const KAObject2Project* ProjectMgrInterface::createProject(const QString& folder, const QString& name)
{
    const QString cleaned = cleanFolder(folder);
    QString error;
    if (!TechDB::TDatabase::createProject(cleaned, name, &error)) {
        MessageLoggerInterface::Error(tr("Cannot create project <b>%1</b>: %2", "Impossible de créer le projet <b>%1</b> : %2")
                                          .arg(name.toHtmlEscaped(), error.toHtmlEscaped()));
        return nullptr;
    }
    KAObject2Project* project = nullptr;
    {
        QMutexLocker lock(&m_mutex);
        project = m_byFolder.value(cleaned);
        if (project) {
            project->setName(name.isEmpty() ? QDir(cleaned).dirName() : name);
        } else {
            Found found;
            found.folder = cleaned;
            found.name = name.isEmpty() ? QDir(cleaned).dirName() : name;
            project = makeProjectLocked(found);
            m_foundElsewhere.insert(project);
        }
        sortLocked();
    }
    notifyObservers([project](TProjectMgrObserver* observer) { observer->projectCreated(project); });
    emit projectListChanged();
    return project;
}

bool ProjectMgrInterface::deleteProjects(const QList<const KAObject2Project*>& projects, bool flag)
{
    if (!onGuiThread()) {
        t_assert("deleteProjects on the GUI thread", SourceFile, __LINE__, false);
        return false;
    }
    bool ok = true;
    for (const KAObject2Project* constProject : projects) {
        if (!constProject)
            continue;
        closeProject(constProject);
        KAObject2Project* project = nullptr;
        {
            QMutexLocker lock(&m_mutex);
            project = m_projects.contains(const_cast<KAObject2Project*>(constProject))
                ? const_cast<KAObject2Project*>(constProject)
                : nullptr;
        }
        // Only a folder that is a project is ever removed from the disk.
        if (flag && isProjectFolder(constProject->folder())
            && !QDir(constProject->folder()).removeRecursively()) {
            MessageLoggerInterface::Error(
                tr("The project <b>%1</b> could not be deleted from the disk (%2).",
                   "Le projet <b>%1</b> n'a pas pu être supprimé du disque (%2).")
                    .arg(constProject->name().toHtmlEscaped(),
                         QDir::toNativeSeparators(constProject->folder()).toHtmlEscaped()));
            ok = false;
            continue;
        }
        if (project) {
            QMutexLocker lock(&m_mutex);
            forgetLocked(project);
        }
    }
    emit projectListChanged();
    return ok;
}

void ProjectMgrInterface::registerObserver(TProjectMgrObserver* observer)
{
    if (!observer)
        return;
    QMutexLocker lock(&m_mutex);
    if (!m_observers.contains(observer))
        m_observers.append(observer);
}

void ProjectMgrInterface::unregisterObserver(TProjectMgrObserver* observer)
{
    QMutexLocker lock(&m_mutex);
    m_observers.removeAll(observer);
}

// Observers are widgets and controllers of the GUI thread: a call made on
// another thread reaches them queued. Each is asked in registration order,
// unless it unregistered meanwhile (an earlier observer may destroy it).
void ProjectMgrInterface::notifyObservers(const std::function<void(TProjectMgrObserver*)>& call)
{
    if (!onGuiThread()) {
        QMetaObject::invokeMethod(this, [this, call]() { notifyObservers(call); }, Qt::QueuedConnection);
        return;
    }
    QList<TProjectMgrObserver*> observers;
    {
        QMutexLocker lock(&m_mutex);
        observers = m_observers;
    }
    for (TProjectMgrObserver* observer : observers) {
        {
            QMutexLocker lock(&m_mutex);
            if (!m_observers.contains(observer))
                continue;
        }
        call(observer);
    }
}
