#include "commands.h"
#include "projectopener.h"
#include "treeprinter.h"

#include "kaprojectbrowserctrl.h"
#include "kaprojectbrowserfilterpackage.h"

#include <QTextStream>

int commandSearch(const QStringList& args)
{
    QStringList positional;
    int kind = KAObjectTypeProject;
    for (int i = 0; i < args.size(); ++i) {
        if (args.at(i) == QLatin1String("--kind") && i + 1 < args.size()) {
            bool ok = false;
            kind = args.at(++i).toInt(&ok);
            if (!ok)
                return printUsage();
        } else {
            positional.append(args.at(i));
        }
    }
    if (positional.size() != 2 || positional.at(1).isEmpty())
        return printUsage();
    const KAObject2Project* project = openProjectFolder(positional.at(0), true);
    if (!project)
        return 1;
    KAProjectBrowserFilterPackage filter;
    filter.setCurrentUserFilter(KAObjectType(kind));
    KAProjectBrowserCtrl ctrl;
    ctrl.init(&filter, project, true);
    QTextStream out(stdout);
    printTree(out, ctrl.search(positional.at(1)));
    return 0;
}
