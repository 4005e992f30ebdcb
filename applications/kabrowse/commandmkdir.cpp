#include "commands.h"
#include "projectfolders.h"
#include "projectopener.h"

#include "kaprojectbrowserctrl.h"
#include "kaprojectbrowserfilterpackage.h"
#include "kaprojectbrowsermgr.h"

#include <QCoreApplication>
#include <QTextStream>

int commandMkdir(const QStringList& args)
{
    if (args.size() != 2)
        return printUsage();
    const KAObject2Project* project = openProjectFolder(args.at(0), false);
    if (!project)
        return 1;
    KAProjectBrowserFilterPackage filter;
    KAProjectBrowserCtrl ctrl;
    ctrl.init(&filter, project, true);
    const bool made = ProjectFolders::make(ctrl, args.at(1)) != nullptr;
    const bool saved = made && ctrl.mgrList().first()->saveTree();
    ProjectFolders::printMessages();
    QTextStream err(stderr);
    if (!made) {
        err << QCoreApplication::translate("kabrowse", "No branch folder named after the start of %1",
                                           "Aucun dossier de branche ne porte le nom du début de %1")
                   .arg(args.at(1))
            << '\n';
        return 1;
    }
    if (!saved) {
        err << QCoreApplication::translate("kabrowse", "The project tree could not be saved",
                                           "L'arbre du projet n'a pas pu être enregistré")
            << '\n';
        return 1;
    }
    return 0;
}
