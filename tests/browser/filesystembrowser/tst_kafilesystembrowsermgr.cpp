#include "applicationinterface.h"
#include "kaaliasfoldermgr.h"
#include "kafilesystembrowserctrl.h"
#include "kafilesystembrowserfilterpackage.h"
#include "kafilesystembrowsermgr.h"
#include "kaobject2fake.h"
#include "kaobject2file.h"
#include "kaobject2project.h"
#include "kaobject2winfolder.h"
#include "kaprojectbrowserabstract.h"
#include "projectmgrinterface.h"
#include "projecttreehelpers.h"
#include "testfixture.h"

#include <QDir>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QTest>

#include <memory>

using namespace TreeTest;

// The Computer tree: its branches by filter, lazy listing, project folders.
class tst_KAFileSystemBrowserMgr : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { qputenv("HOME", QFile::encodeName(m_home.path())); kaInitTestEnvironment(); }
    void init()
    {
        m_fixture = std::make_unique<TestFixture>();
        m_filter = std::make_unique<KAFileSystemBrowserFilterPackage>();
        QFile::remove(KAProjectBrowserAbstract::treeStatePath());
        ProjectMgrInterface::returnMe()->setWorkspaceFolders({});
        m_root = m_fixture->filePath("root"); // alpha, beta/gamma, beta/d.txt and four files
        QVERIFY(QDir().mkpath(m_root + "/alpha") && QDir().mkpath(m_root + "/beta/gamma"));
        for (const char* file : {"a.txt", "b.csv", "c.log", "notatxt", "beta/d.txt"})
            QVERIFY(QFile(m_root + '/' + QLatin1String(file)).open(QIODevice::WriteOnly));
    }
    void cleanup() { m_ctrl.reset(); m_filter.reset(); kaClearAliases(); m_fixture.reset(); }

    void computerChildrenOrder_data() // with and without each kind
    {
        QTest::addColumn<QList<int>>("removed");
        QTest::newRow("every kind") << QList<int>{};
        QTest::newRow("without alias folders") << QList<int>{FsAliasFolders};
        QTest::newRow("without drives") << QList<int>{FsDrives};
        QTest::newRow("without user folders") << QList<int>{FsUserFolders};
        QTest::newRow("without files") << QList<int>{FsFiles};
    }
    // Drives, Desktop and Documents, aliases, custom roots, each new child going
    // first. Top-level folders wait behind a placeholder of their own kind;
    // Computer itself is never listed. Custom roots are copies of the caller's
    // trees that never own (and so never delete) the filter's payloads.
    void computerChildrenOrder()
    {
        QFETCH(QList<int>, removed);
        int deletions = 0;
        for (const char* name : {"Custom 1", "Custom 2"}) {
            auto* tree = new Node;
            tree->setOwnsData(true);
            tree->setData(new CountedObject(QLatin1String(name), &deletions));
            new Node(tree, -1);
            m_filter->addCustomRoot(tree);
        }
        for (const char* alias : {"Alias One", "Alias Two"})
            QVERIFY(ApplicationInterface::returnMe()->aliasFolderMgr()->addAlias(QLatin1String(alias), m_root));
        for (int kind : removed)
            m_filter->remove(KAObjectType(kind));
        QFileInfoList folders = m_filter->contains(FsDrives) ? QDir::drives() : QFileInfoList();
        for (auto location : {QStandardPaths::DesktopLocation, QStandardPaths::DocumentsLocation}) {
            const QString path = QStandardPaths::writableLocation(location);
            QVERIFY(path.startsWith(QDir::homePath()) && QDir().mkpath(path));
            folders << (m_filter->contains(FsUserFolders) ? QFileInfoList{QFileInfo(path)} : QFileInfoList());
        }
        QStringList created; // each new child goes first
        for (const QFileInfo& folder : folders)
            created.prepend(KAObject2File::displayName(folder));
        created = QStringList{"Custom 2", "Custom 1"}
            + (m_filter->contains(FsAliasFolders) ? QStringList{"Alias Two", "Alias One"} : QStringList()) + created;
        Node* computer = makeCtrl()->getTree();
        QCOMPARE(childNames(computer), created);
        bool copyOwns = false;
        for (Node* copy : childNodes(computer).mid(0, 2)) {
            QVERIFY(!m_filter->customRoots().contains(copy) && copy->childCount() == 1);
            copyOwns = copyOwns || copy->ownsData();
            copy->setOwnsData(false); // whatever the answer, the process must outlive the check
        }
        for (const Node* c : childNodes(computer).mid(2)) {
            const bool alias = c->data()->name().startsWith(QLatin1String("Alias"));
            QCOMPARE(c->data()->type(), alias ? KAObjectTypeAliasFolder : KAObjectTypeWinFolder);
            QVERIFY2(carriesPlaceholder(c) && !c->isExpanded(), qPrintable(c->data()->name()));
            QCOMPARE(static_cast<const KAObject2Fake*>(c->firstChild()->data())->fakeKind(), c->data()->type());
        }
        QVERIFY(!m_ctrl->manager()->fillNodeOnExpand(computer) && !m_ctrl->manager()->fillNodeOnExpand(nullptr));
        QCOMPARE(childNames(computer), created);
        m_ctrl.reset();
        QCOMPARE(deletions, 0);
        QVERIFY2(!copyOwns, "the Computer tree's copy of a custom root owns (and would delete) the filter's payload");
    }

    void lazyListing_data()
    {
        using L = QStringList;
        QTest::addColumn<bool>("files");
        QTest::addColumn<L>("extensions");
        QTest::addColumn<L>("listed");
        const L folders{"alpha", "beta"};
        QTest::newRow("folders only without the files kind") << false << L{".txt"} << folders;
        QTest::newRow("matching files, all folders") << true << L{".txt", ".csv"} << L{"a.txt", "b.csv"} + folders;
        QTest::newRow("a pattern without dot") << true << L{"txt"} << L{"a.txt", "notatxt"} + folders;
        QTest::newRow("an empty list: every file") << true << L{} << L{"a.txt", "b.csv", "c.log", "notatxt"} + folders;
    }
    // Folders come with a placeholder, files without; an empty one loses it.
    void lazyListing()
    {
        QFETCH(bool, files);
        QFETCH(QStringList, extensions);
        QFETCH(QStringList, listed);
        for (int kind : QList<int>{FsDrives, FsUserFolders} + (files ? QList<int>() : QList<int>{FsFiles}))
            m_filter->remove(KAObjectType(kind));
        m_filter->setExtensionAllowed(extensions);
        QVERIFY(ApplicationInterface::returnMe()->aliasFolderMgr()->addAlias(QStringLiteral("Data"), m_root));
        KAFileSystemBrowserCtrl* ctrl = makeCtrl();
        Node* data = childNamed(ctrl->getTree(), QStringLiteral("Data"));
        ctrl->fillNodeOnExpand(data);
        QCOMPARE(sorted(childNames(data)), sorted(listed));
        for (const Node* c : childNodes(data)) {
            const auto* file = dynamic_cast<const KAObject2File*>(c->data());
            QVERIFY(file && file->type() == (file->isDir() ? KAObjectTypeWinFolder : KAObjectTypeWinFile));
            QVERIFY2(file->isDir() ? carriesPlaceholder(c) : c->childCount() == 0, qPrintable(file->name()));
            QCOMPARE(file->filePath(), m_root + '/' + file->name());
        }
        ctrl->fillNodeOnExpand(childNamed(data, QStringLiteral("alpha")));
        QCOMPARE(childNamed(data, QStringLiteral("alpha"))->childCount(), 0);
    }
    void projectFolders_data()
    {
        QTest::addColumn<QList<int>>("removed");
        QTest::newRow("projects with their content") << QList<int>{};
        QTest::newRow("projects without content") << QList<int>{FsProjectContent};
        QTest::newRow("projects left out, content kind kept") << QList<int>{KAObjectTypeProject};
    }

    // A project folder shows the project manager's project, never owned by the
    // tree (F5 must leave it alone). A project the host does not know shows as a
    // folder; listing it teaches the host; the next listing shows the project.
    // The forced root hides every other branch, comes listed, and is a clone.
    void projectFolders()
    {
        QFETCH(QList<int>, removed);
        const bool projects = !removed.contains(KAObjectTypeProject);
        const bool content = !removed.contains(FsProjectContent);
        ProjectMgrInterface* manager = ProjectMgrInterface::returnMe();
        QVERIFY(TSampleGenerator::generateProject(m_root + "/Study A", "Study A", TestFixture::smallOptions(), 3));
        manager->setWorkspaceFolders({m_root});
        QVERIFY(TSampleGenerator::generateProject(m_root + "/Study B", "Study B", TestFixture::smallOptions(), 5));
        const KAObject2Project* project = manager->findProject(m_root + "/Study A");
        QVERIFY(project && !manager->findProject(m_root + "/Study B"));
        for (int kind : removed + QList<int>{FsFiles})
            m_filter->remove(KAObjectType(kind));
        m_filter->addCustomRoot(new Node);
        QVERIFY(ApplicationInterface::returnMe()->aliasFolderMgr()->addAlias(QStringLiteral("Alias"), m_root));
        m_filter->setRootForced(m_root);
        KAFileSystemBrowserCtrl* ctrl = makeCtrl();
        Node* forced = ctrl->getTree()->firstChild();
        QVERIFY(ctrl->getTree()->childCount() == 1 && forced->isExpanded() && forced->data() != m_filter->rootForced());
        Node* projectNode = childNamed(forced, QStringLiteral("Study A"));
        QCOMPARE(forced->childCount(), projects ? 4 : 3);
        QCOMPARE(ctrl->getCtrlList().isEmpty(), !(projects && content));
        QCOMPARE(projectNode ? projectNode->data() : nullptr,
                 projects ? static_cast<const KAObject2*>(project) : nullptr);
        if (!projects)
            return;
        // A project browser unfolds the project, its controller kept.
        QVERIFY(content ? ctrl->getCtrlList().value(project)->getTree() == projectNode && projectNode->childCount()
                        : !projectNode->childCount());
        const bool owns = projectNode->ownsData();
        projectNode->setOwnsData(false); // keep the process alive for the next tests
        QVERIFY2(!owns, "the project node owns (and would delete) the project manager's project");
        Node* folder = childNamed(forced, QStringLiteral("Study B"));
        QVERIFY(folder->data()->type() == KAObjectTypeWinFolder && carriesPlaceholder(folder));
        ctrl->fillNodeOnExpand(folder);
        const KAObject2* learnt = manager->findProject(m_root + "/Study B");
        QVERIFY(learnt && manager->projectList().contains(static_cast<const KAObject2Project*>(learnt)));
        ctrl->refreshCurrentView(false);
        QCOMPARE(childNamed(ctrl->getTree()->firstChild(), "Study B")->data(), learnt);
    }

private:
    struct CountedObject : KAObject2 // counts its destructions
    {
        CountedObject(const QString& name, int* deletions) : KAObject2(KAObjectTypeFolder, name), deletions(deletions) {}
        ~CountedObject() override { ++*deletions; }
        int* deletions; // not owned
    };

    KAFileSystemBrowserCtrl* makeCtrl()
    {
        m_ctrl = std::make_unique<KAFileSystemBrowserCtrl>(QStringLiteral("tst_mgr"));
        m_ctrl->init(m_filter.get(), nullptr, false);
        return m_ctrl.get();
    }

    std::unique_ptr<TestFixture> m_fixture;
    std::unique_ptr<KAFileSystemBrowserFilterPackage> m_filter;
    std::unique_ptr<KAFileSystemBrowserCtrl> m_ctrl;
    QString m_root;
    QTemporaryDir m_home; // the user's Desktop and Documents of the test's own
};

QTEST_MAIN(tst_KAFileSystemBrowserMgr)
#include "tst_kafilesystembrowsermgr.moc"
