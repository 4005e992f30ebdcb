#include "projectopener.h"

#include "kaobject2project.h"
#include "messageloggerinterface.h"
#include "projectmgrinterface.h"

#include <QCoreApplication>
#include <QFileInfo>
#include <QTextStream>

const KAObject2Project* openProjectFolder(const QString& folder, bool readOnly)
{
    QTextStream err(stderr);
    const QString path = QFileInfo(folder).absoluteFilePath();
    ProjectMgrInterface* manager = ProjectMgrInterface::returnMe();
    const KAObject2Project* project = manager->discoverProject(path);
    if (!project) {
        err << QCoreApplication::translate("kabrowse", "%1 is not a project folder", "%1 n'est pas un dossier de projet")
                   .arg(folder)
            << '\n';
        return nullptr;
    }
    if (!manager->openProject(project, readOnly, false)) {
        const QStringList messages = MessageLoggerInterface::returnMe()->texts();
        err << (messages.isEmpty() ? QCoreApplication::translate("kabrowse", "Cannot open the project",
                                                                 "Impossible d'ouvrir le projet")
                                   : messages.last())
            << '\n';
        return nullptr;
    }
    return project;
}
