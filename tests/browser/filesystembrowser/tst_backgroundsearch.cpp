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
using Mediator = KAFileSystemBrowserSearchMediator;

// A result as the view was handed it, copied then: the trees go with the next search.
struct Shown {
    int search; // the mediator's search and text then
    QString text;
    const KAObject2* head;
    bool projectFirst; // the head is also its first child
    QString names;     // every node below the head, one per line
};

QString namesBelow(const Node* node)
{
    QString names;
    for (const Node* c = node->firstChild(); c; c = c->nextSibling())
        names += (c->data() ? c->data()->name() : QString()) + '\n' + namesBelow(c);
    return names;
}

struct RecordingCtrl : KAFileSystemBrowserCtrl {
    using KAFileSystemBrowserCtrl::KAFileSystemBrowserCtrl;
    void fillTree(Node* node) override
    {
        if (node)
            results << Shown{mediator()->currentSearch(), mediator()->text(), node->data(),
                             node->firstChild() && node->firstChild()->data() == node->data(), namesBelow(node)};
        KAFileSystemBrowserCtrl::fillTree(node);
    }
    QList<Shown> current() const // the results of the search in force
    {
        QList<Shown> list;
        for (const Shown& s : results) {
            if (s.search == mediator()->currentSearch())
                list << s;
        }
        return list;
    }
    QList<Shown> results;
};

// Outlives the controller, which ends its progress when destroyed.
struct RecordingProgress : TProcessProgressInterface {
    void startProcess(int steps, const QString&, const QString&) override { log << QString("start %1").arg(steps); }
    void advanceProcess(int) override { log << QStringLiteral("step"); }
    void endProcess() override { log << QStringLiteral("end"); }
    QStringList log;
};

} // namespace

// Twice in a row: a result timer tick may sit between two checks.
#define QTRY_QUIET() QTRY_VERIFY_WITH_TIMEOUT(quiet() && quiet(), 60000)

// The search over every project of the host, one of them broken (its opening
// fails and is skipped silently): superseding searches, project-name matches,
// short texts, cancelling, a worker's error and destruction while opening.
class tst_BackgroundSearch : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        kaInitTestEnvironment();
        TSampleGenerator::Options options = TestFixture::smallOptions();
        options.projects = 6;
        QString error;
        QVERIFY2(!TSampleGenerator::generate(m_workspace.filePath("p"), options, &error).isEmpty(), qPrintable(error));
        // The content of the first never says "Zebra"; the second is broken.
        for (const char* name : {"Zebra Study", "Broken Blank"})
            QVERIFY(TSampleGenerator::generateProject(m_workspace.filePath("p/") + name, name, options, 11, &error));
        QFile database(TechDB::TDatabase::databasePath(m_workspace.filePath("p/Broken Blank")));
        QVERIFY(database.open(QIODevice::ReadWrite) && database.write(QByteArray(4096, '\x5a')) == 4096);
        // The Computer tree stays small and free of projects: what is searched
        // is the host's project list, not the tree.
        QVERIFY(QDir().mkpath(m_workspace.filePath("tree")));
    }

    // A controller with its view and the search timer at zero.
    void init()
    {
        ProjectMgrInterface::returnMe()->setWorkspaceFolders({m_workspace.filePath("p")});
        QCOMPARE(projects(), 8);
        QFile::remove(KAProjectBrowserAbstract::treeStatePath());
        MessageLoggerInterface::returnMe()->clear();
        m_filter = std::make_unique<KAFileSystemBrowserFilterPackage>();
        m_filter->setRootForced(m_workspace.filePath("tree"));
        if (QTest::currentDataTag() == QLatin1String("project name only, projects left out"))
            m_filter->remove(KAObjectTypeProject);
        m_ctrl = std::make_unique<RecordingCtrl>(QStringLiteral("tst_backgroundsearch"));
        m_ctrl->init(m_filter.get(), nullptr, false);
        m_parent = std::make_unique<QWidget>();
        m_ctrl->initView(m_parent.get());
        m_ctrl->searchTimer()->setInterval(0);
        m_progress.log.clear();
        m_ctrl->setSearchProcessProgress(&m_progress);
    }

    void cleanup()
    {
        m_ctrl.reset();
        QThreadPool::globalInstance()->waitForDone();
        QThreadPool::globalInstance()->setMaxThreadCount(m_poolThreads);
        m_parent.reset();
        ProjectMgrInterface::returnMe()->closeAll();
        for (const MessageLoggerInterface::Entry& entry : MessageLoggerInterface::returnMe()->entries())
            QVERIFY2(entry.level != MessageLoggerInterface::LevelError, qPrintable(entry.text));
    }

    void resultsHeadedByTheirProject_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<int>("count"); // -1: each project that opens, all with a "Blank" analysis
        QTest::addColumn<bool>("projectFirst");
        // A project whose name matches but whose content does not is listed,
        // alone, only when projects are in the filter.
        QTest::newRow("project name only") << "zebra" << 1 << false;
        QTest::newRow("project name only, projects left out") << "zebra" << 0 << false;
        QTest::newRow("one character") << "B" << -1 << true;
        QTest::newRow("two characters") << "Bl" << -1 << true;
        QTest::newRow("three characters") << "Bla" << -1 << false;
    }

    void resultsHeadedByTheirProject()
    {
        QFETCH(QString, text);
        QFETCH(int, count);
        QFETCH(bool, projectFirst);
        m_ctrl->search(text);
        QTRY_VERIFY(m_ctrl->isSearchActive());
        QTRY_QUIET();
        QCOMPARE(m_ctrl->current().size(), count < 0 ? projects() - 1 : count);
        for (const Shown& result : m_ctrl->current()) {
            QVERIFY(result.head->type() == KAObjectTypeProject && result.projectFirst == projectFirst);
            if (count == 1) // nothing but the project's name matched
                QVERIFY(result.head->name() == QLatin1String("Zebra Study") && result.names.isEmpty());
        }
    }

    void cancelErrorOrDestroyWhileOpening()
    {
        // Cancelled while the projects are being opened: the view is reset, what
        // was posted before the cancel was delivered by it, nothing comes after.
        RecordingCtrl* ctrl = m_ctrl.get();
        const int topLevel = ctrl->view()->topLevelItemCount();
        ctrl->search(QStringLiteral("Blank"));
        QTRY_VERIFY(ctrl->isSearchActive());
        ctrl->search(QString());
        QVERIFY(!ctrl->isSearchActive());
        const int opened = ctrl->mediator()->openedControllers().size();
        const int shown = ctrl->results.size();
        QVERIFY2(opened < projects() - 1, "the opening ran to its end before the cancel");
        QCOMPARE(ctrl->view()->currentStateId(), KAAbstractBrowserListView::stateNormal);
        QCOMPARE(m_progress.log.last(), QStringLiteral("end"));
        QTRY_COMPARE(QThreadPool::globalInstance()->activeThreadCount(), 0);
        QCoreApplication::sendPostedEvents();
        QCoreApplication::processEvents();
        QCOMPARE(ctrl->mediator()->openedControllers().size(), opened);
        QCOMPARE(ctrl->results.size(), shown);
        QCOMPARE(ctrl->view()->topLevelItemCount(), topLevel);

        // A worker's error cancels the search, resets the view and is logged.
        ctrl->search(QStringLiteral("Sample"));
        QTRY_VERIFY(ctrl->isSearchActive());
        QCoreApplication::postEvent(ctrl->mediator(), new Mediator::ExceptionOccuredEvent);
        QCoreApplication::sendPostedEvents(ctrl->mediator(), Mediator::ExceptionOccuredEvent::eventType());
        QVERIFY(!ctrl->isSearchActive());
        QCOMPARE(ctrl->view()->currentStateId(), KAAbstractBrowserListView::stateNormal);
        QCOMPARE(ctrl->view()->topLevelItemCount(), topLevel);
        QCOMPARE(MessageLoggerInterface::returnMe()->texts(), QStringList{"An unexpected error occurred"});
        QCOMPARE(MessageLoggerInterface::returnMe()->entries().first().level, MessageLoggerInterface::LevelError);
        MessageLoggerInterface::returnMe()->clear();

        // Destroyed with its workers still busy: no crash, and the projects,
        // which are the manager's, survive it.
        ctrl->search(QStringLiteral("Blank"));
        QTRY_VERIFY(ctrl->isSearchActive());
        cleanup();
        QCoreApplication::sendPostedEvents();
        QCoreApplication::processEvents();
        for (const KAObject2Project* project : ProjectMgrInterface::returnMe()->projectList())
            QVERIFY(!project->name().isEmpty());
    }

    // Last: a job freed under the pool crashes the run; the others report first.
    void supersedingSearchesNeverShowOlderResults()
    {
        RecordingCtrl* ctrl = m_ctrl.get();
        for (const char* text : {"Sample", "Blank", "Échantillon", "Blank", "Sample", "Café"}) {
            ctrl->search(QString::fromUtf8(text));
            QTRY_COMPARE(ctrl->mediator()->text(), QString::fromUtf8(text)); // started, the older ones still running
            // Results taken off the view wait to be freed, one search's at most.
            QVERIFY(ctrl->mediator()->retiredResultCount() <= projects());
        }
        QTRY_QUIET();
        QTRY_COMPARE(ctrl->mediator()->retiredResultCount(), 0);
        // Each shown result answers the search in force when it was shown; the
        // last lists each project that opens once, and the view holds just that.
        for (const Shown& shown : qAsConst(ctrl->results)) {
            const QString text = shown.text + ": " + shown.names;
            QVERIFY2(shown.names.contains(shown.text, Qt::CaseInsensitive), qPrintable(text));
        }
        QSet<const KAObject2*> heads;
        for (const Shown& shown : ctrl->current())
            heads.insert(shown.head);
        QCOMPARE(ctrl->current().size(), projects() - 1);
        QCOMPARE(heads.size(), projects() - 1);
        QCOMPARE(ctrl->view()->topLevelItemCount(), projects() - 1);
        QCOMPARE(ctrl->view()->currentStateId(), KAAbstractBrowserListView::stateSearch);

        // F5 runs the text again as a new search, on the controllers already made:
        // the projects were opened once, whatever the number of searches.
        const QList<KAAbstractBrowserCtrl*> opened = ctrl->mediator()->openedControllers();
        const int first = ctrl->mediator()->currentSearch();
        ctrl->view()->setFocus();
        QTest::keyClick(ctrl->view(), Qt::Key_F5);
        QVERIFY(ctrl->isSearchActive() && ctrl->mediator()->currentSearch() != first);
        QCOMPARE(ctrl->mediator()->retiredResultCount(), projects() - 1); // off the view at once
        QTRY_QUIET();
        QCOMPARE(ctrl->mediator()->openedControllers(), opened);
        QCOMPARE(ctrl->current().size(), projects() - 1);
        QCOMPARE(m_progress.log.count(QString("start %1").arg(projects())), 1);
        QCOMPARE(m_progress.log.count(QStringLiteral("step")), projects() - 1);
    }

    // The opening job is handed to a busy pool: it waits in the pool's queue
    // when the next search comes. That search must neither lose it nor free it
    // while the pool still holds it.
    void newSearchWhileOpeningWaitsForAPoolThread()
    {
        QThreadPool::globalInstance()->setMaxThreadCount(1);
        QSemaphore busy;
        QThreadPool::globalInstance()->start([&busy] { busy.acquire(); });
        QTRY_COMPARE(QThreadPool::globalInstance()->activeThreadCount(), 1);
        m_ctrl->search(QStringLiteral("Blank"));
        QTRY_VERIFY(m_ctrl->isSearchActive());
        m_ctrl->search(QStringLiteral("Café"));
        QTRY_COMPARE(m_ctrl->mediator()->text(), QStringLiteral("Café"));
        busy.release(); // the pool thread frees and takes the queued jobs
        QTRY_QUIET();
        QCOMPARE(m_ctrl->current().size(), projects() - 1);
    }

private:
    int projects() const { return ProjectMgrInterface::returnMe()->projectList().size(); }
    // Every posted event delivered, no worker running, every result shown and
    // a controller for each project but the broken one: nothing more can come.
    bool quiet()
    {
        QCoreApplication::sendPostedEvents();
        return QThreadPool::globalInstance()->activeThreadCount() == 0 && m_ctrl->mediator()->queuedResults() == 0
            && m_ctrl->mediator()->openedControllers().size() == projects() - 1;
    }

    TestFixture m_workspace;
    std::unique_ptr<KAFileSystemBrowserFilterPackage> m_filter;
    std::unique_ptr<RecordingCtrl> m_ctrl;
    std::unique_ptr<QWidget> m_parent;
    RecordingProgress m_progress;
    int m_poolThreads = QThreadPool::globalInstance()->maxThreadCount();
};

QTEST_MAIN(tst_BackgroundSearch)
#include "tst_backgroundsearch.moc"
