// Building the project tree of a 200,000-object project, how that build
// scales with the project's size, and refreshing one analysis.
//
//   tree-build-200k     our whole tree build (readProject through createTree,
//                       the saved tree of an earlier session read on the way)
//                       on an opened project, against opening its database
//   tree-build-scaling  the same build on 200,000 objects against 20,000
//   refresh-analysis    refreshRequested(analysis kind, one analysis) against
//                       a whole tree build of the same project
#include "benchsupport.h"

#include "kaobject2project.h"
#include "kaprojectbrowserctrl.h"
#include "kaprojectbrowserfilterpackage.h"
#include "kaprojectbrowsermgr.h"
#include "projectmgrinterface.h"
#include "tdatabase.h"
#include "ttree.h"

#include <QApplication>
#include <QFileInfo>

#include <memory>

namespace {

int countNodes(const TTree<KAObject2*>* node)
{
    if (!node)
        return 0;
    int count = 1;
    for (const TTree<KAObject2*>* child = node->firstChild(); child; child = child->nextSibling())
        count += countNodes(child);
    return count;
}

class TreeBench
{
public:
    explicit TreeBench(KAProjectBrowserFilterPackage* filter) : m_filter(filter) {}

    // A view-less controller that reads the project: the whole tree build.
    std::unique_ptr<KAProjectBrowserCtrl> build(const KAObject2Project* project) const
    {
        std::unique_ptr<KAProjectBrowserCtrl> ctrl(new KAProjectBrowserCtrl);
        ctrl->init(m_filter, project, true);
        return ctrl;
    }

    // Times a build; the controller goes untimed.
    double timeBuild(const KAObject2Project* project) const
    {
        std::unique_ptr<KAProjectBrowserCtrl> ctrl;
        const double ms = Bench::timeMs([&]() { ctrl = build(project); });
        ctrl.reset();
        return ms;
    }

private:
    KAProjectBrowserFilterPackage* m_filter; // not owned
};

} // namespace

int main(int argc, char** argv)
{
    Bench::initEnvironment();
    QApplication app(argc, argv);

    Bench::SampleProject small(QStringLiteral("Tree 20k"), Bench::projectOptions(1), 43);
    Bench::SampleProject big(QStringLiteral("Tree 200k"), Bench::projectOptions(10), 42);
    if (!big.isValid() || !small.isValid()) {
        Bench::note("sample projects not made: %s%s", qPrintable(big.error()), qPrintable(small.error()));
        return 1;
    }
    Bench::note("generated %d objects in %.0f ms and %d objects in %.0f ms", big.objectCount(),
                big.generationMs(), small.objectCount(), small.generationMs());

    KAProjectBrowserFilterPackage filter;
    TreeBench bench(&filter);
    // Both projects are measured as a user meets them after the first
    // session: with their saved tree, which every build reads (it lists
    // every node of the tree). With no current project, each manager saves
    // its tree when it goes, untimed.
    ProjectMgrInterface* projects = ProjectMgrInterface::returnMe();
    for (const Bench::SampleProject* sample : {&big, &small}) {
        projects->setCurrentProject(sample->project());
        std::unique_ptr<KAProjectBrowserCtrl> ctrl = bench.build(sample->project());
        ctrl->saveTree();
        Bench::note("%s: %d tree nodes, saved tree of %lld bytes", qPrintable(sample->project()->name()),
                    countNodes(ctrl->getTree()), QFileInfo(ctrl->mgrList().first()->savedTreePath()).size());
    }
    projects->setCurrentProject(nullptr);

    const int rounds = 5;
    // The built controller goes in the untimed setup of the next side.
    std::unique_ptr<KAProjectBrowserCtrl> held;
    Bench::compare(
        QStringLiteral("tree-build-200k"), rounds, [&]() { held = bench.build(big.project()); },
        [&]() {
            // The database alone, on a project object of its own so that the
            // opened project keeps its database.
            KAObject2Project project(QStringLiteral("open only"), big.folder());
            QString error;
            delete TechDB::TDatabase::open(&project, false, &error);
        },
        [&]() { held.reset(); });
    held.reset();

    // Only the builds are timed, not the controllers' destruction.
    {
        QVector<double> large, smallBuilds;
        for (int i = 0; i < rounds; ++i) {
            large.append(bench.timeBuild(big.project()));
            smallBuilds.append(bench.timeBuild(small.project()));
        }
        Bench::report(QStringLiteral("tree-build-scaling"), Bench::medianMs(large), Bench::medianMs(smallBuilds));
    }

    {
        std::unique_ptr<KAProjectBrowserCtrl> ctrl = bench.build(big.project());
        KAProjectBrowserMgr* mgr = ctrl->mgrList().first();
        const QList<const KAObject2*> analyses = big.db()->getObjectLst(KAObjectTypeAnalysis);
        QVector<double> refreshes;
        int accepted = 0;
        // A refresh is cheap: more samples, each on another analysis.
        for (int i = 0; i < 21; ++i) {
            const KAObject2* analysis = analyses.at((i * 7919) % analyses.size());
            refreshes.append(Bench::timeMs([&]() {
                accepted += mgr->refreshRequested(KAObjectTypeAnalysis, analysis) ? 1 : 0;
            }));
        }
        if (accepted != refreshes.size())
            Bench::note("only %d of %d refreshes accepted", accepted, refreshes.size());
        QVector<double> builds;
        for (int i = 0; i < 3; ++i)
            builds.append(bench.timeBuild(big.project()));
        Bench::report(QStringLiteral("refresh-analysis"), Bench::medianMs(refreshes), Bench::medianMs(builds));
    }
    return 0;
}
