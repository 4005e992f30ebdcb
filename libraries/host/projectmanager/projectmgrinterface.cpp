// STUB: to be replaced by the real project manager.
#include "projectmgrinterface.h"

class ProjectMgrInterface::Private {};
ProjectMgrInterface* ProjectMgrInterface::returnMe() { static ProjectMgrInterface i; return &i; }
ProjectMgrInterface::ProjectMgrInterface() : d(new Private) {}
ProjectMgrInterface::~ProjectMgrInterface() { delete d; }
void ProjectMgrInterface::setWorkspaceFolders(const QStringList&) {}
QStringList ProjectMgrInterface::workspaceFolders() const { return {}; }
void ProjectMgrInterface::rescan() {}
bool ProjectMgrInterface::isProjectFolder(const QString&) { return false; }
QList<const KAObject2Project*> ProjectMgrInterface::projectList() const { return {}; }
const KAObject2Project* ProjectMgrInterface::findProject(const QString&) { return nullptr; }
const KAObject2Project* ProjectMgrInterface::projectOfPath(const QString&) { return nullptr; }
QList<const KAObject2Project*> ProjectMgrInterface::openProjects() const { return {}; }
const KAObject2Project* ProjectMgrInterface::currentProject() const { return nullptr; }
TechDB::TDatabase* ProjectMgrInterface::currentDatabase() const { return nullptr; }
void ProjectMgrInterface::setCurrentProject(const KAObject2Project*) {}
bool ProjectMgrInterface::openProject(const KAObject2Project*, bool, bool) { return false; }
bool ProjectMgrInterface::closeProject(const KAObject2Project*) { return false; }
void ProjectMgrInterface::closeAll() {}
const KAObject2Project* ProjectMgrInterface::createProject(const QString&, const QString&) { return nullptr; }
bool ProjectMgrInterface::deleteProjects(const QList<const KAObject2Project*>&, bool) { return false; }
void ProjectMgrInterface::registerObserver(TProjectMgrObserver*) {}
void ProjectMgrInterface::unregisterObserver(TProjectMgrObserver*) {}
