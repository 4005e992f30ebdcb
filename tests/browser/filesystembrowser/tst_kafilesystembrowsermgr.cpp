#include "applicationinterface.h"
#include "kaaliasfolderinterface.h"
#include "kaaliasfoldermgr.h"
#include "kafilesystembrowserctrl.h"
#include "kafilesystembrowsereditor.h"
#include "kafilesystembrowserfilterpackage.h"
#include "kafilesystembrowsermgr.h"
#include "kaobject2fake.h"
#include "kaobject2file.h"
#include "kaobject2project.h"
#include "kaobject2winfolder.h"
#include "kaprojectbrowserabstract.h"
#include "katreewidgetitem.h"
#include "projectmgrinterface.h"
#include "projecttreehelpers.h"
#include "testfixture.h"
#include "ttree.h"

#include <QApplication>
#include <QDir>
#include <QFile>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QTest>

#include <algorithm>
#include <memory>

namespace {

using Node = TTree<KAObject2*>;
using TreeTest::childNodes;
using TreeTest::childNames;
using TreeTest::sorted;
using TreeTest::childNamed;
using TreeTest::carriesPlaceholder;

bool touch(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::WriteOnly);
}

// A payload that counts its destructions.
class CountedObject : public KAObject2
{
public:
    CountedObject(const QString& name, int* deletions)
        : KAObject2(KAObjectTypeFolder, name), m_deletions(deletions) {}
    ~CountedObject() override { ++*m_deletions; }

private:
    int* m_deletions; // not owned
};

} // namespace

// The Computer tree: its top-level branches by filter, a forced root, lazy
// listing of folders, project folders, and folders listed at build time
// from the saved expand state.
class tst_KAFileSystemBrowserMgr : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void cleanup();

    void computerChildrenOrder_data();
    void computerChildrenOrder();
    void customRootsComeLastAndStayWithTheFilter();
    void forcedRootIsTheOnlyChild();
    void lazyListing_data();
    void lazyListing();
    void projectFolders_data();
    void projectFolders();
    void unknownProjectFolderLearntWhenListed();
    void savedExpandedFolderListedAtBuild();

private:
    KAFileSystemBrowserCtrl* makeCtrl(const QString& name = QStringLiteral("tst_mgr"));
    Node* listedForcedRoot(KAFileSystemBrowserCtrl* ctrl);
    QString makeSampleFolders();

    std::unique_ptr<TestFixture> m_fixture;
    std::unique_ptr<KAFileSystemBrowserFilterPackage> m_filter;
    std::unique_ptr<KAFileSystemBrowserCtrl> m_ctrl;
    std::unique_ptr<QWidget> m_parent; // the view's parent, destroyed after the controller
};

void tst_KAFileSystemBrowserMgr::initTestCase()
{
    kaInitTestEnvironment();
}

void tst_KAFileSystemBrowserMgr::init()
{
    m_fixture = std::make_unique<TestFixture>();
    m_filter = std::make_unique<KAFileSystemBrowserFilterPackage>();
    QFile::remove(KAProjectBrowserAbstract::treeStatePath());
    kaClearAliases();
    ProjectMgrInterface::returnMe()->setWorkspaceFolders({});
}

void tst_KAFileSystemBrowserMgr::cleanup()
{
    m_ctrl.reset();
    m_parent.reset();
    m_filter.reset();
    kaClearAliases();
    ProjectMgrInterface::returnMe()->setWorkspaceFolders({});
    m_fixture.reset();
}

KAFileSystemBrowserCtrl* tst_KAFileSystemBrowserMgr::makeCtrl(const QString& name)
{
    m_ctrl = std::make_unique<KAFileSystemBrowserCtrl>(name);
    m_ctrl->init(m_filter.get(), nullptr, false);
    return m_ctrl.get();
}

// The forced root under Computer, listed.
Node* tst_KAFileSystemBrowserMgr::listedForcedRoot(KAFileSystemBrowserCtrl* ctrl)
{
    Node* forced = ctrl->getTree()->firstChild();
    if (carriesPlaceholder(forced))
        ctrl->fillNodeOnExpand(forced);
    return forced;
}

// root/alpha, root/beta/gamma, root/beta/d.txt and four files in root.
QString tst_KAFileSystemBrowserMgr::makeSampleFolders()
{
    const QString root = m_fixture->filePath("root");
    if (!QDir().mkpath(root + "/alpha") || !QDir().mkpath(root + "/beta/gamma"))
        return QString();
    for (const char* file : {"a.txt", "b.csv", "c.log", "notatxt", "beta/d.txt"}) {
        if (!touch(root + '/' + QLatin1String(file)))
            return QString();
    }
    return root;
}

void tst_KAFileSystemBrowserMgr::computerChildrenOrder_data()
{
    QTest::addColumn<QList<int>>("removed");
    QTest::newRow("every kind") << QList<int>{};
    QTest::newRow("without alias folders") << QList<int>{FsAliasFolders};
    QTest::newRow("without drives") << QList<int>{FsDrives};
    QTest::newRow("without user folders") << QList<int>{FsUserFolders};
    QTest::newRow("without files") << QList<int>{FsFiles};
    QTest::newRow("nothing at all") << QList<int>{FsAliasFolders, FsDrives, FsUserFolders};
}

// Top-level folders are listed only when expanded: each waits behind a
// placeholder of its own kind. Computer itself is never listed.
void tst_KAFileSystemBrowserMgr::computerChildrenOrder()
{
    QFETCH(QList<int>, removed);
    QVERIFY(QDir().mkpath(m_fixture->filePath("a/inner")));
    QVERIFY(QDir().mkpath(m_fixture->filePath("b")));
    KAAliasFolderMgr* aliases = ApplicationInterface::returnMe()->aliasFolderMgr();
    QVERIFY(aliases->addAlias(QStringLiteral("Alias One"), m_fixture->filePath("a")));
    QVERIFY(aliases->addAlias(QStringLiteral("Alias Two"), m_fixture->filePath("b")));
    for (int kind : removed)
        m_filter->remove(KAObjectType(kind));

    // In order of creation; each new child goes first.
    QStringList created;
    QList<int> kinds;
    if (m_filter->contains(FsDrives)) {
        for (const QFileInfo& drive : QDir::drives()) {
            created << KAObject2File::displayName(drive);
            kinds << int(KAObjectTypeWinFolder);
        }
    }
    if (m_filter->contains(FsUserFolders)) {
        for (auto location : {QStandardPaths::DesktopLocation, QStandardPaths::DocumentsLocation}) {
            const QString path = QStandardPaths::writableLocation(location);
            QVERIFY(path.startsWith(QDir::homePath()));
            QVERIFY(QDir().mkpath(path));
            created << KAObject2File::displayName(QFileInfo(path));
            kinds << int(KAObjectTypeWinFolder);
        }
    }
    if (m_filter->contains(FsAliasFolders)) {
        created << "Alias One" << "Alias Two";
        kinds << int(KAObjectTypeAliasFolder) << int(KAObjectTypeAliasFolder);
    }
    std::reverse(created.begin(), created.end());
    std::reverse(kinds.begin(), kinds.end());

    KAFileSystemBrowserCtrl* ctrl = makeCtrl();
    Node* computer = ctrl->getTree();
    QVERIFY(computer);
    QCOMPARE(computer->data()->type(), KAObjectTypeWinComputer);
    QVERIFY(computer->isExpanded());
    QCOMPARE(childNames(computer), created);
    QList<int> actualKinds;
    for (const Node* c : childNodes(computer)) {
        actualKinds << int(c->data()->type());
        QVERIFY2(carriesPlaceholder(c), qPrintable(c->data()->name()));
        QVERIFY(!c->isExpanded());
        QCOMPARE(static_cast<const KAObject2Fake*>(c->firstChild()->data())->fakeKind(), c->data()->type());
    }
    QCOMPARE(actualKinds, kinds);
    QVERIFY(!ctrl->manager()->fillNodeOnExpand(computer));
    QVERIFY(!ctrl->manager()->fillNodeOnExpand(nullptr));
    QCOMPARE(childNames(computer), created);
}

// Custom roots come last, newest first, as copies of the caller's trees
// that never own (and so never delete) the filter's payloads.
void tst_KAFileSystemBrowserMgr::customRootsComeLastAndStayWithTheFilter()
{
    m_filter->remove(FsDrives);
    m_filter->remove(FsUserFolders);
    QVERIFY(ApplicationInterface::returnMe()->aliasFolderMgr()->addAlias(QStringLiteral("Alias"),
                                                                        m_fixture->path()));
    int deletions = 0;
    for (const char* name : {"Custom 1", "Custom 2"}) {
        auto* tree = new Node;
        tree->setOwnsData(true);
        tree->setData(new CountedObject(QLatin1String(name), &deletions));
        new Node(tree, -1);
        m_filter->addCustomRoot(tree);
    }
    Node* computer = makeCtrl()->getTree();
    QCOMPARE(childNames(computer), (QStringList{"Custom 2", "Custom 1", "Alias"}));
    bool copyOwns = false;
    for (Node* copy : childNodes(computer).mid(0, 2)) {
        QVERIFY(!m_filter->customRoots().contains(copy));
        QCOMPARE(copy->childCount(), 1);
        copyOwns = copyOwns || copy->ownsData();
        copy->setOwnsData(false); // whatever the answer, the process must outlive the check
    }
    m_ctrl.reset();
    QCOMPARE(deletions, 0);
    m_filter.reset();
    QCOMPARE(deletions, 2);
    QVERIFY2(!copyOwns, "the Computer tree's copy of a custom root owns (and would delete) the filter's payload");
}

// A forced root hides every other branch, comes expanded and listed, and
// shows its content in the view.
void tst_KAFileSystemBrowserMgr::forcedRootIsTheOnlyChild()
{
    const QString root = makeSampleFolders();
    QVERIFY(!root.isEmpty());
    QVERIFY(ApplicationInterface::returnMe()->aliasFolderMgr()->addAlias(QStringLiteral("Alias"), root));
    m_filter->addCustomRoot(new Node);
    m_filter->remove(FsFiles);
    m_filter->setRootForced(root);

    KAFileSystemBrowserCtrl* ctrl = makeCtrl();
    Node* computer = ctrl->getTree();
    QCOMPARE(computer->childCount(), 1);
    Node* forced = computer->firstChild();
    QVERIFY(forced->isExpanded());
    QCOMPARE(forced->data()->type(), KAObjectTypeWinFolder);
    QCOMPARE(forced->data()->name(), QStringLiteral("root"));
    QVERIFY(forced->data() != m_filter->rootForced()); // a clone: the filter keeps its own
    QCOMPARE(static_cast<const KAObject2WinFolder*>(forced->data())->filePath(), root);

    m_parent = std::make_unique<QWidget>();
    ctrl->initView(m_parent.get());
    KAFileSystemBrowserEditor* view = ctrl->view();
    QCOMPARE(view->topLevelItemCount(), 1);
    QTreeWidgetItem* item = view->topLevelItem(0);
    QCOMPARE(item->text(0), QStringLiteral("root"));
    QVERIFY(item->isExpanded());
    QStringList shown;
    for (int i = 0; i < item->childCount(); ++i)
        shown << item->child(i)->text(0);
    QCOMPARE(sorted(shown).join(", "), QStringLiteral("alpha, beta"));
}

void tst_KAFileSystemBrowserMgr::lazyListing_data()
{
    QTest::addColumn<bool>("files");
    QTest::addColumn<QStringList>("extensions");
    QTest::addColumn<QStringList>("listed");
    const QStringList folders{"alpha", "beta"};
    QTest::newRow("folders only without the files kind") << false << QStringList{".txt"} << folders;
    QTest::newRow("files matching the patterns")
        << true << QStringList{".txt", ".csv"} << folders + QStringList{"a.txt", "b.csv"};
    QTest::newRow("a pattern without dot") << true << QStringList{"txt"} << folders + QStringList{"a.txt", "notatxt"};
    QTest::newRow("an empty list lists every file")
        << true << QStringList{} << folders + QStringList{"a.txt", "b.csv", "c.log", "notatxt"};
    QTest::newRow("patterns never hide folders") << true << QStringList{".none"} << folders;
}

void tst_KAFileSystemBrowserMgr::lazyListing()
{
    QFETCH(bool, files);
    QFETCH(QStringList, extensions);
    QFETCH(QStringList, listed);
    const QString root = makeSampleFolders();
    QVERIFY(!root.isEmpty());
    if (!files)
        m_filter->remove(FsFiles);
    m_filter->setExtensionAllowed(extensions);
    QVERIFY(ApplicationInterface::returnMe()->aliasFolderMgr()->addAlias(QStringLiteral("Data"), root));
    m_filter->remove(FsDrives);
    m_filter->remove(FsUserFolders);

    KAFileSystemBrowserCtrl* ctrl = makeCtrl();
    Node* data = childNamed(ctrl->getTree(), QStringLiteral("Data"));
    QVERIFY(data);
    QVERIFY(carriesPlaceholder(data));
    ctrl->fillNodeOnExpand(data);

    QCOMPARE(sorted(childNames(data)), sorted(listed));
    for (const Node* c : childNodes(data)) {
        const auto* file = dynamic_cast<const KAObject2File*>(c->data());
        QVERIFY(file);
        if (file->isDir()) {
            QCOMPARE(file->type(), KAObjectTypeWinFolder);
            QVERIFY2(carriesPlaceholder(c), qPrintable(file->name()));
        } else {
            QCOMPARE(file->type(), KAObjectTypeWinFile);
            QCOMPARE(c->childCount(), 0);
        }
        QCOMPARE(file->filePath(), root + '/' + file->name());
    }
}

void tst_KAFileSystemBrowserMgr::projectFolders_data()
{
    QTest::addColumn<bool>("content");
    QTest::addColumn<bool>("projects");
    QTest::newRow("projects with their content") << true << true;
    QTest::newRow("projects without content") << false << true;
    QTest::newRow("projects left out, content kind kept") << true << false;
    QTest::newRow("projects left out") << false << false;
}

// A project folder shows the project manager's project, which the tree
// never owns: rebuilding it (F5) must leave the project alone.
void tst_KAFileSystemBrowserMgr::projectFolders()
{
    QFETCH(bool, content);
    QFETCH(bool, projects);
    const QString root = m_fixture->filePath("workspace");
    QVERIFY(QDir().mkpath(root + "/plain"));
    QString error;
    QVERIFY2(TSampleGenerator::generateProject(root + "/Study A", QStringLiteral("Study A"),
                                               TestFixture::smallOptions(), 3, &error),
             qPrintable(error));
    ProjectMgrInterface::returnMe()->setWorkspaceFolders({root});
    const KAObject2Project* project = ProjectMgrInterface::returnMe()->findProject(root + "/Study A");
    QVERIFY(project);
    if (!content)
        m_filter->remove(FsProjectContent);
    if (!projects)
        m_filter->remove(KAObjectTypeProject);
    m_filter->setRootForced(root);

    KAFileSystemBrowserCtrl* ctrl = makeCtrl();
    Node* forced = listedForcedRoot(ctrl);
    Node* plain = childNamed(forced, QStringLiteral("plain"));
    QVERIFY(plain);
    QCOMPARE(plain->data()->type(), KAObjectTypeWinFolder);
    Node* projectNode = childNamed(forced, QStringLiteral("Study A"));
    if (!projects) {
        QCOMPARE(childNames(forced), QStringList{"plain"});
        QVERIFY(ctrl->getCtrlList().isEmpty());
        return;
    }
    QVERIFY(projectNode);
    QCOMPARE(int(projectNode->data()->type()), 768);
    QCOMPARE(projectNode->data(), static_cast<const KAObject2*>(project));
    QCOMPARE(forced->childCount(), 2);
    if (content) {
        // A project browser unfolds the project: its controller is kept.
        QVERIFY(ctrl->getCtrlList().contains(project));
        QCOMPARE(ctrl->getCtrlList().value(project)->getTree(), projectNode);
        QVERIFY(projectNode->childCount() > 0);
    } else {
        QVERIFY(ctrl->getCtrlList().isEmpty());
        QCOMPARE(projectNode->childCount(), 0);
    }
    const bool owns = projectNode->ownsData();
    projectNode->setOwnsData(false); // keep the process alive for the next tests
    QVERIFY2(!owns, "the project node owns (and deletes with the tree) the project manager's project");
}

// Only the projects the host knows are recognised, without looking into
// each folder listed. A project folder the host does not know shows as a
// folder; listing it teaches the host, and the next listing of its parent
// shows the project.
void tst_KAFileSystemBrowserMgr::unknownProjectFolderLearntWhenListed()
{
    const QString root = m_fixture->filePath("elsewhere");
    QString error;
    QVERIFY2(TSampleGenerator::generateProject(root + "/Study B", QStringLiteral("Study B"),
                                               TestFixture::smallOptions(), 5, &error),
             qPrintable(error));
    ProjectMgrInterface* manager = ProjectMgrInterface::returnMe();
    QCOMPARE(manager->findProject(root + "/Study B"), nullptr);
    m_filter->setRootForced(root);

    KAFileSystemBrowserCtrl* ctrl = makeCtrl();
    Node* folder = childNamed(listedForcedRoot(ctrl), QStringLiteral("Study B"));
    QVERIFY(folder);
    QCOMPARE(folder->data()->type(), KAObjectTypeWinFolder);
    QVERIFY(carriesPlaceholder(folder));
    QCOMPARE(manager->findProject(root + "/Study B"), nullptr);

    ctrl->fillNodeOnExpand(folder);
    const KAObject2Project* project = manager->findProject(root + "/Study B");
    QVERIFY(project);
    QVERIFY(manager->projectList().contains(project));

    ctrl->refreshCurrentView(false);
    Node* projectNode = childNamed(ctrl->getTree()->firstChild(), QStringLiteral("Study B"));
    QVERIFY(projectNode);
    QCOMPARE(projectNode->data(), static_cast<const KAObject2*>(project));
}

// Folders saved as expanded are listed when the tree is built; the others
// wait behind their placeholder.
void tst_KAFileSystemBrowserMgr::savedExpandedFolderListedAtBuild()
{
    const QString root = makeSampleFolders();
    QVERIFY(!root.isEmpty());
    QVERIFY(QDir().mkpath(root + "/beta/gamma/delta"));
    m_filter->setRootForced(root);
    {
        // A listed folder's sub-folders wait behind a placeholder until
        // expanded; an empty folder loses its placeholder.
        KAFileSystemBrowserCtrl* ctrl = makeCtrl(QStringLiteral("saved"));
        Node* forced = listedForcedRoot(ctrl);
        Node* beta = childNamed(forced, QStringLiteral("beta"));
        QVERIFY(beta);
        QVERIFY(carriesPlaceholder(beta));
        ctrl->fillNodeOnExpand(beta);
        beta->setExpanded(true);
        QCOMPARE(sorted(childNames(beta)), (QStringList{"d.txt", "gamma"}));
        Node* gamma = childNamed(beta, QStringLiteral("gamma"));
        QVERIFY(carriesPlaceholder(gamma));
        ctrl->fillNodeOnExpand(gamma);
        gamma->setExpanded(true);
        Node* alpha = childNamed(forced, QStringLiteral("alpha"));
        ctrl->fillNodeOnExpand(alpha);
        QCOMPARE(alpha->childCount(), 0);
        m_ctrl.reset(); // saves the expand state under "saved"
    }

    KAFileSystemBrowserCtrl* ctrl = makeCtrl(QStringLiteral("saved"));
    Node* forced = ctrl->getTree()->firstChild();
    QVERIFY(!carriesPlaceholder(forced));
    Node* beta = childNamed(forced, QStringLiteral("beta"));
    QVERIFY(beta);
    QVERIFY(beta->isExpanded());
    QCOMPARE(sorted(childNames(beta)), (QStringList{"d.txt", "gamma"}));
    Node* gamma = childNamed(beta, QStringLiteral("gamma"));
    QVERIFY(gamma->isExpanded());
    QCOMPARE(childNames(gamma), QStringList{"delta"});
    QVERIFY(carriesPlaceholder(childNamed(gamma, QStringLiteral("delta"))));
    Node* alpha = childNamed(forced, QStringLiteral("alpha"));
    QVERIFY(!alpha->isExpanded());
    QVERIFY(carriesPlaceholder(alpha));
}

// The user's Desktop and Documents live in a home of the test's own.
int main(int argc, char** argv)
{
    QTemporaryDir home;
    qputenv("HOME", QFile::encodeName(home.path()));
    QApplication app(argc, argv);
    app.setAttribute(Qt::AA_Use96Dpi, true);
    tst_KAFileSystemBrowserMgr test;
    QTEST_SET_MAIN_SOURCE_PATH
    return QTest::qExec(&test, argc, argv);
}
#include "tst_kafilesystembrowsermgr.moc"
