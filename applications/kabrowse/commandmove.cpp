#include "commands.h"
#include "projectfolders.h"
#include "projectopener.h"

#include "kaobject2.h"
#include "kaprojectbrowserctrl.h"
#include "kaprojectbrowserfilterpackage.h"
#include "kaprojectbrowsermgr.h"
#include "ttree.h"

#include <QCoreApplication>
#include <QTextStream>

namespace {
// The first object of that name in the project tree, the branch folders
// themselves left aside.
const KAObject2* findObject(TTree<KAObject2*>* node, const QString& name)
{
    for (TTree<KAObject2*>* child = node->firstChild(); child; child = child->nextSibling()) {
        const KAObject2* object = child->data();
        if (object && object->name() == name && object->type() != KAObjectTypeFake)
            return object;
        if (const KAObject2* found = findObject(child, name))
            return found;
    }
    return nullptr;
}
} // namespace

int commandMove(const QStringList& args)
{
    if (args.size() != 3)
        return printUsage();
    const KAObject2Project* project = openProjectFolder(args.at(0), false);
    if (!project)
        return 1;
    KAProjectBrowserFilterPackage filter;
    KAProjectBrowserCtrl ctrl;
    ctrl.init(&filter, project, true);
    QTextStream err(stderr);
    const KAObject2* object = findObject(ctrl.getTree(), args.at(1));
    if (!object) {
        err << QCoreApplication::translate("kabrowse", "No object named %1 in the project",
                                           "Aucun objet nommé %1 dans le projet")
                   .arg(args.at(1))
            << '\n';
        return 1;
    }
    TTree<KAObject2*>* target = ProjectFolders::find(ctrl, args.at(2));
    if (!target) {
        err << QCoreApplication::translate("kabrowse", "No folder %1 in the project", "Aucun dossier %1 dans le projet")
                   .arg(args.at(2))
            << '\n';
        return 1;
    }
    QList<const KAObject2*> rejected;
    const bool moved = ctrl.moveItem({object}, target, rejected);
    ProjectFolders::printMessages();
    if (!moved || !rejected.isEmpty()) {
        err << QCoreApplication::translate("kabrowse", "The move was refused", "Le déplacement a été refusé") << '\n';
        return 1;
    }
    return 0;
}
