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
    void deleteNode(Node*) override {}
    void fillNodeOnExpand(Node*) override {}
    void clearEditor() override {}
    void restoreMainTree(Node*) override {}
    void refreshCurrentView(bool) override {}
    bool belongsToMe(Node*) override { return false; }
    Node* getTree() const override { return nullptr; }
    Node* search(const QString&) override { return nullptr; }
    KAProjectBrowserFilterPackage* getFilter() const override { return nullptr; }
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
    QList<Node*> nodes() const { return {root.get(), samples, batch1, batch2, wells}; }
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

// A manager of the sample tree under a controller of that name; the state
// saved under that name is loaded at construction.
struct Browser {
    NamedCtrl ctrl;
    FixedTreeMgr mgr{&ctrl};
    Browser(const QString& name, Node* root) : ctrl(name) { mgr.setTree(root); }
};

// The expand state the manager recalls for each node, '1' or '0': root,
// samples, batch 1, batch 2, wells.
QByteArray recalled(FixedTreeMgr& mgr, const SampleTree& tree)
{
    QByteArray states;
    for (Node* n : tree.nodes())
        states += mgr.getNodeExpandState(n) ? '1' : '0';
    return states;
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

// The record of the sample tree; states as recalled() gives them.
QByteArray sampleInstance(const QString& name, const char* states = "11011")
{
    const QString st = QLatin1String(states);
    return QStringLiteral("  <instance name=\"%1\">\n"
                          "    <node name=\"Projects\" expanded=\"%2\">\n"
                          "      <node name=\"Échantillons &amp; été\" expanded=\"%3\">\n"
                          "        <node name=\"Batch 1\" expanded=\"%4\"/>\n"
                          "        <node name=\"Batch 2\" expanded=\"%5\"/>\n"
                          "      </node>\n"
                          "      <node name=\"Wells\" expanded=\"%6\"/>\n"
                          "    </node>\n"
                          "  </instance>\n")
        .arg(name, st.mid(0, 1), st.mid(1, 1), st.mid(2, 1), st.mid(3, 1), st.mid(4, 1))
        .toUtf8();
}

QByteArray document(const QByteArray& instances)
{
    return QByteArray(Header) + instances + "</filesystemtreeconfig>\n";
}

// The root element and what follows it, attributes sorted. The prolog
// (declaration, document type) is compared by saveWritesExactDocument alone,
// so that the other tests each fail for their own reason.
QByteArray body(const QByteArray& xml)
{
    const int root = xml.indexOf("<filesystemtreeconfig");
    return sortAttributes(root < 0 ? xml : xml.mid(root));
}

} // namespace

class tst_KAProjectBrowserAbstract : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();

    void saveWritesExactDocument();
    void saveReplacesInPlaceAndAppendsNew();
    void saveKeepsOtherInstances();
    void savedStateLoadsAtConstruction();
    void loadTreeStateSwitchesRecord();
    void unreadableFileIgnored_data();
    void unreadableFileIgnored();
    void placeholderRootHasNoNode();
    void snapshotStaysInMemory();
    void nullNameIsNoOp();
    void findChildIsCaseInsensitiveOnDirectChildren();
    void findInTreeIsBreadthFirst();
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

void tst_KAProjectBrowserAbstract::saveWritesExactDocument()
{
    // Where the host looks for the file.
    QCOMPARE(QDir::cleanPath(KAProjectBrowserAbstract::treeStatePath()), QDir::cleanPath(statePath()));
    Browser b(QStringLiteral("A"), m_tree.root.get());
    b.mgr.saveTreeState(QStringLiteral("A"));
    const QByteArray bytes = readState();
    QCOMPARE(sortAttributes(bytes), sortAttributes(document(sampleInstance(QStringLiteral("A")))));
    // UTF-8, not Latin-1 nor a character reference.
    QVERIFY(bytes.contains(QByteArray("\xc3\x89""chantillons &amp; \xc3\xa9t\xc3\xa9")));

    // Read back and written again, the file keeps the same prolog.
    b.mgr.saveTreeState(QStringLiteral("B"));
    QCOMPARE(sortAttributes(readState()),
             sortAttributes(document(sampleInstance(QStringLiteral("A")) + sampleInstance(QStringLiteral("B")))));
}

void tst_KAProjectBrowserAbstract::saveReplacesInPlaceAndAppendsNew()
{
    Browser b(QStringLiteral("A"), m_tree.root.get());
    for (const char* name : {"A", "B", "C"})
        b.mgr.saveTreeState(QLatin1String(name));

    m_tree.samples->setExpanded(false);
    m_tree.batch1->setExpanded(true);
    b.mgr.saveTreeState(QStringLiteral("B"));
    const QByteArray acb = sampleInstance(QStringLiteral("A")) + sampleInstance(QStringLiteral("B"), "10111")
        + sampleInstance(QStringLiteral("C"));
    QCOMPARE(body(readState()), body(document(acb)));

    b.mgr.saveTreeState(QStringLiteral("D"));
    QCOMPARE(body(readState()), body(document(acb + sampleInstance(QStringLiteral("D"), "10111"))));
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
    Browser b(QStringLiteral("A"), m_tree.root.get());
    // Two browsers open together, saving in turn, keep each other's records.
    SampleTree tree2 = makeSampleTree();
    Browser b2(QStringLiteral("Other"), tree2.root.get());
    b.mgr.saveTreeState(QStringLiteral("A"));
    QCOMPARE(body(readState()), body(document(other + sampleInstance(QStringLiteral("A")))));
    b2.mgr.saveTreeState(QStringLiteral("Other"));
    QCOMPARE(body(readState()),
             body(document(sampleInstance(QStringLiteral("Other")) + sampleInstance(QStringLiteral("A")))));
}

void tst_KAProjectBrowserAbstract::savedStateLoadsAtConstruction()
{
    Browser(QStringLiteral("A"), m_tree.root.get()).mgr.saveTreeState(QStringLiteral("A"));
    // The same tree built again, every node collapsed.
    SampleTree fresh = makeSampleTree();
    for (Node* n : fresh.nodes())
        n->setExpanded(false);
    Browser b(QStringLiteral("A"), fresh.root.get());
    QCOMPARE(recalled(b.mgr, fresh), QByteArray("11011"));
    // A node new since the save comes up collapsed.
    QVERIFY(!b.mgr.getNodeExpandState(addFolder(fresh.samples, QStringLiteral("Batch 3"), true)));

    // A renamed node loses its state, and so does its subtree; names are
    // matched exactly.
    fresh.samples->data()->setName(QStringLiteral("Samples"));
    QCOMPARE(recalled(b.mgr, fresh), QByteArray("10001"));
    fresh.samples->data()->setName(QStringLiteral("ÉCHANTILLONS & ÉTÉ"));
    QCOMPARE(recalled(b.mgr, fresh), QByteArray("10001"));

    // A manager of another name knows nothing.
    fresh.samples->data()->setName(QStringLiteral("Échantillons & été"));
    Browser other(QStringLiteral("B"), fresh.root.get());
    QCOMPARE(recalled(other.mgr, fresh), QByteArray("00000"));
}

void tst_KAProjectBrowserAbstract::loadTreeStateSwitchesRecord()
{
    Browser b(QStringLiteral("A"), m_tree.root.get());
    b.mgr.saveTreeState(QStringLiteral("A"));
    m_tree.batch2->setExpanded(false);
    m_tree.batch1->setExpanded(true);
    b.mgr.saveTreeState(QStringLiteral("B"));

    // Nothing was loaded at construction: no record existed then.
    QCOMPARE(recalled(b.mgr, m_tree), QByteArray("00000"));
    b.mgr.loadTreeState(QStringLiteral("A"));
    QCOMPARE(recalled(b.mgr, m_tree), QByteArray("11011"));
    b.mgr.loadTreeState(QStringLiteral("B"));
    QCOMPARE(recalled(b.mgr, m_tree), QByteArray("11101"));
    b.mgr.loadTreeState(QStringLiteral("missing"));
    QCOMPARE(recalled(b.mgr, m_tree), QByteArray("00000"));
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
    const int levels = 50000;
    QTest::newRow("nested 50000 levels")
        << "<filesystemtreeconfig version=\"0.2\"><instance name=\"A\">"
            + QByteArray("<node name=\"Projects\" expanded=\"1\">").repeated(levels) + QByteArray("</node>").repeated(levels)
            + "</instance></filesystemtreeconfig>\n";
}

void tst_KAProjectBrowserAbstract::unreadableFileIgnored()
{
    QFETCH(QByteArray, content);
    writeState(content);
    Browser b(QStringLiteral("A"), m_tree.root.get());
    QCOMPARE(recalled(b.mgr, m_tree), QByteArray("00000"));
    // Reading alone writes nothing.
    QCOMPARE(readState(), content);

    b.mgr.saveTreeState(QStringLiteral("A"));
    QCOMPARE(body(readState()), body(document(sampleInstance(QStringLiteral("A")))));
}

void tst_KAProjectBrowserAbstract::placeholderRootHasNoNode()
{
    Node root;
    root.setData(new KAObject2Fake(KAObjectTypeProject));
    root.setOwnsData(true);
    addFolder(&root, QStringLiteral("Hidden"), true);
    Browser b(QStringLiteral("A"), &root);
    b.mgr.saveTreeState(QStringLiteral("P"));
    QCOMPARE(body(readState()), body(document("  <instance name=\"P\"/>\n")));

    // A root without payload is not recorded either.
    Node empty;
    b.mgr.setTree(&empty);
    b.mgr.saveTreeState(QStringLiteral("Q"));
    QCOMPARE(body(readState()), body(document("  <instance name=\"P\"/>\n  <instance name=\"Q\"/>\n")));
}

void tst_KAProjectBrowserAbstract::snapshotStaysInMemory()
{
    Browser b(QStringLiteral("A"), m_tree.root.get());
    QCOMPARE(recalled(b.mgr, m_tree), QByteArray("00000"));
    b.mgr.saveTreeState();
    QVERIFY(!QFile::exists(statePath()));
    QCOMPARE(recalled(b.mgr, m_tree), QByteArray("11011"));

    // The snapshot serves a rebuilt tree of the same names.
    SampleTree rebuilt = makeSampleTree();
    for (Node* n : rebuilt.nodes())
        n->setExpanded(false);
    b.mgr.setTree(rebuilt.root.get());
    QCOMPARE(recalled(b.mgr, rebuilt), QByteArray("11011"));
}

void tst_KAProjectBrowserAbstract::nullNameIsNoOp()
{
    Browser b(QStringLiteral("A"), m_tree.root.get());
    b.mgr.saveTreeState(QString());
    QVERIFY(!QFile::exists(statePath()));

    b.mgr.saveTreeState(QStringLiteral("A"));
    const QByteArray saved = readState();
    b.mgr.saveTreeState(QString());
    QCOMPARE(readState(), saved);

    b.mgr.loadTreeState(QStringLiteral("A"));
    b.mgr.loadTreeState(QString()); // keeps the state in force
    QCOMPARE(recalled(b.mgr, m_tree), QByteArray("11011"));

    // A controller without a name loads nothing at construction.
    Browser unnamed(QString(), m_tree.root.get());
    QCOMPARE(recalled(unnamed.mgr, m_tree), QByteArray("00000"));
}

void tst_KAProjectBrowserAbstract::findChildIsCaseInsensitiveOnDirectChildren()
{
    Browser b(QStringLiteral("A"), m_tree.root.get());
    new Node(m_tree.root.get(), -1); // a child without payload is skipped
    QCOMPARE(b.mgr.findChild(QStringLiteral("WELLS"), nullptr), m_tree.wells);
    QCOMPARE(b.mgr.findChild(QStringLiteral("échantillons & ÉTÉ"), nullptr), m_tree.samples);
    // Direct children only.
    QCOMPARE(b.mgr.findChild(QStringLiteral("batch 2"), nullptr), nullptr);
    QCOMPARE(b.mgr.findChild(QStringLiteral("batch 2"), m_tree.samples), m_tree.batch2);
    QCOMPARE(b.mgr.findChild(QStringLiteral("Projects"), nullptr), nullptr);
}

// By kind and exact name, or by object identity; the start node is part of
// the walk.
void tst_KAProjectBrowserAbstract::findInTreeIsBreadthFirst()
{
    Browser b(QStringLiteral("A"), m_tree.root.get());
    // The same name two levels down on the first branch and one level down
    // on the second: depth-first would meet the deeper one first.
    Node* deep = addFolder(m_tree.batch1, QStringLiteral("Dup"), false);
    Node* shallow = addFolder(m_tree.wells, QStringLiteral("Dup"), false);
    Node* root = m_tree.root.get();
    QCOMPARE(b.mgr.findInTree(KAObjectTypeFolder, QStringLiteral("Dup"), root), shallow);
    QCOMPARE(b.mgr.findInTree(KAObjectTypeFolder, QStringLiteral("Dup"), m_tree.samples), deep);
    QCOMPARE(b.mgr.findInTree(KAObjectTypeFolder, QStringLiteral("dup"), root), nullptr);
    QCOMPARE(b.mgr.findInTree(KAObjectTypeAnalysis, QStringLiteral("Dup"), root), nullptr);
    QCOMPARE(b.mgr.findInTree(KAObjectTypeFolder, QStringLiteral("Batch 1"), m_tree.batch1), m_tree.batch1);
    QCOMPARE(b.mgr.findInTree(KAObjectTypeFolder, QStringLiteral("Dup"), nullptr), nullptr);

    QCOMPARE(b.mgr.findObjectInTree(deep->data(), root), deep);
    QCOMPARE(b.mgr.findObjectInTree(shallow->data(), root), shallow);
    KAObject2Folder lookalike(QStringLiteral("Dup"), KAObjectTypeUserFolder);
    QCOMPARE(b.mgr.findObjectInTree(&lookalike, root), nullptr);
    QCOMPARE(b.mgr.findObjectInTree(deep->data(), m_tree.wells), nullptr);
    QCOMPARE(b.mgr.findObjectInTree(root->data(), root), root);
    QCOMPARE(b.mgr.findObjectInTree(nullptr, root), nullptr);
    QCOMPARE(b.mgr.findObjectInTree(deep->data(), nullptr), nullptr);
    // One object in two nodes: the shallower one.
    auto* deepCopy = new Node(m_tree.batch2, -1);
    deepCopy->setOwnsData(false); // borrowed: the first node holding it owns it
    deepCopy->setData(shallow->data());
    auto* shallowCopy = new Node(root, -1);
    shallowCopy->setOwnsData(false);
    shallowCopy->setData(deep->data());
    QCOMPARE(b.mgr.findObjectInTree(deep->data(), root), shallowCopy);
    QCOMPARE(b.mgr.findObjectInTree(shallow->data(), root), shallow);
}

void tst_KAProjectBrowserAbstract::moveIsAllowed_data()
{
    // Nodes by their place in SampleTree::nodes().
    QTest::addColumn<int>("moved");
    QTest::addColumn<int>("target");
    QTest::addColumn<bool>("allowed");
    enum { Root, Samples, Batch1, Batch2, Wells };
    QTest::newRow("onto itself") << int(Samples) << int(Samples) << false;
    QTest::newRow("into its child") << int(Samples) << int(Batch2) << false;
    QTest::newRow("into its grandchild") << int(Root) << int(Batch1) << false;
    QTest::newRow("child into its parent") << int(Batch2) << int(Samples) << true;
    QTest::newRow("into a sibling") << int(Wells) << int(Samples) << true;
    QTest::newRow("into a sibling's child") << int(Wells) << int(Batch1) << true;
    QTest::newRow("into the root") << int(Batch1) << int(Root) << true;
    QTest::newRow("root onto itself") << int(Root) << int(Root) << false;
}

void tst_KAProjectBrowserAbstract::moveIsAllowed()
{
    QFETCH(int, moved);
    QFETCH(int, target);
    QFETCH(bool, allowed);
    Browser b(QStringLiteral("A"), m_tree.root.get());
    QCOMPARE(b.mgr.moveIsAllowed(m_tree.nodes().at(moved), m_tree.nodes().at(target)), allowed);
}

QTEST_MAIN(tst_KAProjectBrowserAbstract)
#include "tst_kaprojectbrowserabstract.moc"
