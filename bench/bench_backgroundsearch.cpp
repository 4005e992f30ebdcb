// The file-system explorer's background search over every project the host
// knows, through the real mediator, its search workers and its open-all job.
//
//   search-100-projects       the parallel search to its last result, every
//                             project already opened (a first, untimed search
//                             opened them), against the same search run on
//                             one thread, project controller after project
//                             controller
//   search-100-projects-threads  the same search on two plain threads that
//                             share the project controllers, with no view,
//                             no event and no pool, against the sequential
//                             one: what two cores give at best here, for
//                             comparison with search-100-projects
//   search-100-projects-cold  the same, the projects closed before each round:
//                             the open-all job is part of the time
//   search-first-result       time to the first result (baseline: the goal)
//   search-supersede-first-result  a search started while another runs:
//                             time to its own first result (baseline: goal)
//   search-cancel             cancel() while a search runs, until it returns
//                             (baseline: the goal)
#include "benchsupport.h"

#include "kafilesystembrowserctrl.h"
#include "kafilesystembrowserfilterpackage.h"
#include "kafilesystembrowsersearchmediator.h"
#include "kaobject2.h"
#include "kaprojectbrowserctrl.h"
#include "projectmgrinterface.h"
#include "ttree.h"

#include <QApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QTemporaryDir>
#include <QWidget>

#include <atomic>
#include <ctime>
#include <memory>
#include <thread>
#include <vector>

namespace {

// 100 projects of about 20,000 objects each (2 million objects), written
// by two threads before the rounds.
const int ProjectCount = 100;
TSampleGenerator::Options projectOptions()
{
    return Bench::projectOptions(1);
}
const QString Text = QStringLiteral("height");
const QString OtherText = QStringLiteral("calibration");

const double FirstResultGoalMs = 100;
const double SupersedeGoalMs = 150;
const double CancelGoalMs = 100;

// Counts and timestamps the results the mediator hands over, each with the
// number of the search it belongs to (a result of the previous search may
// still be shown before a new search starts).
class TimedCtrl : public KAFileSystemBrowserCtrl
{
public:
    explicit TimedCtrl(const QString& name) : KAFileSystemBrowserCtrl(name) {}

    void startClock()
    {
        m_results.clear();
        m_clock.start();
    }
    void fillTree(Node* node) override
    {
        m_results.append({m_clock.nsecsElapsed() / 1.0e6, mediator() ? mediator()->currentSearch() : 0});
        KAFileSystemBrowserCtrl::fillTree(node);
    }
    // Results since the clock started; a search number of 0 counts all.
    int results(int search = 0) const
    {
        int count = 0;
        for (const Result& result : m_results)
            count += search == 0 || result.search == search ? 1 : 0;
        return count;
    }
    double firstMs(int search = 0) const
    {
        for (const Result& result : m_results) {
            if (search == 0 || result.search == search)
                return result.ms;
        }
        return -1;
    }
    double lastMs() const { return m_results.isEmpty() ? -1 : m_results.last().ms; }

private:
    struct Result {
        double ms;
        int search;
    };
    QElapsedTimer m_clock;
    QVector<Result> m_results;
};

// An explorer without Computer branches (drives, user folders, aliases):
// only the search over the projects is measured.
struct Explorer {
    Explorer()
    {
        filter.remove(FsDrives);
        filter.remove(FsUserFolders);
        filter.remove(FsAliasFolders);
        ctrl.init(&filter, nullptr, false);
        QWidget* view = ctrl.initView(nullptr);
        view->resize(400, 700);
        view->show();
        // Searches go through the controller, as the search field's do,
        // without the delay that waits for the next keystroke.
        ctrl.searchTimer()->setInterval(0);
    }
    KAFileSystemBrowserSearchMediator* mediator() const { return ctrl.mediator(); }
    // The view turns to its search state, then the mediator searches.
    void search(const QString& text)
    {
        ctrl.search(text);
        Bench::waitUntil([this]() { return !ctrl.searchTimer()->isActive(); }, 1000);
    }

    KAFileSystemBrowserFilterPackage filter;
    TimedCtrl ctrl{QStringLiteral("bench-search")};
};

// Runs the event loop until the mediator has nothing more for the current
// search: every project opened (isFinished() alone answers true before the
// open-all job has begun to run) and no result left to come. A worker posts
// its result before it leaves, so once no worker runs the posted results are
// delivered and the check made again. The times measured are those of the
// results shown, so the check waits for events and looks again only every
// 10 ms: a poll each millisecond would wake this thread a hundred times per
// search, each time taking a core from a worker, which no application does.
bool waitFinished(KAFileSystemBrowserSearchMediator* mediator, int limitMs = 120000)
{
    return Bench::waitUntil(
        [mediator]() {
            if (!mediator->isFinished() || mediator->openedControllers().size() < ProjectCount)
                return false;
            QCoreApplication::sendPostedEvents(mediator, 0);
            return mediator->isFinished();
        },
        limitMs, 10);
}

// The first result of the mediator's current search.
bool waitFirstResult(const TimedCtrl& ctrl, int limitMs = 5000)
{
    return Bench::waitUntil([&ctrl]() { return ctrl.results(ctrl.mediator()->currentSearch()) > 0; }, limitMs);
}

// The same search on this thread, one project controller after another.
int searchSequentially(const QList<KAAbstractBrowserCtrl*>& ctrls, const QString& text)
{
    int kept = 0;
    for (KAAbstractBrowserCtrl* ctrl : ctrls) {
        auto* project = dynamic_cast<KAProjectBrowserCtrl*>(ctrl);
        TTree<KAObject2*>* result = project ? project->takeSearchResult(text) : nullptr;
        if (!result)
            continue;
        kept += result->childCount() > 0 ? 1 : 0;
        if (!result->ownsData())
            delete result->data();
        delete result;
    }
    return kept;
}

// The processor time this thread has used: what the GUI thread takes from
// the workers during a search.
double threadCpuMs()
{
    timespec now{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
    return now.tv_sec * 1.0e3 + now.tv_nsec / 1.0e6;
}

// Two generator threads: the projects are independent databases.
bool generate(const QString& dir)
{
    std::atomic<int> next{0};
    std::atomic<bool> failed{false};
    auto work = [&]() {
        for (int p = next++; p < ProjectCount && !failed; p = next++) {
            const QString name = QStringLiteral("Search %1").arg(p + 1, 3, 10, QLatin1Char('0'));
            QString error;
            if (!TSampleGenerator::generateProject(QDir(dir).filePath(name), name, projectOptions(),
                                                   quint32(1000 + p), &error)) {
                Bench::note("project %d not made: %s", p + 1, qPrintable(error));
                failed = true;
            }
        }
    };
    std::thread helper(work);
    work();
    helper.join();
    return !failed;
}

} // namespace

int main(int argc, char** argv)
{
    Bench::initEnvironment();
    QApplication app(argc, argv);

    QTemporaryDir dir;
    const double generationMs = Bench::timeMs([&]() {
        if (!generate(dir.path()))
            std::exit(1);
    });
    ProjectMgrInterface* projects = ProjectMgrInterface::returnMe();
    projects->setWorkspaceFolders({dir.path()});
    Bench::note("generated %d projects in %.0f ms; the host lists %d", ProjectCount, generationMs,
                projects->projectList().size());

    // Nine rounds of the searches (a search of 100 projects takes about a
    // tenth of a second, and the machine's busy moments move single rounds
    // by a fifth), three of the cold search (each opens the 100 projects
    // twice).
    const int rounds = 9;
    const int coldRounds = 3;
    QVector<double> oursLast, oursFirst, sequential, guiCpu;
    {
        Explorer explorer;
        KAFileSystemBrowserSearchMediator* mediator = explorer.mediator();
        // The first search opens every project.
        const double openMs = Bench::timeMs([&]() {
            explorer.search(Text);
            waitFinished(mediator);
        });
        Bench::note("first search (opening %d projects): %.0f ms, %d results", mediator->openedControllers().size(),
                    openMs, explorer.ctrl.results());

        for (int round = 0; round < rounds; ++round) {
            // Each side starts from an idle event loop, as a search does
            // after the delay that waits for the next keystroke.
            Bench::settle();
            const double cpuBefore = threadCpuMs();
            explorer.ctrl.startClock();
            explorer.search(Text);
            if (!waitFinished(mediator))
                Bench::note("the search did not finish");
            guiCpu.append(threadCpuMs() - cpuBefore);
            oursLast.append(explorer.ctrl.lastMs());
            oursFirst.append(explorer.ctrl.firstMs());
            int kept = 0;
            Bench::settle();
            sequential.append(Bench::timeMs([&]() { kept = searchSequentially(mediator->openedControllers(), Text); }));
            if (kept != explorer.ctrl.results())
                Bench::note("results: %d in parallel, %d in sequence", explorer.ctrl.results(), kept);
        }
        Bench::report(QStringLiteral("search-100-projects"), Bench::medianMs(oursLast), Bench::medianMs(sequential));
        Bench::report(QStringLiteral("search-first-result"), Bench::medianMs(oursFirst), FirstResultGoalMs);
        Bench::note("GUI thread's processor time per search: %.1f ms (median)", Bench::medianMs(guiCpu));

        QVector<double> twoThreads, sequentialAgain;
        const QList<KAAbstractBrowserCtrl*> opened = mediator->openedControllers();
        for (int round = 0; round < rounds; ++round) {
            std::atomic<int> next{0};
            auto work = [&]() {
                for (int i = next++; i < opened.size(); i = next++)
                    searchSequentially({opened.at(i)}, Text);
            };
            twoThreads.append(Bench::timeMs([&]() {
                std::thread helper(work);
                work();
                helper.join();
            }));
            sequentialAgain.append(Bench::timeMs([&]() { searchSequentially(opened, Text); }));
        }
        Bench::report(QStringLiteral("search-100-projects-threads"), Bench::medianMs(twoThreads),
                      Bench::medianMs(sequentialAgain));

        // A search that gives nothing within the time limit counts as the
        // limit, and is said so.
        QVector<double> supersede, cancel;
        for (int round = 0; round < rounds; ++round) {
            explorer.search(Text);
            waitFirstResult(explorer.ctrl);
            explorer.ctrl.startClock();
            explorer.search(OtherText);
            bool answered = false;
            const double waited = Bench::timeMs([&]() { answered = waitFirstResult(explorer.ctrl); });
            const int number = mediator->currentSearch();
            if (answered) {
                supersede.append(explorer.ctrl.firstMs(number));
                waitFinished(mediator);
            } else {
                Bench::note("round %d: the superseding search gave no result within 5 s", round + 1);
                supersede.append(waited);
            }
            mediator->cancel();

            explorer.ctrl.startClock();
            explorer.search(Text);
            waitFirstResult(explorer.ctrl);
            cancel.append(Bench::timeMs([&]() { mediator->cancel(); }));
        }
        Bench::report(QStringLiteral("search-supersede-first-result"), Bench::medianMs(supersede), SupersedeGoalMs);
        Bench::report(QStringLiteral("search-cancel"), Bench::medianMs(cancel), CancelGoalMs);
    }

    // Cold: a new explorer each round, every project closed before. The
    // explorer goes before the projects close: its project controllers
    // hold their databases.
    QVector<double> cold, coldSequential;
    KAFileSystemBrowserFilterPackage sequentialFilter;
    for (int round = 0; round < coldRounds; ++round) {
        projects->closeAll();
        {
            Explorer explorer;
            KAFileSystemBrowserSearchMediator* mediator = explorer.mediator();
            explorer.ctrl.startClock();
            explorer.search(Text);
            if (!waitFinished(mediator))
                Bench::note("the cold search did not finish");
            cold.append(explorer.ctrl.lastMs());
        }
        // The baseline opens the projects too, one after the other.
        projects->closeAll();
        // Its controllers go untimed, as ours stay with the mediator.
        std::vector<std::unique_ptr<KAProjectBrowserCtrl>> ctrls;
        coldSequential.append(Bench::timeMs([&]() {
            for (const KAObject2Project* project : projects->projectList()) {
                if (!projects->openProject(project, false, true))
                    continue;
                ctrls.emplace_back(new KAProjectBrowserCtrl);
                ctrls.back()->init(&sequentialFilter, project, true);
                searchSequentially({ctrls.back().get()}, Text);
            }
        }));
        ctrls.clear();
    }
    Bench::report(QStringLiteral("search-100-projects-cold"), Bench::medianMs(cold), Bench::medianMs(coldSequential));
    projects->closeAll();
    return 0;
}
