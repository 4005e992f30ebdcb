// ctest-label: threads
#include "kafilesystembrowserctrl.h"
#include "kafilesystembrowsereditor.h"
#include "kafilesystembrowserfilterpackage.h"
#include "kafilesystembrowsersearchmediator.h"
#include "kaobject2project.h"
#include "kaprojectbrowserabstract.h"
#include "messageloggerinterface.h"
#include "projectmgrinterface.h"
#include "tdatabase.h"
#include "testfixture.h"
#include "tprocessprogressinterface.h"
#include "ttree.h"

#include <QDir>
#include <QFile>
#include <QSemaphore>
#include <QSet>
#include <QTest>
#include <QThreadPool>

#include <memory>

namespace {

using Node = TTree<KAObject2*>;

// What the view was handed, copied at that moment: the trees go with the
// next search.
struct Shown {
    int search = 0;          // the mediator's current search then
    QString text;            // the mediator's text then
    const KAObject2* head = nullptr;
    const KAObject2* firstChild = nullptr;
    QStringList names;       // every node below the head
};

void collectNames(const Node* node, QStringList* names)
{
    for (const Node* c = node->firstChild(); c; c = c->nextSibling()) {
        if (c->data())
            names->append(c->data()->name());
        collectNames(c, names);
    }
}

class RecordingCtrl : public KAFileSystemBrowserCtrl
{
public:
    using KAFileSystemBrowserCtrl::KAFileSystemBrowserCtrl;
    void fillTree(Node* node) override
    {
        Shown shown;
        shown.search = mediator()->currentSearch();
        shown.text = mediator()->text();
        shown.head = node ? node->data() : nullptr;
        if (node && node->firstChild())
            shown.firstChild = node->firstChild()->data();
        if (node)
            collectNames(node, &shown.names);
        results << shown;
        KAFileSystemBrowserCtrl::fillTree(node);
    }
    QList<Shown> resultsOf(int search) const
    {
        QList<Shown> list;
        for (const Shown& s : results) {
            if (s.search == search)
                list << s;
        }
        return list;
    }
    QList<Shown> results;
};

class RecordingProgress : public TProcessProgressInterface
{
public:
    void startProcess(int steps, const QString&, const QString&) override { log << QStringLiteral("start %1").arg(steps); }
    void advanceProcess(int) override { log << QStringLiteral("step"); }
    void endProcess() override { log << QStringLiteral("end"); }
    QStringList log;
};

bool containsText(const QStringList& names, const QString& text)
{
    for (const QString& name : names) {
        if (name.contains(text, Qt::CaseInsensitive))
            return true;
    }
    return false;
}

} // namespace

// The search over every project: superseding searches, project-name
// matches, short texts, cancelling, destruction, empty and broken project
// lists, and a worker's error reaching the view.
class tst_BackgroundSearch : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void cleanupTestCase();
    void init();
    void cleanup();

    void projectNameMatchOnly_data();
    void projectNameMatchOnly();
    void shortTextsHeadEachResultWithItsProject_data();
    void shortTextsHeadEachResultWithItsProject();
    void secondSearchReusesOpenedProjects();
    void cancelWhileOpeningStopsAndResets();
    void f5DuringSearchRunsItAgain();
    void destroyingControllerDuringSearch();
    void emptyProjectList();
    void projectThatFailsToOpenIsSkipped();
    void workerErrorCancelsAndLogs_data();
    void workerErrorCancelsAndLogs();
    // Last: a job freed under the pool crashes the run; the others report first.
    void supersedingSearchesNeverShowOlderResults();
    void newSearchWhileOpeningWaitsForAPoolThread();

private:
    RecordingCtrl* makeCtrl();
    int projectCount() const { return ProjectMgrInterface::returnMe()->projectList().size(); }
    // Every posted event delivered, no worker running, every result shown
    // and `opened` controllers made: nothing more can arrive.
    bool quiet(int opened);

    std::unique_ptr<TestFixture> m_workspace;
    QStringList m_workspaceFolders;
    std::unique_ptr<TestFixture> m_fixture;
    std::unique_ptr<KAFileSystemBrowserFilterPackage> m_filter;
    std::unique_ptr<RecordingCtrl> m_ctrl;
    std::unique_ptr<QWidget> m_parent;
    RecordingProgress m_progress;
    int m_poolThreads = 0;
};

void tst_BackgroundSearch::initTestCase()
{
    kaInitTestEnvironment();
    m_workspace = std::make_unique<TestFixture>();
    TSampleGenerator::Options options = TestFixture::smallOptions();
    options.projects = 6;
    QString error;
    QVERIFY2(!TSampleGenerator::generate(m_workspace->path(), options, &error).isEmpty(), qPrintable(error));
    // Its content never says "Zebra".
    QVERIFY2(TSampleGenerator::generateProject(m_workspace->filePath("Zebra"), QStringLiteral("Zebra Study"),
                                               TestFixture::smallOptions(), 11, &error),
             qPrintable(error));
    m_workspaceFolders = QStringList{m_workspace->path()};
    m_poolThreads = QThreadPool::globalInstance()->maxThreadCount();
}

void tst_BackgroundSearch::cleanupTestCase()
{
    ProjectMgrInterface::returnMe()->closeAll();
    m_workspace.reset();
}

void tst_BackgroundSearch::init()
{
    m_fixture = std::make_unique<TestFixture>();
    ProjectMgrInterface::returnMe()->setWorkspaceFolders(m_workspaceFolders);
    QCOMPARE(projectCount(), 7);
    QFile::remove(KAProjectBrowserAbstract::treeStatePath());
    MessageLoggerInterface::returnMe()->clear();
    m_filter = std::make_unique<KAFileSystemBrowserFilterPackage>();
    // The Computer tree stays small and free of projects: what is searched
    // is the host's project list, not the tree.
    QVERIFY(QDir().mkpath(m_fixture->filePath("tree")));
    m_filter->setRootForced(m_fixture->filePath("tree"));
    m_progress.log.clear();
}

void tst_BackgroundSearch::cleanup()
{
    m_ctrl.reset();
    QThreadPool::globalInstance()->waitForDone();
    QThreadPool::globalInstance()->setMaxThreadCount(m_poolThreads);
    m_parent.reset();
    m_filter.reset();
    ProjectMgrInterface::returnMe()->closeAll();
    m_fixture.reset();
}

RecordingCtrl* tst_BackgroundSearch::makeCtrl()
{
    m_ctrl = std::make_unique<RecordingCtrl>(QStringLiteral("tst_backgroundsearch"));
    m_ctrl->init(m_filter.get(), nullptr, false);
    m_parent = std::make_unique<QWidget>();
    m_ctrl->initView(m_parent.get());
    m_ctrl->searchTimer()->setInterval(0);
    m_ctrl->setSearchProcessProgress(&m_progress);
    return m_ctrl.get();
}

bool tst_BackgroundSearch::quiet(int opened)
{
    QCoreApplication::sendPostedEvents();
    return QThreadPool::globalInstance()->activeThreadCount() == 0 && m_ctrl->mediator()->queuedResults() == 0
        && m_ctrl->mediator()->openedControllers().size() == opened;
}

// Twice in a row: a result timer tick may sit between two checks.
#define QTRY_QUIET(opened) QTRY_VERIFY_WITH_TIMEOUT(quiet(opened) && quiet(opened), 60000)

void tst_BackgroundSearch::supersedingSearchesNeverShowOlderResults()
{
    RecordingCtrl* ctrl = makeCtrl();
    const QStringList texts{"Sample", "Blank", "Échantillon", "Blank", "Sample", "Café"};
    QList<int> numbers;
    for (const QString& text : texts) {
        ctrl->search(text);
        QTRY_COMPARE(ctrl->mediator()->text(), text); // started, the older ones still running
        numbers << ctrl->mediator()->currentSearch();
        // Results taken off the view wait to be freed, one search's at most.
        QVERIFY(ctrl->mediator()->retiredResultCount() <= projectCount());
    }
    QTRY_QUIET(projectCount());
    QTRY_COMPARE(ctrl->mediator()->retiredResultCount(), 0);

    // Each shown result answers the search in force when it was shown.
    QVERIFY(!ctrl->results.isEmpty());
    for (const Shown& shown : qAsConst(ctrl->results)) {
        QVERIFY2(containsText(shown.names, shown.text),
                 qPrintable(QStringLiteral("search \"%1\" showed %2").arg(shown.text, shown.names.join(", "))));
    }
    // The last search lists every project once, and the view holds exactly that.
    const QList<Shown> last = ctrl->resultsOf(numbers.last());
    QCOMPARE(last.size(), projectCount());
    QSet<const KAObject2*> heads;
    for (const Shown& shown : last)
        heads.insert(shown.head);
    QCOMPARE(heads.size(), projectCount());
    QCOMPARE(ctrl->view()->topLevelItemCount(), projectCount());
    QCOMPARE(ctrl->view()->currentStateId(), KAAbstractBrowserListView::stateSearch);
}

void tst_BackgroundSearch::projectNameMatchOnly_data()
{
    QTest::addColumn<bool>("projects");
    QTest::newRow("projects in the filter: listed") << true;
    QTest::newRow("projects left out: not listed") << false;
}

void tst_BackgroundSearch::projectNameMatchOnly()
{
    QFETCH(bool, projects);
    if (!projects)
        m_filter->remove(KAObjectTypeProject);
    RecordingCtrl* ctrl = makeCtrl();
    ctrl->search(QStringLiteral("zebra"));
    QTRY_VERIFY(ctrl->isSearchActive());
    QTRY_QUIET(projectCount());

    const QList<Shown> shown = ctrl->resultsOf(ctrl->mediator()->currentSearch());
    if (!projects) {
        QVERIFY(shown.isEmpty());
        return;
    }
    QCOMPARE(shown.size(), 1);
    QCOMPARE(shown.first().head->name(), QStringLiteral("Zebra Study"));
    QCOMPARE(shown.first().head->type(), KAObjectTypeProject);
    QVERIFY(shown.first().names.isEmpty()); // no content matched
}

void tst_BackgroundSearch::shortTextsHeadEachResultWithItsProject_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<bool>("projectFirst");
    QTest::newRow("one character") << "B" << true;
    QTest::newRow("two characters") << "Bl" << true;
    QTest::newRow("three characters") << "Bla" << false;
}

void tst_BackgroundSearch::shortTextsHeadEachResultWithItsProject()
{
    QFETCH(QString, text);
    QFETCH(bool, projectFirst);
    RecordingCtrl* ctrl = makeCtrl();
    ctrl->search(text);
    QTRY_VERIFY(ctrl->isSearchActive());
    QTRY_QUIET(projectCount());

    const QList<Shown> shown = ctrl->resultsOf(ctrl->mediator()->currentSearch());
    QCOMPARE(shown.size(), projectCount()); // every project has a "Blank" analysis
    for (const Shown& result : shown) {
        QCOMPARE(result.head->type(), KAObjectTypeProject);
        QCOMPARE(result.firstChild == result.head, projectFirst);
    }
}

// The opening job is handed to a busy pool: it waits in the pool's queue
// when the next search comes. That search must not lose it (nor free it
// while the pool still holds it).
void tst_BackgroundSearch::newSearchWhileOpeningWaitsForAPoolThread()
{
    QThreadPool* pool = QThreadPool::globalInstance();
    pool->setMaxThreadCount(1);
    QSemaphore busy;
    pool->start([&busy] { busy.acquire(); });
    QTRY_COMPARE(pool->activeThreadCount(), 1);

    RecordingCtrl* ctrl = makeCtrl();
    ctrl->search(QStringLiteral("Blank"));
    QTRY_VERIFY(ctrl->isSearchActive());
    ctrl->search(QStringLiteral("Café"));
    QTRY_COMPARE(ctrl->mediator()->text(), QStringLiteral("Café"));
    busy.release(); // the pool thread frees and takes the queued jobs

    QTRY_QUIET(projectCount());
    QCOMPARE(ctrl->resultsOf(ctrl->mediator()->currentSearch()).size(), projectCount());
}

void tst_BackgroundSearch::secondSearchReusesOpenedProjects()
{
    RecordingCtrl* ctrl = makeCtrl();
    ctrl->search(QStringLiteral("Blank"));
    QTRY_VERIFY(ctrl->isSearchActive());
    QTRY_QUIET(projectCount());
    const QList<KAAbstractBrowserCtrl*> opened = ctrl->mediator()->openedControllers();
    QCOMPARE(m_progress.log.first(), QStringLiteral("start %1").arg(projectCount()));
    QCOMPARE(m_progress.log.count(QStringLiteral("step")), projectCount());

    m_progress.log.clear();
    ctrl->search(QStringLiteral("Café"));
    QTRY_COMPARE(ctrl->mediator()->text(), QStringLiteral("Café"));
    // The first search's results leave the view at once and are freed once
    // the second is over.
    QCOMPARE(ctrl->mediator()->retiredResultCount(), projectCount());
    QTRY_QUIET(projectCount());
    QTRY_COMPARE(ctrl->mediator()->retiredResultCount(), 0);
    QCOMPARE(ctrl->mediator()->openedControllers(), opened);
    QVERIFY(!m_progress.log.contains(QStringLiteral("start %1").arg(projectCount())));
    QCOMPARE(ctrl->resultsOf(ctrl->mediator()->currentSearch()).size(), projectCount());
}

void tst_BackgroundSearch::cancelWhileOpeningStopsAndResets()
{
    RecordingCtrl* ctrl = makeCtrl();
    const int topLevel = ctrl->view()->topLevelItemCount();
    ctrl->search(QStringLiteral("Blank"));
    QTRY_VERIFY(ctrl->isSearchActive());
    ctrl->search(QString()); // while the projects are being opened

    QVERIFY(!ctrl->isSearchActive());
    const int opened = ctrl->mediator()->openedControllers().size();
    const int shown = ctrl->results.size();
    QVERIFY2(opened < projectCount(), "the opening ran to its end before the cancel");
    QCOMPARE(ctrl->view()->currentStateId(), KAAbstractBrowserListView::stateNormal);
    QCOMPARE(ctrl->view()->topLevelItemCount(), topLevel);
    QCOMPARE(m_progress.log.last(), QStringLiteral("end"));

    // What was posted before the cancel was delivered by it; nothing comes
    // after.
    QTRY_COMPARE(QThreadPool::globalInstance()->activeThreadCount(), 0);
    QCoreApplication::sendPostedEvents();
    QCoreApplication::processEvents();
    QCOMPARE(ctrl->mediator()->openedControllers().size(), opened);
    QCOMPARE(ctrl->results.size(), shown);
    QCOMPARE(ctrl->view()->topLevelItemCount(), topLevel);
}

void tst_BackgroundSearch::f5DuringSearchRunsItAgain()
{
    RecordingCtrl* ctrl = makeCtrl();
    ctrl->search(QStringLiteral("Café"));
    QTRY_VERIFY(ctrl->isSearchActive());
    QTRY_QUIET(projectCount());
    const int first = ctrl->mediator()->currentSearch();
    QCOMPARE(ctrl->view()->topLevelItemCount(), projectCount());

    ctrl->view()->setFocus();
    QTest::keyClick(ctrl->view(), Qt::Key_F5);
    QVERIFY(ctrl->isSearchActive());
    QVERIFY(ctrl->mediator()->currentSearch() != first);
    QCOMPARE(ctrl->mediator()->text(), QStringLiteral("Café"));
    QTRY_QUIET(projectCount());
    QCOMPARE(ctrl->resultsOf(ctrl->mediator()->currentSearch()).size(), projectCount());
    QCOMPARE(ctrl->view()->topLevelItemCount(), projectCount());
    QCOMPARE(ctrl->view()->currentStateId(), KAAbstractBrowserListView::stateSearch);
}

void tst_BackgroundSearch::destroyingControllerDuringSearch()
{
    RecordingCtrl* ctrl = makeCtrl();
    ctrl->search(QStringLiteral("Sample"));
    QTRY_VERIFY(ctrl->isSearchActive());
    QTRY_VERIFY(!ctrl->mediator()->openedControllers().isEmpty());
    m_ctrl.reset(); // workers still busy
    m_parent.reset();

    QTRY_COMPARE(QThreadPool::globalInstance()->activeThreadCount(), 0);
    QCoreApplication::sendPostedEvents();
    QCoreApplication::processEvents();
    // The projects are the manager's and survive the controller.
    for (const KAObject2Project* project : ProjectMgrInterface::returnMe()->projectList())
        QVERIFY(!project->name().isEmpty());
}

void tst_BackgroundSearch::emptyProjectList()
{
    ProjectMgrInterface::returnMe()->setWorkspaceFolders({m_fixture->path()});
    QCOMPARE(projectCount(), 0);
    RecordingCtrl* ctrl = makeCtrl();
    ctrl->search(QStringLiteral("Blank"));
    QTRY_VERIFY(ctrl->isSearchActive());
    QTRY_QUIET(0);
    QVERIFY(ctrl->results.isEmpty());
    QCOMPARE(ctrl->view()->topLevelItemCount(), 0);
    QVERIFY(!m_progress.log.contains(QStringLiteral("start 0")));

    ctrl->search(QString());
    QVERIFY(!ctrl->isSearchActive());
    QCOMPARE(ctrl->view()->currentStateId(), KAAbstractBrowserListView::stateNormal);
    QCOMPARE(ctrl->view()->topLevelItemCount(), 1);
}

void tst_BackgroundSearch::projectThatFailsToOpenIsSkipped()
{
    QString error;
    const QString broken = m_fixture->filePath("Broken");
    QVERIFY2(TSampleGenerator::generateProject(broken, QStringLiteral("Broken Blank"), TestFixture::smallOptions(), 2,
                                               &error),
             qPrintable(error));
    QFile database(TechDB::TDatabase::databasePath(broken));
    QVERIFY(database.open(QIODevice::ReadWrite));
    database.write(QByteArray(4096, '\x5a')); // no longer a database
    database.close();
    ProjectMgrInterface::returnMe()->setWorkspaceFolders(m_workspaceFolders + QStringList{m_fixture->path()});
    QCOMPARE(projectCount(), 8);

    RecordingCtrl* ctrl = makeCtrl();
    ctrl->search(QStringLiteral("Blank"));
    QTRY_VERIFY(ctrl->isSearchActive());
    QTRY_QUIET(projectCount() - 1);
    const QList<Shown> shown = ctrl->resultsOf(ctrl->mediator()->currentSearch());
    QCOMPARE(shown.size(), projectCount() - 1);
    for (const Shown& result : shown)
        QVERIFY(static_cast<const KAObject2Project*>(result.head)->folder() != broken);
    for (const MessageLoggerInterface::Entry& entry : MessageLoggerInterface::returnMe()->entries())
        QVERIFY2(entry.level != MessageLoggerInterface::LevelError, qPrintable(entry.text)); // skipped silently
}

void tst_BackgroundSearch::workerErrorCancelsAndLogs_data()
{
    QTest::addColumn<bool>("active");
    QTest::newRow("during a search") << true;
    QTest::newRow("no search running") << false;
}

void tst_BackgroundSearch::workerErrorCancelsAndLogs()
{
    QFETCH(bool, active);
    RecordingCtrl* ctrl = makeCtrl();
    const int topLevel = ctrl->view()->topLevelItemCount();
    if (active) {
        ctrl->search(QStringLiteral("Blank"));
        QTRY_VERIFY(ctrl->isSearchActive());
    }
    QCoreApplication::postEvent(ctrl->mediator(), new KAFileSystemBrowserSearchMediator::ExceptionOccuredEvent);
    QCoreApplication::sendPostedEvents(ctrl->mediator(), KAFileSystemBrowserSearchMediator::ExceptionOccuredEvent::eventType());

    QVERIFY(!ctrl->isSearchActive());
    QCOMPARE(ctrl->view()->currentStateId(), KAAbstractBrowserListView::stateNormal);
    QCOMPARE(ctrl->view()->topLevelItemCount(), topLevel);
    QStringList errors;
    for (const MessageLoggerInterface::Entry& entry : MessageLoggerInterface::returnMe()->entries()) {
        if (entry.level == MessageLoggerInterface::LevelError)
            errors << entry.text;
    }
    QCOMPARE(errors, active ? QStringList{"An unexpected error occurred"} : QStringList{});
}

QTEST_MAIN(tst_BackgroundSearch)
#include "tst_backgroundsearch.moc"
