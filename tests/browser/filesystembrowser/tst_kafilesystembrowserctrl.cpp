#include "applicationinterface.h"
#include "kaaliasfoldermgr.h"
#include "kafilesystembrowserctrl.h"
#include "kafilesystembrowsereditor.h"
#include "kafilesystembrowserfilterpackage.h"
#include "kafilesystembrowserobserver.h"
#include "kafilesystembrowsersearchmediator.h"
#include "kaobject2project.h"
#include "kaobject2well.h"
#include "tdatabase.h"
#include "kaprojectbrowserabstract.h"
#include "katreewidgetitem.h"
#include "projectmgrinterface.h"
#include "projecttreehelpers.h"
#include "testfixture.h"
#include "texternalprocess.h"

#include <QDir>
#include <QTest>
#include <QUrl>

#include <memory>

using namespace TreeTest;
namespace {

struct RecordingObserver : KAFileSystemBrowserObserver
{
    explicit RecordingObserver(bool answer) : answer(answer) {}
    void fsObjectSelected(const KAObject2* object) override { selected << object; }
    bool fsObjectOpened(const KAObject2* object) override { opened << object; return answer; }
    bool answer;
    QList<const KAObject2*> selected, opened;
};

// Counts the searches the mediator runs: each one clears the editor first.
struct CountingCtrl : KAFileSystemBrowserCtrl
{
    using KAFileSystemBrowserCtrl::KAFileSystemBrowserCtrl;
    void clearEditor() override { ++clears; KAFileSystemBrowserCtrl::clearEditor(); }
    int clears = 0;
};

} // namespace

// The controller: expand state, paths, observers, search, drag URLs, folders.
class tst_KAFileSystemBrowserCtrl : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { kaInitTestEnvironment(); }
    void cleanup() { m_ctrl.reset(); m_parent.reset(); kaClearAliases(); m_fixture.reset(); }
    void init()
    {
        m_fixture = std::make_unique<TestFixture>();
        m_filter = std::make_unique<KAFileSystemBrowserFilterPackage>();
        m_parent = std::make_unique<QWidget>();
        QFile::remove(KAProjectBrowserAbstract::treeStatePath());
        m_root = m_fixture->filePath("root");
        QVERIFY(QDir().mkpath(m_root + "/alpha") && QDir().mkpath(m_root + "/beta/gamma"));
        QVERIFY(QFile(m_root + "/beta/d.txt").open(QIODevice::WriteOnly));
        m_opened.clear();
        ProjectMgrInterface::returnMe()->setWorkspaceFolders({});
        TExternalProcess::setOpener([this](const QUrl& url) { m_opened << url; return true; });
    }

    // Each browser saves its own record when it goes, and finds it again.
    void expandStateSavedUnderNameAndRestored()
    {
        m_filter->setRootForced(m_root);
        const auto folder = [this](const QString& browser, const QString& name) {
            m_ctrl.reset(); // saves
            return childNamed(makeCtrl(browser)->getTree()->firstChild(), name);
        };
        for (const QString browser : {"Other", "Mine"}) {
            Node* node = folder(browser, browser == QLatin1String("Other") ? "alpha" : "beta");
            m_ctrl->fillNodeOnExpand(node);
            node->setExpanded(true);
        }
        Node* beta = folder("Mine", "beta");
        QVERIFY(beta->isExpanded() && childNamed(beta, "gamma") && !childNamed(beta->parent(), "alpha")->isExpanded());
        Node* alpha = folder("Other", "alpha");
        QVERIFY(alpha->isExpanded() && !childNamed(alpha->parent(), "beta")->isExpanded());
    }

    // Every folder on the way is listed and expanded, and no other, as far as
    // the path goes; the whole path is also shown and selected.
    void expandPath()
    {
        QVERIFY(ApplicationInterface::returnMe()->aliasFolderMgr()->addAlias("Data", m_root));
        m_filter->remove(FsDrives);
        KAFileSystemBrowserCtrl* ctrl = makeCtrl();
        ctrl->initView(m_parent.get());
        Node* data = childNamed(ctrl->getTree(), "Data");
        QVERIFY(!ctrl->expandPath("%Missing%/beta", false) && carriesPlaceholder(data) && !data->isExpanded());
        const auto expandsTo = [ctrl](const QString& path, const QString& expanded, bool select) {
            Node* node = ctrl->getTree();
            bool ok = ctrl->expandPath(QDir::toNativeSeparators(path), select);
            for (const QString& part : expanded.split('/'))
                ok = ok && (node = childNamed(node, part)) && node->isExpanded() && !carriesPlaceholder(node);
            return ok ? node : nullptr;
        };
        QVERIFY(expandsTo("%Data%/nothing/beta", "Data", false) && !childNamed(data, "beta")->isExpanded());
        QVERIFY(expandsTo("%data%/BETA", "Data/beta", false)); // names without case
        Node* beta = expandsTo("%Data%/beta/missing", "Data/beta", false);
        QVERIFY(beta && !childNamed(beta, "gamma")->isExpanded());
        Node* gamma = expandsTo("%Data%/beta/gamma", "Data/beta/gamma", true);
        QVERIFY(gamma && !childNamed(data, "alpha")->isExpanded());
        QCOMPARE(ctrl->getSelectedObject(), static_cast<const KAObject2*>(gamma->data()));
        QTreeWidgetItem* item = ctrl->view()->currentItem();
        QVERIFY(item && item->text(0) == QLatin1String("gamma"));
        for (QTreeWidgetItem* parent = item->parent(); parent; parent = parent->parent())
            QVERIFY2(parent->isExpanded(), qPrintable(parent->text(0)));
    }

    // Registered once however often; the first observer that opens an object
    // wins; none asked without an object; an unregistered one never again.
    void observersRegisteredOnceFirstOpenerWins()
    {
        KAFileSystemBrowserCtrl* ctrl = makeCtrl();
        RecordingObserver first(false), second(true), third(true);
        for (RecordingObserver* observer : {&first, &first, &second, &third})
            ctrl->registerObserver(observer);
        Node empty, *node = ctrl->getTree()->firstChild();
        QVERIFY(ctrl->openItem(node) && !ctrl->openItem(nullptr) && !ctrl->openItem(&empty));
        ctrl->itemSelected(node);
        const QList<const KAObject2*> once{node->data()};
        QVERIFY(first.opened == once && second.opened == once && third.opened.isEmpty());
        QVERIFY(first.selected == once && second.selected == once && third.selected == once);
        for (RecordingObserver* observer : {&second, &third})
            ctrl->unregisterObserver(observer);
        QVERIFY(!ctrl->openItem(node)); // nobody opens it
        ctrl->itemSelected(node);
        QVERIFY(second.opened == once && second.selected == once && third.opened.isEmpty() && first.opened.size() == 2);
    }

    // Two texts within 500 ms: one search, for the last (on project names, on
    // this thread). An empty text restores the tree and stops a pending one.
    void searchIsDeferredAndEmptyTextRestoresView()
    {
        m_filter->remove(FsProjectContent);
        CountingCtrl* ctrl = makeCtrl();
        ctrl->initView(m_parent.get());
        QCOMPARE(ctrl->searchTimer()->interval(), 500);
        QVERIFY(!ctrl->search("first"));
        ctrl->search("Study");
        QCOMPARE(ctrl->clears, 0);
        QTRY_COMPARE(ctrl->mediator()->text(), "Study");
        QCOMPARE(ctrl->clears, 1);
        QCOMPARE(ctrl->view()->currentStateId(), KAAbstractBrowserListView::stateSearch);
        ctrl->search(QString());
        QCOMPARE(ctrl->view()->currentStateId(), KAAbstractBrowserListView::stateNormal);
        ctrl->search("again");
        QVERIFY(ctrl->searchTimer()->isActive());
        ctrl->search(QString());
        QVERIFY(!ctrl->searchTimer()->isActive());
        QTest::qWait(600);
        QCOMPARE(ctrl->clears, 1);
    }

    // What another application reads back from a drag is the file, whatever its name.
    void objectUrls()
    {
        const QString folder = m_fixture->filePath(QString::fromUtf8("dossier été"));
        QVERIFY(QDir().mkpath(folder));
        const QList<QPair<QString, QByteArray>> names{
            {"100%.txt", "100%25.txt"}, {"#1 result.txt", "%231%20result.txt"}, {"why?.txt", "why%3F.txt"},
            {QString::fromUtf8("Échantillon 試料.txt"), "%C3%89chantillon%20%E8%A9%A6%E6%96%99.txt"}};
        for (const auto& name : names)
            QVERIFY(QFile(folder + '/' + name.first).open(QIODevice::WriteOnly));
        m_filter->setRootForced(folder);
        KAFileSystemBrowserCtrl* ctrl = makeCtrl();
        for (const auto& name : names) {
            QList<const KAObject2*> objects{childNamed(ctrl->getTree()->firstChild(), name.first)->data()};
            const QByteArray url = ctrl->getObjectUrls(&objects).value(0).toEncoded();
            QVERIFY2(url.endsWith("/dossier%20%C3%A9t%C3%A9/" + name.second), url.constData());
            QCOMPARE(QUrl::fromEncoded(url).toLocalFile(), folder + '/' + name.first);
        }
        // Dragged out of a project: an analysis gives its file, a well the
        // files of its datasets, the project itself nothing.
        const KAObject2Project* project = m_fixture->openSampleProject(QStringLiteral("Urls"));
        QVERIFY(project && project->db());
        TechDB::TDatabase* db = project->db();
        const QList<const KAObject2*> analyses = db->getObjectLst(KAObjectTypeAnalysis);
        const QList<const KAObject2*> wells = db->getObjectLst(KAObjectTypeWell);
        QVERIFY(!analyses.isEmpty() && !wells.isEmpty());
        const QList<const KAObject2*> datasets = db->datasetList(static_cast<const KAObject2Well*>(wells.first()));
        QVERIFY(!datasets.isEmpty());
        QList<const KAObject2*> objects{analyses.first(), wells.first(), project};
        QList<QUrl> expected{QUrl::fromLocalFile(TechDB::TDatabase::objectFilePath(analyses.first()))};
        for (const KAObject2* dataset : datasets)
            expected << QUrl::fromLocalFile(TechDB::TDatabase::objectFilePath(dataset));
        QCOMPARE(ctrl->getObjectUrls(&objects), expected);
        QVERIFY(ctrl->getObjectUrls(nullptr).isEmpty());
    }

    // The file manager opens where the user makes the folder (no item: the
    // first top-level folder; a file: nowhere); the browser never writes. A
    // project unfolded, then closed by the host: nothing may keep pointing
    // into its database; it shows again folded, unfolding anew when asked.
    void createFolderAndClosedProject()
    {
        QVERIFY(TSampleGenerator::generateProject(m_root + "/Study", "Study", TestFixture::smallOptions(), 1));
        ProjectMgrInterface::returnMe()->setWorkspaceFolders({m_root});
        const KAObject2Project* project = ProjectMgrInterface::returnMe()->findProject(m_root + "/Study");
        m_filter->setRootForced(m_root);
        KAFileSystemBrowserCtrl* ctrl = makeCtrl();
        ctrl->initView(m_parent.get());
        Node* beta = childNamed(ctrl->getTree()->firstChild(), "beta");
        ctrl->fillNodeOnExpand(beta);
        const auto disk = [this] { // where a folder would be made
            return QDir(m_root).entryList() + QDir(m_root + "/beta").entryList() + QDir(m_root + "/Study").entryList();
        };
        const QStringList before = disk();
        Node* file = childNamed(beta, "d.txt");
        for (Node* node : {static_cast<Node*>(nullptr), beta, nodeOf(ctrl->getTree(), project), file}) {
            KATreeWidgetItem item(static_cast<QTreeWidget*>(nullptr), node ? node->data() : nullptr);
            QCOMPARE(ctrl->createFolder(node ? &item : nullptr), node != file);
        }
        QCOMPARE(m_opened, (QList<QUrl>{QUrl::fromLocalFile(m_root), QUrl::fromLocalFile(m_root + "/beta"),
                                        QUrl::fromLocalFile(m_root + "/Study")}));
        QCOMPARE(disk(), before);
        ctrl->fillNodeOnExpand(nodeOf(ctrl->getTree(), project));
        QVERIFY(nodeOf(ctrl->getTree(), project)->childCount() > 1 && ctrl->getCtrlList().contains(project));
        QVERIFY(ProjectMgrInterface::returnMe()->closeProject(project));
        QVERIFY(!project->db() && carriesPlaceholder(nodeOf(ctrl->getTree(), project)));
        ctrl->fillNodeOnExpand(nodeOf(ctrl->getTree(), project));
        QVERIFY(project->db() && nodeOf(ctrl->getTree(), project)->childCount() > 1);
    }

    // The editor belongs to the widget it was given: a host may close its
    // window before it drops the controller. Last: a dangling view crashes.
    void viewDestroyedWithItsParentFirst()
    {
        KAFileSystemBrowserCtrl* ctrl = makeCtrl();
        QVERIFY(ctrl->initView(m_parent.get()) && ctrl->getEditor());
        m_parent.reset();
        QVERIFY(!ctrl->getEditor() && !ctrl->getSelectedObject());
        ctrl->refreshCurrentView(false);
        m_ctrl.reset();
    }

private:
    CountingCtrl* makeCtrl(const QString& name = "tst_ctrl")
    {
        m_ctrl = std::make_unique<CountingCtrl>(name);
        m_ctrl->init(m_filter.get(), nullptr, false);
        return m_ctrl.get();
    }

    std::unique_ptr<TestFixture> m_fixture;
    std::unique_ptr<KAFileSystemBrowserFilterPackage> m_filter;
    std::unique_ptr<CountingCtrl> m_ctrl;
    std::unique_ptr<QWidget> m_parent;
    QString m_root; // alpha, beta/gamma and beta/d.txt
    QList<QUrl> m_opened;
};

QTEST_MAIN(tst_KAFileSystemBrowserCtrl)
#include "tst_kafilesystembrowserctrl.moc"
