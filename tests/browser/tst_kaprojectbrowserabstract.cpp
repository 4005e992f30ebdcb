#include "kaabstractbrowserctrl.h"
#include "kaobject2fake.h"
#include "kaobject2folder.h"
#include "kaprojectbrowserabstract.h"
#include "tapplicationdata.h"
#include "testfixture.h"
#include "ttree.h"

#include <QDir>
#include <QFile>
#include <QRegularExpression>
#include <QTest>

#include <memory>

namespace {

using Node = TTree<KAObject2*>;

// A controller that only carries a name.
class NamedCtrl : public KAAbstractBrowserCtrl
{
public:
    explicit NamedCtrl(const QString& name) : KAAbstractBrowserCtrl(name) {}
    void init(KAProjectBrowserFilterPackage*, const KAObject2Project*, bool) override {}
    QWidget* getEditor() const override { return nullptr; }
    void clearMgrList() override {}
    void fillTree(Node*) override {}
    void refreshNode(Node*) override {}
    void deleteNode(Node*) override { ++deleted; }
    void fillNodeOnExpand(Node*) override {}
    void clearEditor() override {}
    void restoreMainTree(Node*) override {}
    void refreshCurrentView(bool) override {}
    bool belongsToMe(Node*) override { return false; }
    Node* getTree() const override { return nullptr; }
    Node* search(const QString&) override { return nullptr; }
    KAProjectBrowserFilterPackage* getFilter() const override { return nullptr; }
    int deleted = 0;
};

// A manager over a tree that the test builds; the tree is not owned.
class FixedTreeMgr : public KAProjectBrowserAbstract
{
public:
    explicit FixedTreeMgr(KAAbstractBrowserCtrl* ctrl) : KAProjectBrowserAbstract(ctrl) {}
    void init() override {}
    Node* getTree() const override { return m_root; }
    bool refreshRequested(KAObjectType, const KAObject2*) override { return false; }
    bool fillNodeOnExpand(Node*) override { return false; }
    void setTree(Node* root) { m_root = root; }

    using KAProjectBrowserAbstract::getNodeExpandState;
    using KAProjectBrowserAbstract::moveIsAllowed;

private:
    Node* m_root = nullptr; // not owned
};

Node* addFolder(Node* parent, const QString& name, bool expanded)
{
    auto* node = new Node(parent, -1);
    node->setData(new KAObject2Folder(name, KAObjectTypeUserFolder));
    node->setOwnsData(true);
    node->setExpanded(expanded);
    return node;
}

Node* addFake(Node* parent)
{
    auto* node = new Node(parent, -1);
    node->setData(new KAObject2Fake(KAObjectTypeSignal));
    node->setOwnsData(true);
    return node;
}

// The sample tree, in child order (children are linked at the head, so
// they are made last to first):
//   Projects (expanded)
//     Échantillons & été (expanded)
//       Batch 1
//       Batch 2 (expanded)
//     Wells (expanded)
//       <placeholder>
struct SampleTree {
    std::unique_ptr<Node> root;
    Node* samples = nullptr;
    Node* batch1 = nullptr;
    Node* batch2 = nullptr;
    Node* wells = nullptr;
};

SampleTree makeSampleTree()
{
    SampleTree t;
    t.root.reset(new Node);
    t.root->setData(new KAObject2Folder(QStringLiteral("Projects"), KAObjectTypeUserFolder));
    t.root->setOwnsData(true);
    t.root->setExpanded(true);
    t.wells = addFolder(t.root.get(), QStringLiteral("Wells"), true);
    addFake(t.wells);
    t.samples = addFolder(t.root.get(), QStringLiteral("Échantillons & été"), true);
    t.batch2 = addFolder(t.samples, QStringLiteral("Batch 2"), true);
    t.batch1 = addFolder(t.samples, QStringLiteral("Batch 1"), false);
    return t;
}

QString statePath()
{
    return TApplicationData::getInstance()->applicationDataPath() + QStringLiteral("/filesystemtreeconfig.xml");
}

QByteArray readState()
{
    QFile file(statePath());
    if (!file.open(QIODevice::ReadOnly))
        return QByteArray();
    return file.readAll();
}

void writeState(const QByteArray& bytes)
{
    QFile file(statePath());
    QVERIFY(file.open(QIODevice::WriteOnly | QIODevice::Truncate));
    QCOMPARE(file.write(bytes), qint64(bytes.size()));
}

// Qt 5's DOM writes the attributes of an element in the order of its hash
// table, which changes from one run to the next; that order is no part of
// the file format. Everything else is compared byte for byte: the
// attributes of each start tag are sorted first, on both sides.
QByteArray sortAttributes(const QByteArray& xml)
{
    static const QRegularExpression tag(QStringLiteral("<([A-Za-z][\\w.]*)((?:\\s+[\\w.]+=\"[^\"]*\")+)\\s*(/?)>"));
    static const QRegularExpression attribute(QStringLiteral("[\\w.]+=\"[^\"]*\""));
    const QString text = QString::fromUtf8(xml);
    QString result;
    int last = 0;
    for (auto it = tag.globalMatch(text); it.hasNext();) {
        const QRegularExpressionMatch m = it.next();
        result += text.midRef(last, m.capturedStart() - last);
        QStringList attributes;
        for (auto a = attribute.globalMatch(m.captured(2)); a.hasNext();)
            attributes.append(a.next().captured());
        attributes.sort();
        result += QLatin1Char('<') + m.captured(1) + QLatin1Char(' ') + attributes.join(QLatin1Char(' '))
            + m.captured(3) + QLatin1Char('>');
        last = m.capturedEnd();
    }
    result += text.midRef(last);
    return result.toUtf8();
}

const char* const Header = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
                           "<!DOCTYPE filesystemtreeconfig.xml>\n"
                           "<filesystemtreeconfig version=\"0.2\">\n";

QByteArray sampleInstance(const QString& name)
{
    return QStringLiteral("  <instance name=\"%1\">\n"
                          "    <node name=\"Projects\" expanded=\"1\">\n"
                          "      <node name=\"Échantillons &amp; été\" expanded=\"1\">\n"
                          "        <node name=\"Batch 1\" expanded=\"0\"/>\n"
                          "        <node name=\"Batch 2\" expanded=\"1\"/>\n"
                          "      </node>\n"
                          "      <node name=\"Wells\" expanded=\"1\"/>\n"
                          "    </node>\n"
                          "  </instance>\n")
        .arg(name)
        .toUtf8();
}

QByteArray document(const QByteArray& instances)
{
    return QByteArray(Header) + instances + "</filesystemtreeconfig>\n";
}

} // namespace

// The root element and what follows it. The prolog (declaration, document
// type) is compared by saveWritesExactDocument alone, so that the other
// tests each fail for their own reason.
QByteArray fromRoot(const QByteArray& xml)
{
    const int root = xml.indexOf("<filesystemtreeconfig");
    return root < 0 ? xml : xml.mid(root);
}

// What the comparisons of whole files see.
QByteArray exact(const QByteArray& xml)
{
    return sortAttributes(xml);
}

QByteArray body(const QByteArray& xml)
{
    return sortAttributes(fromRoot(xml));
}

class tst_KAProjectBrowserAbstract : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();

    void statePathIsInApplicationData();
    void saveWritesExactDocument();
    void saveReplacesInPlaceAndAppendsNew();
    void saveKeepsOtherInstances();
    void savedStateLoadsAtConstruction();
    void renamedNodeLosesStateWithSubtree();
    void loadTreeStateSwitchesRecord();
    void unreadableFileIgnored_data();
    void unreadableFileIgnored();
    void placeholderRootHasNoNode();
    void snapshotStaysInMemory();
    void nullNameIsNoOp();
    void findChildIsCaseInsensitiveOnDirectChildren();
    void findInTreeIsExactAndBreadthFirst();
    void findObjectInTreeByIdentity();
    void moveIsAllowed_data();
    void moveIsAllowed();

private:
    SampleTree m_tree;
};

void tst_KAProjectBrowserAbstract::initTestCase()
{
    kaInitTestEnvironment();
}

void tst_KAProjectBrowserAbstract::init()
{
    QFile::remove(statePath());
    QVERIFY(!QFile::exists(statePath()));
    m_tree = makeSampleTree();
}

void tst_KAProjectBrowserAbstract::statePathIsInApplicationData()
{
    QCOMPARE(QDir::cleanPath(KAProjectBrowserAbstract::treeStatePath()), QDir::cleanPath(statePath()));
    NamedCtrl ctrl(QStringLiteral("A"));
    FixedTreeMgr mgr(&ctrl);
    mgr.setTree(m_tree.root.get());
    mgr.saveTreeState(QStringLiteral("A"));
    QVERIFY(QFile::exists(statePath()));
}

void tst_KAProjectBrowserAbstract::saveWritesExactDocument()
{
    NamedCtrl ctrl(QStringLiteral("A"));
    FixedTreeMgr mgr(&ctrl);
    mgr.setTree(m_tree.root.get());
    mgr.saveTreeState(QStringLiteral("A"));
    const QByteArray bytes = readState();
    QByteArray expected = document(sampleInstance(QStringLiteral("A")));
    QCOMPARE(exact(bytes), exact(expected));
    // UTF-8, not Latin-1 nor a character reference.
    QVERIFY(bytes.contains(QByteArray("\xc3\x89""chantillons &amp; \xc3\xa9t\xc3\xa9")));

    // Read back and written again, the file keeps the same prolog.
    mgr.saveTreeState(QStringLiteral("B"));
    expected = document(sampleInstance(QStringLiteral("A")) + sampleInstance(QStringLiteral("B")));
    QCOMPARE(exact(readState()), exact(expected));
}

void tst_KAProjectBrowserAbstract::saveReplacesInPlaceAndAppendsNew()
{
    NamedCtrl ctrl(QStringLiteral("A"));
    FixedTreeMgr mgr(&ctrl);
    mgr.setTree(m_tree.root.get());
    mgr.saveTreeState(QStringLiteral("A"));
    mgr.saveTreeState(QStringLiteral("B"));
    mgr.saveTreeState(QStringLiteral("C"));

    m_tree.samples->setExpanded(false);
    m_tree.batch1->setExpanded(true);
    mgr.saveTreeState(QStringLiteral("B"));
    const QByteArray changedB = QByteArray("  <instance name=\"B\">\n"
                                           "    <node name=\"Projects\" expanded=\"1\">\n"
                                           "      <node name=\"\xc3\x89""chantillons &amp; \xc3\xa9t\xc3\xa9\" expanded=\"0\">\n"
                                           "        <node name=\"Batch 1\" expanded=\"1\"/>\n"
                                           "        <node name=\"Batch 2\" expanded=\"1\"/>\n"
                                           "      </node>\n"
                                           "      <node name=\"Wells\" expanded=\"1\"/>\n"
                                           "    </node>\n"
                                           "  </instance>\n");
    QByteArray expected = document(sampleInstance(QStringLiteral("A")) + changedB + sampleInstance(QStringLiteral("C")));
    QCOMPARE(body(readState()), body(expected));

    mgr.saveTreeState(QStringLiteral("D"));
    expected = document(sampleInstance(QStringLiteral("A")) + changedB + sampleInstance(QStringLiteral("C"))
                        + QByteArray(changedB).replace("name=\"B\"", "name=\"D\""));
    QCOMPARE(body(readState()), body(expected));
}

void tst_KAProjectBrowserAbstract::saveKeepsOtherInstances()
{
    // Another browser's record, with content this manager knows nothing of.
    const QByteArray other = "  <instance name=\"Other\">\n"
                             "    <node name=\"Computer\" expanded=\"1\">\n"
                             "      <node name=\"C:\" expanded=\"0\"/>\n"
                             "    </node>\n"
                             "  </instance>\n";
    writeState(document(other));
    NamedCtrl ctrl(QStringLiteral("A"));
    FixedTreeMgr mgr(&ctrl);
    mgr.setTree(m_tree.root.get());
    mgr.saveTreeState(QStringLiteral("A"));
    QByteArray expected = document(other + sampleInstance(QStringLiteral("A")));
    QCOMPARE(body(readState()), body(expected));

    // Two browsers saving in turn keep each other's records.
    NamedCtrl ctrl2(QStringLiteral("Other"));
    FixedTreeMgr mgr2(&ctrl2);
    auto tree2 = makeSampleTree();
    mgr2.setTree(tree2.root.get());
    mgr2.saveTreeState(QStringLiteral("Other"));
    expected = document(sampleInstance(QStringLiteral("Other")) + sampleInstance(QStringLiteral("A")));
    QCOMPARE(body(readState()), body(expected));
}

void tst_KAProjectBrowserAbstract::savedStateLoadsAtConstruction()
{
    {
        NamedCtrl ctrl(QStringLiteral("A"));
        FixedTreeMgr mgr(&ctrl);
        mgr.setTree(m_tree.root.get());
        mgr.saveTreeState(QStringLiteral("A"));
    }
    // The same tree built again, every node collapsed.
    SampleTree fresh = makeSampleTree();
    for (Node* n : {fresh.root.get(), fresh.samples, fresh.batch1, fresh.batch2, fresh.wells})
        n->setExpanded(false);
    NamedCtrl ctrl(QStringLiteral("A"));
    FixedTreeMgr mgr(&ctrl);
    mgr.setTree(fresh.root.get());
    QVERIFY(mgr.getNodeExpandState(fresh.root.get()));
    QVERIFY(mgr.getNodeExpandState(fresh.samples));
    QVERIFY(!mgr.getNodeExpandState(fresh.batch1));
    QVERIFY(mgr.getNodeExpandState(fresh.batch2));
    QVERIFY(mgr.getNodeExpandState(fresh.wells));
    // A node new since the save comes up collapsed.
    Node* added = addFolder(fresh.samples, QStringLiteral("Batch 3"), true);
    QVERIFY(!mgr.getNodeExpandState(added));

    // A manager of another name knows nothing.
    NamedCtrl otherCtrl(QStringLiteral("B"));
    FixedTreeMgr other(&otherCtrl);
    other.setTree(fresh.root.get());
    QVERIFY(!other.getNodeExpandState(fresh.root.get()));
    QVERIFY(!other.getNodeExpandState(fresh.batch2));
}

void tst_KAProjectBrowserAbstract::renamedNodeLosesStateWithSubtree()
{
    {
        NamedCtrl ctrl(QStringLiteral("A"));
        FixedTreeMgr mgr(&ctrl);
        mgr.setTree(m_tree.root.get());
        mgr.saveTreeState(QStringLiteral("A"));
    }
    m_tree.samples->data()->setName(QStringLiteral("Samples"));
    NamedCtrl ctrl(QStringLiteral("A"));
    FixedTreeMgr mgr(&ctrl);
    mgr.setTree(m_tree.root.get());
    QVERIFY(mgr.getNodeExpandState(m_tree.root.get()));
    QVERIFY(!mgr.getNodeExpandState(m_tree.samples));
    QVERIFY(!mgr.getNodeExpandState(m_tree.batch2)); // unchanged name, lost with its parent
    QVERIFY(mgr.getNodeExpandState(m_tree.wells));

    // Names are matched exactly.
    m_tree.samples->data()->setName(QStringLiteral("ÉCHANTILLONS & ÉTÉ"));
    QVERIFY(!mgr.getNodeExpandState(m_tree.samples));
    m_tree.samples->data()->setName(QStringLiteral("Échantillons & été"));
    QVERIFY(mgr.getNodeExpandState(m_tree.batch2));
}

void tst_KAProjectBrowserAbstract::loadTreeStateSwitchesRecord()
{
    NamedCtrl ctrl(QStringLiteral("A"));
    FixedTreeMgr mgr(&ctrl);
    mgr.setTree(m_tree.root.get());
    mgr.saveTreeState(QStringLiteral("A"));
    m_tree.batch2->setExpanded(false);
    m_tree.batch1->setExpanded(true);
    mgr.saveTreeState(QStringLiteral("B"));

    // Nothing was loaded at construction: no record existed then.
    QVERIFY(!mgr.getNodeExpandState(m_tree.root.get()));
    mgr.loadTreeState(QStringLiteral("A"));
    QVERIFY(mgr.getNodeExpandState(m_tree.batch2));
    QVERIFY(!mgr.getNodeExpandState(m_tree.batch1));
    mgr.loadTreeState(QStringLiteral("B"));
    QVERIFY(!mgr.getNodeExpandState(m_tree.batch2));
    QVERIFY(mgr.getNodeExpandState(m_tree.batch1));
    mgr.loadTreeState(QStringLiteral("missing"));
    QVERIFY(!mgr.getNodeExpandState(m_tree.root.get()));
    QVERIFY(!mgr.getNodeExpandState(m_tree.batch1));
}

void tst_KAProjectBrowserAbstract::unreadableFileIgnored_data()
{
    QTest::addColumn<QByteArray>("content");
    const QByteArray record = "<instance name=\"A\"><node name=\"Projects\" expanded=\"1\"/></instance>";
    QTest::newRow("version 0.1") << QByteArray("<!DOCTYPE filesystemtreeconfig.xml>\n"
                                               "<filesystemtreeconfig version=\"0.1\">" + record + "</filesystemtreeconfig>\n");
    QTest::newRow("no version") << QByteArray("<!DOCTYPE filesystemtreeconfig.xml>\n"
                                              "<filesystemtreeconfig>" + record + "</filesystemtreeconfig>\n");
    QTest::newRow("version 0.20") << QByteArray("<filesystemtreeconfig version=\"0.20\">" + record
                                                + "</filesystemtreeconfig>\n");
    QTest::newRow("malformed") << QByteArray("<filesystemtreeconfig version=\"0.2\">" + record
                                             + "<instance name=\"B\"></filesystemtreeconfig>\n");
    const QByteArray full = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<filesystemtreeconfig version=\"0.2\">\n  "
        + record + "\n</filesystemtreeconfig>\n";
    QTest::newRow("truncated") << full.left(full.size() - 20);
    QTest::newRow("empty") << QByteArray();
    QTest::newRow("binary") << QByteArray("\x00\xff\xfe<\x01\x02", 6);
    QByteArray deep = "<filesystemtreeconfig version=\"0.2\"><instance name=\"A\">";
    const int levels = 50000;
    for (int i = 0; i < levels; ++i)
        deep += "<node name=\"Projects\" expanded=\"1\">";
    for (int i = 0; i < levels; ++i)
        deep += "</node>";
    deep += "</instance></filesystemtreeconfig>\n";
    QTest::newRow("nested 50000 levels") << deep;
}

void tst_KAProjectBrowserAbstract::unreadableFileIgnored()
{
    QFETCH(QByteArray, content);
    writeState(content);
    NamedCtrl ctrl(QStringLiteral("A"));
    FixedTreeMgr mgr(&ctrl);
    mgr.setTree(m_tree.root.get());
    QVERIFY(!mgr.getNodeExpandState(m_tree.root.get()));
    // Reading alone writes nothing.
    QCOMPARE(readState(), content);

    mgr.saveTreeState(QStringLiteral("A"));
    QByteArray expected = document(sampleInstance(QStringLiteral("A")));
    QCOMPARE(body(readState()), body(expected));
}

void tst_KAProjectBrowserAbstract::placeholderRootHasNoNode()
{
    Node root;
    root.setData(new KAObject2Fake(KAObjectTypeProject));
    root.setOwnsData(true);
    addFolder(&root, QStringLiteral("Hidden"), true);
    NamedCtrl ctrl(QStringLiteral("A"));
    FixedTreeMgr mgr(&ctrl);
    mgr.setTree(&root);
    mgr.saveTreeState(QStringLiteral("P"));
    QByteArray expected = document("  <instance name=\"P\"/>\n");
    QCOMPARE(body(readState()), body(expected));

    // A root without payload is not recorded either.
    Node empty;
    mgr.setTree(&empty);
    mgr.saveTreeState(QStringLiteral("Q"));
    expected = document("  <instance name=\"P\"/>\n  <instance name=\"Q\"/>\n");
    QCOMPARE(body(readState()), body(expected));
}

void tst_KAProjectBrowserAbstract::snapshotStaysInMemory()
{
    NamedCtrl ctrl(QStringLiteral("A"));
    FixedTreeMgr mgr(&ctrl);
    mgr.setTree(m_tree.root.get());
    QVERIFY(!mgr.getNodeExpandState(m_tree.batch2));
    mgr.saveTreeState();
    QVERIFY(!QFile::exists(statePath()));
    QVERIFY(mgr.getNodeExpandState(m_tree.root.get()));
    QVERIFY(mgr.getNodeExpandState(m_tree.batch2));
    QVERIFY(!mgr.getNodeExpandState(m_tree.batch1));

    // The snapshot serves a rebuilt tree of the same names.
    SampleTree rebuilt = makeSampleTree();
    rebuilt.batch2->setExpanded(false);
    mgr.setTree(rebuilt.root.get());
    QVERIFY(mgr.getNodeExpandState(rebuilt.batch2));
}

void tst_KAProjectBrowserAbstract::nullNameIsNoOp()
{
    NamedCtrl ctrl(QStringLiteral("A"));
    FixedTreeMgr mgr(&ctrl);
    mgr.setTree(m_tree.root.get());
    mgr.saveTreeState(QString());
    QVERIFY(!QFile::exists(statePath()));

    mgr.saveTreeState(QStringLiteral("A"));
    const QByteArray saved = readState();
    mgr.saveTreeState(QString());
    QCOMPARE(readState(), saved);

    mgr.loadTreeState(QStringLiteral("A"));
    QVERIFY(mgr.getNodeExpandState(m_tree.batch2));
    mgr.loadTreeState(QString()); // keeps the state in force
    QVERIFY(mgr.getNodeExpandState(m_tree.batch2));

    // A controller without a name loads nothing at construction.
    NamedCtrl unnamed{QString()};
    FixedTreeMgr silent(&unnamed);
    silent.setTree(m_tree.root.get());
    QVERIFY(!silent.getNodeExpandState(m_tree.root.get()));
}

void tst_KAProjectBrowserAbstract::findChildIsCaseInsensitiveOnDirectChildren()
{
    NamedCtrl ctrl(QStringLiteral("A"));
    FixedTreeMgr mgr(&ctrl);
    mgr.setTree(m_tree.root.get());
    new Node(m_tree.root.get(), -1); // a child without payload is skipped

    QCOMPARE(mgr.findChild(QStringLiteral("WELLS"), nullptr), m_tree.wells);
    QCOMPARE(mgr.findChild(QStringLiteral("échantillons & ÉTÉ"), nullptr), m_tree.samples);
    QCOMPARE(mgr.findInTree(KAObjectTypeFolder, QStringLiteral("WELLS"), m_tree.root.get()), nullptr);
    QCOMPARE(mgr.findInTree(KAObjectTypeFolder, QStringLiteral("Wells"), m_tree.root.get()), m_tree.wells);

    // Direct children only.
    QCOMPARE(mgr.findChild(QStringLiteral("batch 2"), nullptr), nullptr);
    QCOMPARE(mgr.findChild(QStringLiteral("batch 2"), m_tree.samples), m_tree.batch2);
    QCOMPARE(mgr.findChild(QStringLiteral("Projects"), nullptr), nullptr);
}

void tst_KAProjectBrowserAbstract::findInTreeIsExactAndBreadthFirst()
{
    NamedCtrl ctrl(QStringLiteral("A"));
    FixedTreeMgr mgr(&ctrl);
    mgr.setTree(m_tree.root.get());
    // The same name two levels down on the first branch and one level down
    // on the second: depth-first would meet the deeper one first.
    Node* deep = addFolder(m_tree.batch1, QStringLiteral("Dup"), false);
    Node* shallow = addFolder(m_tree.wells, QStringLiteral("Dup"), false);
    QCOMPARE(mgr.findInTree(KAObjectTypeFolder, QStringLiteral("Dup"), m_tree.root.get()), shallow);
    QCOMPARE(mgr.findInTree(KAObjectTypeFolder, QStringLiteral("Dup"), m_tree.samples), deep);
    QCOMPARE(mgr.findInTree(KAObjectTypeFolder, QStringLiteral("dup"), m_tree.root.get()), nullptr);
    QCOMPARE(mgr.findInTree(KAObjectTypeAnalysis, QStringLiteral("Dup"), m_tree.root.get()), nullptr);
    // The start node is part of the walk.
    QCOMPARE(mgr.findInTree(KAObjectTypeFolder, QStringLiteral("Batch 1"), m_tree.batch1), m_tree.batch1);
    QCOMPARE(mgr.findInTree(KAObjectTypeFolder, QStringLiteral("Dup"), nullptr), nullptr);
}

void tst_KAProjectBrowserAbstract::findObjectInTreeByIdentity()
{
    NamedCtrl ctrl(QStringLiteral("A"));
    FixedTreeMgr mgr(&ctrl);
    mgr.setTree(m_tree.root.get());
    Node* first = addFolder(m_tree.batch1, QStringLiteral("Same"), false);
    Node* second = addFolder(m_tree.wells, QStringLiteral("Same"), false);
    QCOMPARE(mgr.findObjectInTree(first->data(), m_tree.root.get()), first);
    QCOMPARE(mgr.findObjectInTree(second->data(), m_tree.root.get()), second);
    KAObject2Folder lookalike(QStringLiteral("Same"), KAObjectTypeUserFolder);
    QCOMPARE(mgr.findObjectInTree(&lookalike, m_tree.root.get()), nullptr);
    QCOMPARE(mgr.findObjectInTree(first->data(), m_tree.wells), nullptr);
    QCOMPARE(mgr.findObjectInTree(m_tree.root->data(), m_tree.root.get()), m_tree.root.get());
    QCOMPARE(mgr.findObjectInTree(nullptr, m_tree.root.get()), nullptr);
    QCOMPARE(mgr.findObjectInTree(first->data(), nullptr), nullptr);

    // One object in two nodes: the shallower one, breadth-first.
    auto* deepCopy = new Node(m_tree.batch2, -1);
    deepCopy->setOwnsData(false); // borrowed: the first node holding it owns it
    deepCopy->setData(second->data());
    auto* shallowCopy = new Node(m_tree.root.get(), -1);
    shallowCopy->setOwnsData(false);
    shallowCopy->setData(first->data());
    QCOMPARE(mgr.findObjectInTree(first->data(), m_tree.root.get()), shallowCopy);
    QCOMPARE(mgr.findObjectInTree(second->data(), m_tree.root.get()), second);
}

void tst_KAProjectBrowserAbstract::moveIsAllowed_data()
{
    QTest::addColumn<QString>("moved");
    QTest::addColumn<QString>("target");
    QTest::addColumn<bool>("allowed");
    QTest::newRow("onto itself") << "samples" << "samples" << false;
    QTest::newRow("into its child") << "samples" << "batch2" << false;
    QTest::newRow("into its grandchild") << "root" << "batch1" << false;
    QTest::newRow("child into its parent") << "batch2" << "samples" << true;
    QTest::newRow("into a sibling") << "wells" << "samples" << true;
    QTest::newRow("into a sibling's child") << "wells" << "batch1" << true;
    QTest::newRow("into the root") << "batch1" << "root" << true;
    QTest::newRow("root onto itself") << "root" << "root" << false;
}

void tst_KAProjectBrowserAbstract::moveIsAllowed()
{
    QFETCH(QString, moved);
    QFETCH(QString, target);
    QFETCH(bool, allowed);
    const QHash<QString, Node*> nodes = {
        {QStringLiteral("root"), m_tree.root.get()}, {QStringLiteral("samples"), m_tree.samples},
        {QStringLiteral("batch1"), m_tree.batch1},   {QStringLiteral("batch2"), m_tree.batch2},
        {QStringLiteral("wells"), m_tree.wells},
    };
    NamedCtrl ctrl(QStringLiteral("A"));
    FixedTreeMgr mgr(&ctrl);
    mgr.setTree(m_tree.root.get());
    QCOMPARE(mgr.moveIsAllowed(nodes.value(moved), nodes.value(target)), allowed);
}

QTEST_MAIN(tst_KAProjectBrowserAbstract)
#include "tst_kaprojectbrowserabstract.moc"
