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

std::unique_ptr<KAFileSystemBrowserFilterPackage> copyOf(const KAFileSystemBrowserFilterPackage& source, bool assign)
{
    if (!assign)
        return std::make_unique<KAFileSystemBrowserFilterPackage>(source);
    auto copy = std::make_unique<KAFileSystemBrowserFilterPackage>();
    *copy = source;
    return copy;
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

    void fileSystemKindsAreSilentEntries();
    void addKind_data();
    void addKind();
    void extensionFilters_data();
    void extensionFilters();
    void setRootForcedReplacesAndResets();
    void setRootForcedFromAlias();
    void customRoots();
    void copiesShareConfigurationAndFreeItOnce_data();
    void copiesShareConfigurationAndFreeItOnce();
    void replacedCustomContentGoesBackToCaller_data();
    void replacedCustomContentGoesBackToCaller();

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

void tst_KAFileSystemBrowserFilterPackage::fileSystemKindsAreSilentEntries()
{
    // A fresh package shows everything: the base entries, then the five
    // kinds in their order, without label or icon and not user-selectable.
    QVERIFY(m_package->contains(KAObjectTypeProject));
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

void tst_KAFileSystemBrowserFilterPackage::addKind_data()
{
    QTest::addColumn<int>("kind");
    QTest::addColumn<bool>("removeFirst");
    QTest::newRow("present drives") << int(FsDrives) << false;
    QTest::newRow("present files") << int(FsFiles) << false;
    QTest::newRow("present base kind") << int(KAObjectTypeAnalysis) << false;
    QTest::newRow("removed project content") << int(FsProjectContent) << true;
    QTest::newRow("removed user folders") << int(FsUserFolders) << true;
}

// A present kind changes nothing; a removed one comes back once, last.
void tst_KAFileSystemBrowserFilterPackage::addKind()
{
    QFETCH(int, kind);
    QFETCH(bool, removeFirst);
    QList<qint32> expected = typesOf(*m_package);
    if (removeFirst) {
        m_package->remove(KAObjectType(kind));
        QVERIFY(!m_package->contains(KAObjectType(kind)));
        expected.removeAll(kind);
        expected.append(kind);
    }
    m_package->add(KAObjectType(kind));
    QVERIFY(m_package->contains(KAObjectType(kind)));
    QCOMPARE(typesOf(*m_package), expected);
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
    m_package->resetExtensionFilter();
    QVERIFY(m_package->extensionAllowed().isEmpty());
    QVERIFY(m_package->extensionFilters().isEmpty());
}

void tst_KAFileSystemBrowserFilterPackage::setRootForcedReplacesAndResets()
{
    QVERIFY(QDir().mkpath(m_fixture->filePath("first")));
    QFile file(m_fixture->filePath("second.txt"));
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.close();

    m_package->resetRoot(); // nothing to delete
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
    m_package->resetRoot();
    QVERIFY(!m_package->rootForced());
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

// Roots removed or cleared are the caller's again; a root added twice is
// listed and freed once.
void tst_KAFileSystemBrowserFilterPackage::customRoots()
{
    int returned = 0;
    Node* cleared = countedTree(QStringLiteral("cleared"), &returned);
    Node* removed = countedTree(QStringLiteral("removed"), &returned);
    Node* kept = countedTree(QStringLiteral("kept"), &m_deletions);
    m_package->addCustomRoot(cleared);
    m_package->clearCustomRoots();
    QVERIFY(m_package->customRoots().isEmpty());
    m_package->addCustomRoot(kept);
    m_package->addCustomRoot(kept);
    m_package->addCustomRoot(removed);
    QCOMPARE(m_package->customRoots(), (QList<Node*>{kept, removed}));
    m_package->removeCustomRoot(removed);
    QCOMPARE(m_package->customRoots(), QList<Node*>{kept});

    m_package.reset();
    QCOMPARE(m_deletions, 3);
    QCOMPARE(returned, 0);
    delete cleared;
    delete removed;
    QCOMPARE(returned, 6);
}

void tst_KAFileSystemBrowserFilterPackage::copiesShareConfigurationAndFreeItOnce_data()
{
    QTest::addColumn<bool>("assign");
    QTest::addColumn<bool>("copyGoesFirst");
    QTest::newRow("copy constructor, copy destroyed first") << false << true;
    QTest::newRow("copy constructor, source destroyed first") << false << false;
    QTest::newRow("assignment, copy destroyed first") << true << true;
    QTest::newRow("assignment, source destroyed first") << true << false;
}

void tst_KAFileSystemBrowserFilterPackage::copiesShareConfigurationAndFreeItOnce()
{
    QFETCH(bool, assign);
    QFETCH(bool, copyGoesFirst);
    const KAObject2Project project(QStringLiteral("P"), m_fixture->path());
    Node* content = countedTree(QStringLiteral("content"), &m_deletions);
    Node* root = countedTree(QStringLiteral("root"), &m_deletions);
    m_package->setRootForced(m_fixture->path());
    m_package->setCustomContent(&project, content);
    m_package->addCustomRoot(root);
    m_package->setUseCustomProjectsContent(true);
    m_package->setExtensionAllowed({".txt"});
    m_package->remove(FsDrives);

    std::unique_ptr<KAFileSystemBrowserFilterPackage> copy = copyOf(*m_package, assign);
    QCOMPARE(copy->rootForced(), m_package->rootForced());
    QCOMPARE(copy->getCustomContent(&project), content);
    QCOMPARE(copy->customRoots(), QList<Node*>{root});
    QVERIFY(copy->useCustomProjectsContent());
    QCOMPARE(copy->extensionFilters(), QStringList{"*.txt"});
    QVERIFY(!copy->contains(FsDrives));
    QCOMPARE(typesOf(*copy), typesOf(*m_package));

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

void tst_KAFileSystemBrowserFilterPackage::replacedCustomContentGoesBackToCaller_data()
{
    QTest::addColumn<bool>("wholeMap");
    QTest::newRow("same project set again") << false;
    QTest::newRow("all projects set at once") << true;
}

// Content is kept per project; a replaced tree is the caller's again, the
// current one the package's.
void tst_KAFileSystemBrowserFilterPackage::replacedCustomContentGoesBackToCaller()
{
    QFETCH(bool, wholeMap);
    const KAObject2Project first(QStringLiteral("First"), m_fixture->filePath("first"));
    const KAObject2Project second(QStringLiteral("Second"), m_fixture->filePath("second"));
    int oldDeletions = 0;
    Node* old = countedTree(QStringLiteral("old"), &oldDeletions);
    Node* fresh = countedTree(QStringLiteral("fresh"), &m_deletions);
    QVERIFY(!m_package->getCustomContent(&first));
    m_package->setCustomContent(&first, old);
    QCOMPARE(m_package->getCustomContent(&first), old);
    QVERIFY(!m_package->getCustomContent(&second));
    QVERIFY(!m_package->getCustomContent(nullptr));

    if (wholeMap) {
        m_package->setCustomProjectsContent({{&second, fresh}});
        QVERIFY(!m_package->getCustomContent(&first));
        QCOMPARE(m_package->getCustomContent(&second), fresh);
    } else {
        m_package->setCustomContent(&first, fresh);
        QCOMPARE(m_package->getCustomContent(&first), fresh);
        QVERIFY(!m_package->getCustomContent(&second));
    }
    QCOMPARE(oldDeletions, 0);

    m_package.reset();
    QCOMPARE(m_deletions, 3);
    QCOMPARE(oldDeletions, 0);
    delete old;
    QCOMPARE(oldDeletions, 3);
}

QTEST_MAIN(tst_KAFileSystemBrowserFilterPackage)
#include "tst_kafilesystembrowserfilterpackage.moc"
