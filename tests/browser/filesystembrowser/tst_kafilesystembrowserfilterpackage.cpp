#include "kaaliasfolderinterface.h"
#include "kafilesystembrowserfilterpackage.h"
#include "kaobject2project.h"
#include "kaobject2winfile.h"
#include "kaprojectbrowserfilter.h"
#include "testfixture.h"
#include "ttree.h"

#include <QFile>
#include <QTest>

#include <memory>

namespace {

using Node = TTree<KAObject2*>;

// A payload that counts its own destructions: a shared tree freed twice
// shows as 2, a tree never freed as 0.
struct CountedObject : KAObject2
{
    CountedObject(const QString& name, int* deletions) : KAObject2(KAObjectTypeFolder, name), deletions(deletions) {}
    ~CountedObject() override { ++*deletions; }
    int* deletions; // not owned
};

// A small owning tree: a root and two children, each a counted payload.
Node* countedTree(const QString& name, int* deletions)
{
    auto* root = new Node;
    root->setOwnsData(true);
    root->setData(new CountedObject(name, deletions));
    for (int i = 0; i < 2; ++i)
        (new Node(root, -1))->setData(new CountedObject(name + QString::number(i), deletions));
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

// The file-system filter package: kinds, patterns, roots and shared trees.
class tst_KAFileSystemBrowserFilterPackage : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { kaInitTestEnvironment(); }
    void init() { m_fixture = std::make_unique<TestFixture>(); }
    void cleanup() { m_fixture.reset(); }

    void kindsPatternsAndForcedRoot();
    void treesSharedByCopiesAndFreedOnce();

private:
    std::unique_ptr<TestFixture> m_fixture;
};

void tst_KAFileSystemBrowserFilterPackage::kindsPatternsAndForcedRoot()
{
    KAFileSystemBrowserFilterPackage package;
    // The five kinds come last and are never offered to the user; a present
    // kind is not added twice, a removed one comes back last.
    QList<qint32> types = typesOf(package);
    QCOMPARE(types.mid(types.size() - 5), (QList<qint32>{2570, 2571, 2572, 2573, 2574}));
    QVERIFY(!package.contains(FsFiles)->active && package.contains(FsFiles)->label.isEmpty());
    package.add(FsDrives);
    QCOMPARE(typesOf(package), types);
    package.remove(FsProjectContent);
    package.add(FsProjectContent);
    types.removeAll(FsProjectContent);
    QCOMPARE(typesOf(package), types << FsProjectContent);

    // No dot is inserted; order and case are kept.
    package.setExtensionAllowed({"txt", ".csv", ".XLS"});
    QCOMPARE(package.extensionFilters(), (QStringList{"*txt", "*.csv", "*.XLS"}));

    // A new root replaces the old one (ASan reports the old one otherwise);
    // an alias keeps its name, and the factory picks the kind from the disk.
    const KAAliasFolderInterface alias(QStringLiteral("Lab data"), m_fixture->path());
    package.setRootForced(&alias);
    QCOMPARE(package.rootForced()->type(), KAObjectTypeAliasFolder);
    QCOMPARE(package.rootForced()->name(), QStringLiteral("Lab data"));
    QVERIFY(QFile(m_fixture->filePath("second.txt")).open(QIODevice::WriteOnly));
    package.setRootForced(m_fixture->filePath("second.txt"));
    QCOMPARE(package.rootForced()->type(), KAObjectTypeWinFile);
    QCOMPARE(package.rootForced()->filePath(), m_fixture->filePath("second.txt"));
    package.resetRoot();
    QVERIFY(!package.rootForced());
}

// Trees removed, cleared or replaced are the caller's again; a root added
// twice is listed once. Copies share the rest: whichever goes first, made by
// construction or by assignment, the others still read them, and the last
// frees each once.
void tst_KAFileSystemBrowserFilterPackage::treesSharedByCopiesAndFreedOnce()
{
    auto package = std::make_unique<KAFileSystemBrowserFilterPackage>();
    int deletions = 0, returned = 0;
    Node* cleared = countedTree(QStringLiteral("cleared"), &returned);
    Node* removed = countedTree(QStringLiteral("removed"), &returned);
    Node* replaced = countedTree(QStringLiteral("replaced"), &returned);
    Node* root = countedTree(QStringLiteral("root"), &deletions);
    Node* content = countedTree(QStringLiteral("content"), &deletions);
    package->addCustomRoot(cleared);
    package->clearCustomRoots();
    package->addCustomRoot(root);
    package->addCustomRoot(root);
    package->addCustomRoot(removed);
    package->removeCustomRoot(removed);
    const KAObject2Project first(QStringLiteral("First"), m_fixture->filePath("first"));
    const KAObject2Project project(QStringLiteral("P"), m_fixture->path());
    package->setCustomContent(&first, replaced);
    package->setCustomProjectsContent({{&project, content}});
    QVERIFY(!package->getCustomContent(&first));
    package->setRootForced(m_fixture->path());
    package->setExtensionAllowed({".txt"});
    package->remove(FsDrives);

    auto constructed = std::make_unique<KAFileSystemBrowserFilterPackage>(*package);
    auto assigned = std::make_unique<KAFileSystemBrowserFilterPackage>();
    *assigned = *package;
    for (const KAFileSystemBrowserFilterPackage* copy : {constructed.get(), assigned.get()}) {
        QCOMPARE(copy->rootForced(), package->rootForced());
        QCOMPARE(copy->getCustomContent(&project), content);
        QCOMPARE(copy->customRoots(), QList<Node*>{root});
        QCOMPARE(copy->extensionFilters(), QStringList{"*.txt"});
        QCOMPARE(typesOf(*copy), typesOf(*package)); // FsDrives left out in both
    }
    constructed.reset();
    package.reset();
    QCOMPARE(deletions, 0); // nothing the survivor reads is freed
    QCOMPARE(assigned->rootForced()->filePath(), m_fixture->path());
    assigned.reset();
    QCOMPARE(deletions, 6); // two trees of three nodes, each freed once
    QCOMPARE(returned, 0);
    qDeleteAll(QList<Node*>{cleared, removed, replaced});
    QCOMPARE(returned, 9);
}

QTEST_MAIN(tst_KAFileSystemBrowserFilterPackage)
#include "tst_kafilesystembrowserfilterpackage.moc"
