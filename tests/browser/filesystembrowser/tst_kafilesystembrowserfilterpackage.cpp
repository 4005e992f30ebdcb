#include "kaaliasfolderinterface.h"
#include "kafilesystembrowserfilterpackage.h"
#include "kaobject2.h"
#include "kaobject2project.h"
#include "kaobject2winfile.h"
#include "kaprojectbrowserfilter.h"
#include "testfixture.h"
#include "ttree.h"

#include <QDir>
#include <QFile>
#include <QTest>

#include <memory>

namespace {

using Node = TTree<KAObject2*>;

// A payload that counts its own destructions: a shared tree freed twice
// shows as 2, a tree never freed as 0.
class CountedObject : public KAObject2
{
public:
    explicit CountedObject(const QString& name, int* deletions)
        : KAObject2(KAObjectTypeFolder, name), m_deletions(deletions) {}
    ~CountedObject() override { ++*m_deletions; }

private:
    int* m_deletions; // not owned
};

// A small owning tree: a root and two children, each a counted payload.
Node* countedTree(const QString& name, int* deletions)
{
    auto* root = new Node;
    root->setOwnsData(true);
    root->setData(new CountedObject(name, deletions));
    for (int i = 0; i < 2; ++i) {
        auto* child = new Node(root, -1);
        child->setData(new CountedObject(QStringLiteral("%1/%2").arg(name).arg(i), deletions));
    }
    return root;
}

QList<qint32> typesOf(const KAProjectBrowserFilterPackage& package)
{
    QList<qint32> types;
    for (const KAProjectBrowserFilter* entry : package.list())
        types.append(entry->type);
    return types;
}

} // namespace

// The file-system filter package: its five kinds, extension patterns, the
// forced root, and the configuration that copies share.
class tst_KAFileSystemBrowserFilterPackage : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void cleanup();

    void freshPackageShowsEverything_data();
    void freshPackageShowsEverything();
    void fileSystemKindsAreSilentEntries();
    void addPresentKindChangesNothing_data();
    void addPresentKindChangesNothing();
    void removedKindComesBackLast_data();
    void removedKindComesBackLast();
    void extensionFilters_data();
    void extensionFilters();
    void resetExtensionFilterEmpties();
    void setRootForcedTwiceReplaces();
    void setRootForcedFromAlias();
    void resetRoot();
    void addCustomRootTwiceKeepsOne();
    void removeAndClearCustomRootsKeepTrees();
    void copiesShareConfiguration_data();
    void copiesShareConfiguration();
    void copyAndSourceFreeSharedTreesOnce_data();
    void copyAndSourceFreeSharedTreesOnce();
    void customContentOfUnknownProjectIsNull();
    void setCustomContentReplacingKeepsOldTree();
    void setCustomProjectsContentKeepsOldTrees();

private:
    std::unique_ptr<TestFixture> m_fixture;
    std::unique_ptr<KAFileSystemBrowserFilterPackage> m_package;
    int m_deletions = 0;
};

void tst_KAFileSystemBrowserFilterPackage::initTestCase()
{
    kaInitTestEnvironment();
}

void tst_KAFileSystemBrowserFilterPackage::init()
{
    m_fixture = std::make_unique<TestFixture>();
    m_package = std::make_unique<KAFileSystemBrowserFilterPackage>();
    m_deletions = 0;
}

void tst_KAFileSystemBrowserFilterPackage::cleanup()
{
    m_package.reset();
    m_fixture.reset();
}

void tst_KAFileSystemBrowserFilterPackage::freshPackageShowsEverything_data()
{
    QTest::addColumn<int>("kind");
    QTest::newRow("project content") << int(FsProjectContent);
    QTest::newRow("alias folders") << int(FsAliasFolders);
    QTest::newRow("drives") << int(FsDrives);
    QTest::newRow("user folders") << int(FsUserFolders);
    QTest::newRow("files") << int(FsFiles);
    QTest::newRow("projects (base entry)") << int(KAObjectTypeProject);
}

void tst_KAFileSystemBrowserFilterPackage::freshPackageShowsEverything()
{
    QFETCH(int, kind);
    QVERIFY(m_package->contains(KAObjectType(kind)));
}

void tst_KAFileSystemBrowserFilterPackage::fileSystemKindsAreSilentEntries()
{
    // After the base entries, the five kinds in their order, without label
    // or icon and not user-selectable.
    const QList<qint32> types = typesOf(*m_package);
    QCOMPARE(types.mid(types.size() - 5), (QList<qint32>{2570, 2571, 2572, 2573, 2574}));
    for (qint32 kind : {2570, 2571, 2572, 2573, 2574}) {
        const KAProjectBrowserFilter* entry = m_package->contains(KAObjectType(kind));
        QVERIFY(entry);
        QVERIFY(entry->label.isEmpty());
        QVERIFY(entry->icon.isNull());
        QVERIFY(!entry->active);
    }
    QCOMPARE(types.count(2572), 1);
}

void tst_KAFileSystemBrowserFilterPackage::addPresentKindChangesNothing_data()
{
    QTest::addColumn<int>("kind");
    QTest::newRow("drives") << int(FsDrives);
    QTest::newRow("files") << int(FsFiles);
    QTest::newRow("a base kind") << int(KAObjectTypeAnalysis);
}

void tst_KAFileSystemBrowserFilterPackage::addPresentKindChangesNothing()
{
    QFETCH(int, kind);
    const QList<qint32> before = typesOf(*m_package);
    m_package->add(KAObjectType(kind));
    QCOMPARE(typesOf(*m_package), before);
}

void tst_KAFileSystemBrowserFilterPackage::removedKindComesBackLast_data()
{
    QTest::addColumn<int>("kind");
    QTest::newRow("project content") << int(FsProjectContent);
    QTest::newRow("user folders") << int(FsUserFolders);
}

void tst_KAFileSystemBrowserFilterPackage::removedKindComesBackLast()
{
    QFETCH(int, kind);
    m_package->remove(KAObjectType(kind));
    QVERIFY(!m_package->contains(KAObjectType(kind)));
    m_package->add(KAObjectType(kind));
    QVERIFY(m_package->contains(KAObjectType(kind)));
    QCOMPARE(typesOf(*m_package).last(), qint32(kind));
    QCOMPARE(typesOf(*m_package).count(kind), 1);
}

void tst_KAFileSystemBrowserFilterPackage::extensionFilters_data()
{
    QTest::addColumn<QStringList>("extensions");
    QTest::addColumn<QStringList>("patterns");
    QTest::newRow("no dot is inserted") << QStringList{"txt", ".csv"} << QStringList{"*txt", "*.csv"};
    QTest::newRow("order and case kept") << QStringList{".XLS", ".xml", ".Txt"}
                                         << QStringList{"*.XLS", "*.xml", "*.Txt"};
    QTest::newRow("none") << QStringList{} << QStringList{};
}

void tst_KAFileSystemBrowserFilterPackage::extensionFilters()
{
    QFETCH(QStringList, extensions);
    QFETCH(QStringList, patterns);
    m_package->setExtensionAllowed(extensions);
    QCOMPARE(m_package->extensionAllowed(), extensions);
    QCOMPARE(m_package->extensionFilters(), patterns);
}

void tst_KAFileSystemBrowserFilterPackage::resetExtensionFilterEmpties()
{
    m_package->setExtensionAllowed({".txt"});
    m_package->resetExtensionFilter();
    QVERIFY(m_package->extensionAllowed().isEmpty());
    QVERIFY(m_package->extensionFilters().isEmpty());
}

void tst_KAFileSystemBrowserFilterPackage::setRootForcedTwiceReplaces()
{
    QVERIFY(QDir().mkpath(m_fixture->filePath("first")));
    QFile file(m_fixture->filePath("second.txt"));
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.close();

    QVERIFY(!m_package->rootForced());
    m_package->setRootForced(m_fixture->filePath("first"));
    QVERIFY(m_package->rootForced());
    QCOMPARE(m_package->rootForced()->type(), KAObjectTypeWinFolder);
    QCOMPARE(m_package->rootForced()->filePath(), m_fixture->filePath("first"));

    // The first root goes (ASan reports it otherwise); the factory picks
    // the kind from the disk.
    m_package->setRootForced(m_fixture->filePath("second.txt"));
    QCOMPARE(m_package->rootForced()->type(), KAObjectTypeWinFile);
    QCOMPARE(m_package->rootForced()->filePath(), m_fixture->filePath("second.txt"));
}

void tst_KAFileSystemBrowserFilterPackage::setRootForcedFromAlias()
{
    QVERIFY(QDir().mkpath(m_fixture->filePath("data")));
    const KAAliasFolderInterface alias(QStringLiteral("Lab data"), m_fixture->filePath("data"));
    m_package->setRootForced(&alias);
    QVERIFY(m_package->rootForced());
    QCOMPARE(m_package->rootForced()->type(), KAObjectTypeAliasFolder);
    QCOMPARE(m_package->rootForced()->name(), QStringLiteral("Lab data"));
    QCOMPARE(m_package->rootForced()->filePath(), m_fixture->filePath("data"));
}

void tst_KAFileSystemBrowserFilterPackage::resetRoot()
{
    m_package->resetRoot(); // nothing to delete
    QVERIFY(!m_package->rootForced());
    m_package->setRootForced(m_fixture->path());
    m_package->resetRoot();
    QVERIFY(!m_package->rootForced());
}

void tst_KAFileSystemBrowserFilterPackage::addCustomRootTwiceKeepsOne()
{
    Node* tree = countedTree(QStringLiteral("root"), &m_deletions);
    m_package->addCustomRoot(tree);
    m_package->addCustomRoot(tree);
    QCOMPARE(m_package->customRoots(), QList<Node*>{tree});
    m_package.reset();
    QCOMPARE(m_deletions, 3); // freed once: root and two children
}

void tst_KAFileSystemBrowserFilterPackage::removeAndClearCustomRootsKeepTrees()
{
    Node* first = countedTree(QStringLiteral("first"), &m_deletions);
    Node* second = countedTree(QStringLiteral("second"), &m_deletions);
    m_package->addCustomRoot(first);
    m_package->addCustomRoot(second);
    QCOMPARE(m_package->customRoots(), (QList<Node*>{first, second}));

    m_package->removeCustomRoot(first);
    QCOMPARE(m_package->customRoots(), QList<Node*>{second});
    m_package->clearCustomRoots();
    QVERIFY(m_package->customRoots().isEmpty());

    // Both trees went back to the caller.
    m_package.reset();
    QCOMPARE(m_deletions, 0);
    delete first;
    delete second;
    QCOMPARE(m_deletions, 6);
}

void tst_KAFileSystemBrowserFilterPackage::copiesShareConfiguration_data()
{
    QTest::addColumn<bool>("assign");
    QTest::newRow("copy constructor") << false;
    QTest::newRow("assignment") << true;
}

void tst_KAFileSystemBrowserFilterPackage::copiesShareConfiguration()
{
    QFETCH(bool, assign);
    const KAObject2Project project(QStringLiteral("P"), m_fixture->path());
    Node* content = countedTree(QStringLiteral("content"), &m_deletions);
    Node* root = countedTree(QStringLiteral("root"), &m_deletions);
    m_package->setRootForced(m_fixture->path());
    m_package->setCustomContent(&project, content);
    m_package->addCustomRoot(root);
    m_package->setUseCustomProjectsContent(true);
    m_package->setExtensionAllowed({".txt"});
    m_package->remove(FsDrives);

    std::unique_ptr<KAFileSystemBrowserFilterPackage> copy;
    if (assign) {
        copy = std::make_unique<KAFileSystemBrowserFilterPackage>();
        *copy = *m_package;
    } else {
        copy = std::make_unique<KAFileSystemBrowserFilterPackage>(*m_package);
    }

    QCOMPARE(copy->rootForced(), m_package->rootForced());
    QCOMPARE(copy->getCustomContent(&project), content);
    QCOMPARE(copy->customRoots(), QList<Node*>{root});
    QVERIFY(copy->useCustomProjectsContent());
    QCOMPARE(copy->extensionFilters(), QStringList{"*.txt"});
    QVERIFY(!copy->contains(FsDrives));
    QCOMPARE(typesOf(*copy), typesOf(*m_package));
}

void tst_KAFileSystemBrowserFilterPackage::copyAndSourceFreeSharedTreesOnce_data()
{
    QTest::addColumn<bool>("copyGoesFirst");
    QTest::addColumn<bool>("assign");
    QTest::newRow("copy destroyed first") << true << false;
    QTest::newRow("source destroyed first") << false << false;
    QTest::newRow("assigned copy destroyed first") << true << true;
}

void tst_KAFileSystemBrowserFilterPackage::copyAndSourceFreeSharedTreesOnce()
{
    QFETCH(bool, copyGoesFirst);
    QFETCH(bool, assign);
    const KAObject2Project project(QStringLiteral("P"), m_fixture->path());
    m_package->setCustomContent(&project, countedTree(QStringLiteral("content"), &m_deletions));
    m_package->addCustomRoot(countedTree(QStringLiteral("root"), &m_deletions));
    m_package->setRootForced(m_fixture->path());

    std::unique_ptr<KAFileSystemBrowserFilterPackage> copy;
    if (assign) {
        copy = std::make_unique<KAFileSystemBrowserFilterPackage>();
        *copy = *m_package;
    } else {
        copy = std::make_unique<KAFileSystemBrowserFilterPackage>(*m_package);
    }

    if (copyGoesFirst)
        copy.reset();
    else
        m_package.reset();
    // The survivor still reads the shared trees.
    const KAFileSystemBrowserFilterPackage* survivor = copy ? copy.get() : m_package.get();
    QCOMPARE(m_deletions, 0);
    QCOMPARE(survivor->getCustomContent(&project)->data()->name(), QStringLiteral("content"));
    QCOMPARE(survivor->customRoots().first()->childCount(), 2);
    QCOMPARE(survivor->rootForced()->filePath(), m_fixture->path());

    copy.reset();
    m_package.reset();
    QCOMPARE(m_deletions, 6); // two trees of three nodes, each freed once
}

void tst_KAFileSystemBrowserFilterPackage::customContentOfUnknownProjectIsNull()
{
    const KAObject2Project known(QStringLiteral("Known"), m_fixture->filePath("known"));
    const KAObject2Project unknown(QStringLiteral("Unknown"), m_fixture->filePath("unknown"));
    QVERIFY(!m_package->getCustomContent(&unknown));
    m_package->setCustomContent(&known, countedTree(QStringLiteral("known"), &m_deletions));
    QVERIFY(!m_package->getCustomContent(&unknown));
    QVERIFY(!m_package->getCustomContent(nullptr));
}

void tst_KAFileSystemBrowserFilterPackage::setCustomContentReplacingKeepsOldTree()
{
    const KAObject2Project project(QStringLiteral("P"), m_fixture->path());
    int oldDeletions = 0;
    Node* old = countedTree(QStringLiteral("old"), &oldDeletions);
    Node* fresh = countedTree(QStringLiteral("fresh"), &m_deletions);
    m_package->setCustomContent(&project, old);
    m_package->setCustomContent(&project, fresh);
    QCOMPARE(m_package->getCustomContent(&project), fresh);
    QCOMPARE(oldDeletions, 0);

    m_package.reset();
    QCOMPARE(m_deletions, 3);
    QCOMPARE(oldDeletions, 0);
    delete old; // the replaced tree went back to the caller
    QCOMPARE(oldDeletions, 3);
}

void tst_KAFileSystemBrowserFilterPackage::setCustomProjectsContentKeepsOldTrees()
{
    const KAObject2Project first(QStringLiteral("First"), m_fixture->filePath("first"));
    const KAObject2Project second(QStringLiteral("Second"), m_fixture->filePath("second"));
    int oldDeletions = 0;
    Node* old = countedTree(QStringLiteral("old"), &oldDeletions);
    Node* fresh = countedTree(QStringLiteral("fresh"), &m_deletions);
    m_package->setCustomContent(&first, old);
    m_package->setCustomProjectsContent({{&second, fresh}});
    QVERIFY(!m_package->getCustomContent(&first));
    QCOMPARE(m_package->getCustomContent(&second), fresh);

    m_package.reset();
    QCOMPARE(m_deletions, 3);
    QCOMPARE(oldDeletions, 0);
    delete old;
}

QTEST_MAIN(tst_KAFileSystemBrowserFilterPackage)
#include "tst_kafilesystembrowserfilterpackage.moc"
