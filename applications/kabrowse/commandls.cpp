#include "commands.h"
#include "treeprinter.h"

#include "kafilesystembrowserctrl.h"
#include "kafilesystembrowserfilterpackage.h"
#include "projectmgrinterface.h"
#include "kaobject2.h"
#include "ttree.h"

#include <QCoreApplication>
#include <QFileInfo>
#include <QTextStream>

namespace {
void expand(KAFileSystemBrowserCtrl& ctrl, TTree<KAObject2*>* node, int level, int depth)
{
    if (level >= depth)
        return;
    TTree<KAObject2*>* first = node->firstChild();
    if (first && !first->nextSibling() && first->data() && first->data()->type() == KAObjectTypeFake)
        ctrl.fillNodeOnExpand(node);
    for (TTree<KAObject2*>* child = node->firstChild(); child; child = child->nextSibling())
        expand(ctrl, child, level + 1, depth);
}
} // namespace

int commandLs(const QStringList& args)
{
    QString root;
    int depth = 1;
    bool files = false;
    QStringList extensions;
    for (int i = 0; i < args.size(); ++i) {
        const QString& a = args.at(i);
        if (a == QLatin1String("--depth") && i + 1 < args.size()) {
            bool ok = false;
            depth = args.at(++i).toInt(&ok);
            if (!ok || depth < 0)
                return printUsage();
        } else if (a == QLatin1String("--files")) {
            files = true;
        } else if (a == QLatin1String("--ext") && i + 1 < args.size()) {
            extensions = args.at(++i).split(QLatin1Char(','), Qt::SkipEmptyParts);
        } else if (root.isEmpty() && !a.startsWith(QLatin1String("--"))) {
            root = a;
        } else {
            return printUsage();
        }
    }
    if (root.isEmpty())
        return printUsage();
    if (!isFolderArgument(root))
        return 1;
    const QFileInfo info(root);
    ProjectMgrInterface::returnMe()->setWorkspaceFolders({info.absoluteFilePath()}, depth);
    KAFileSystemBrowserFilterPackage filter;
    filter.setRootForced(info.absoluteFilePath());
    if (!files)
        filter.remove(FsFiles);
    filter.setExtensionAllowed(extensions);
    // A null name: the command leaves the user's saved expand state alone.
    KAFileSystemBrowserCtrl ctrl{QString()};
    ctrl.init(&filter, nullptr, false);
    TTree<KAObject2*>* tree = ctrl.getTree();
    for (TTree<KAObject2*>* child = tree ? tree->firstChild() : nullptr; child; child = child->nextSibling())
        expand(ctrl, child, 0, depth);
    QTextStream out(stdout);
    printTree(out, tree);
    return 0;
}
