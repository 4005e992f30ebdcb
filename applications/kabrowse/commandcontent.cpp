#include "commands.h"
#include "treeprinter.h"

#include "kaobject2project.h"
#include "projectmgrinterface.h"
#include "rvfilesystembrowserctrl.h"
#include "ttree.h"

#include <QCoreApplication>
#include <QDir>
#include <QDirIterator>
#include <QFileInfo>
#include <QTextStream>

#include <memory>

namespace {

// Project folders at any depth below root, in path order; the inside of a
// project is not searched for more projects. Symbolic links are not
// followed, so a link back to a parent cannot loop.
QStringList projectFoldersBelow(const QString& root)
{
    QStringList found;
    QStringList pending = {root};
    while (!pending.isEmpty()) {
        const QString folder = pending.takeFirst();
        if (ProjectMgrInterface::isProjectFolder(folder)) {
            found.append(folder);
            continue;
        }
        QStringList children;
        QDirIterator it(folder, QDir::Dirs | QDir::NoDotAndDotDot | QDir::NoSymLinks);
        while (it.hasNext())
            children.append(it.next());
        children.sort();
        pending = children + pending;
    }
    return found;
}

} // namespace

// kabrowse content ROOT: for every project below ROOT, the analyses that
// its compounds lead to and their peak detections, gathered in one batch.
int commandContent(const QStringList& args)
{
    if (args.size() != 1 || args.first().startsWith(QLatin1String("--")))
        return printUsage();
    if (!isFolderArgument(args.first()))
        return 1;
    const QFileInfo info(args.first());
    ProjectMgrInterface* manager = ProjectMgrInterface::returnMe();
    QList<const KAObject2Project*> projects;
    for (const QString& folder : projectFoldersBelow(QDir::cleanPath(info.absoluteFilePath()))) {
        if (const KAObject2Project* project = manager->discoverProject(folder))
            projects.append(project);
    }
    // A null name: the command leaves the user's saved expand state alone.
    RVFileSystemBrowserCtrl ctrl{QString()};
    RVFileSystemBrowserCtrl::AnalysisMap analyses;
    RVFileSystemBrowserCtrl::PeakDetectMap peakDetects;
    ctrl.getProjectsContent(projects, analyses, peakDetects);
    const QMap<const KAObject2Project*, TTree<KAObject2*>*> trees = ctrl.createTreeView(projects, analyses, peakDetects);

    QTextStream out(stdout);
    QTextStream err(stderr);
    for (const KAObject2Project* project : qAsConst(projects)) {
        if (!project->db()) {
            err << QCoreApplication::translate("kabrowse", "The project %1 (%2) cannot be opened: it is listed without content.",
                                               "Le projet %1 (%2) ne peut pas être ouvert : il est listé sans contenu.")
                       .arg(project->name(), QDir::toNativeSeparators(project->folder()))
                << '\n';
            err.flush();
        }
        std::unique_ptr<TTree<KAObject2*>> tree(trees.value(project));
        if (tree) {
            printTree(out, tree.get());
        } else {
            // A project whose compounds lead nowhere is listed alone.
            TTree<KAObject2*> alone;
            alone.setData(const_cast<KAObject2Project*>(project));
            printTree(out, &alone);
        }
    }
    manager->closeAll();
    return 0;
}
