#include "commands.h"
#include "projectopener.h"
#include "treeprinter.h"

#include "kaprojectbrowserctrl.h"
#include "kaprojectbrowserfilter.h"
#include "kaprojectbrowserfilterpackage.h"
#include "kaprojectbrowsermgr.h"
#include "kaobject2.h"
#include "ttree.h"

#include <QTextStream>

namespace {
// The package that keeps only the user-selectable kinds listed (every
// silent switch stays).
bool narrowFilter(KAProjectBrowserFilterPackage& filter, const QString& kinds)
{
    QList<KAObjectType> keep;
    for (const QString& k : kinds.split(QLatin1Char(','), Qt::SkipEmptyParts)) {
        bool ok = false;
        const int value = k.trimmed().toInt(&ok);
        if (!ok)
            return false;
        keep.append(KAObjectType(value));
    }
    for (const KAProjectBrowserFilter* entry : filter.list()) {
        if (entry->active && !keep.contains(entry->type))
            filter.remove(entry->type);
    }
    return true;
}

// Expands the nodes a user would open first: identifications.
void expandIdentifications(KAProjectBrowserMgr* mgr, TTree<KAObject2*>* node)
{
    for (TTree<KAObject2*>* child = node->firstChild(); child; child = child->nextSibling()) {
        if (child->data() && child->data()->type() == KAObjectTypeIdentification)
            mgr->fillNodeOnExpand(child);
        expandIdentifications(mgr, child);
    }
}
} // namespace

int commandTree(const QStringList& args)
{
    QString folder;
    QString kinds;
    for (int i = 0; i < args.size(); ++i) {
        if (args.at(i) == QLatin1String("--kinds") && i + 1 < args.size())
            kinds = args.at(++i);
        else if (folder.isEmpty() && !args.at(i).startsWith(QLatin1String("--")))
            folder = args.at(i);
        else
            return printUsage();
    }
    if (folder.isEmpty())
        return printUsage();
    KAProjectBrowserFilterPackage filter;
    if (!kinds.isEmpty() && !narrowFilter(filter, kinds))
        return printUsage();
    const KAObject2Project* project = openProjectFolder(folder, true);
    if (!project)
        return 1;
    KAProjectBrowserCtrl ctrl;
    ctrl.init(&filter, project, true);
    KAProjectBrowserMgr* mgr = ctrl.mgrList().first();
    expandIdentifications(mgr, mgr->getTree());
    QTextStream out(stdout);
    printTree(out, ctrl.getTree());
    return 0;
}
