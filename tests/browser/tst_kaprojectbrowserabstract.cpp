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

// The controller comes first, as a base: the manager loads the state saved
// under its name at construction.
struct Named {
    explicit Named(const QString& name) : named(name) {}
    NamedCtrl named;
};

// A manager over a tree that the test builds; the tree is not owned.
class Mgr : private Named, public KAProjectBrowserAbstract
{
public:
    Mgr(const QString& name, Node* root) : Named(name), KAProjectBrowserAbstract(&named), m_root(root) {}
    void init() override {}
    Node* getTree() const override { return m_root; }
    bool refreshRequested(KAObjectType, const KAObject2*) override { return false; }
    bool fillNodeOnExpand(Node*) override { return false; }
    void setTree(Node* root) { m_root = root; }
    using KAProjectBrowserAbstract::getNodeExpandState;

private:
    Node* m_root;
};

Node* addNode(Node* parent, KAObject2* payload, bool expanded = false)
{
    auto* node = parent ? new Node(parent, -1) : new Node;
    node->setData(payload);
    node->setOwnsData(true);
    node->setExpanded(expanded);
    return node;
}

Node* addFolder(Node* parent, const QString& name, bool expanded)
{
    return addNode(parent, new KAObject2Folder(name, KAObjectTypeUserFolder), expanded);
}

// In child order (children are linked at the head, so they are made last
// to first): Projects, its folders "Échantillons & été" (Batch 1, Batch 2)
// and Wells (a placeholder); all expanded but Batch 1.
struct SampleTree {
    std::unique_ptr<Node> root{addFolder(nullptr, QStringLiteral("Projects"), true)};
    Node* wells = addFolder(root.get(), QStringLiteral("Wells"), true);
    Node* fake = addNode(wells, new KAObject2Fake(KAObjectTypeSignal));
    Node* samples = addFolder(root.get(), QStringLiteral("Échantillons & été"), true);
    Node* batch2 = addFolder(samples, QStringLiteral("Batch 2"), true);
    Node* batch1 = addFolder(samples, QStringLiteral("Batch 1"), false);
};

// The expand state the manager recalls for each node, '1' or '0': root,
// samples, batch 1, batch 2, wells.
QByteArray recalled(Mgr& mgr, const SampleTree& t)
{
    QByteArray states;
    for (Node* n : {t.root.get(), t.samples, t.batch1, t.batch2, t.wells})
        states += mgr.getNodeExpandState(n) ? '1' : '0';
    return states;
}

QString statePath() { return TApplicationData::getInstance()->applicationDataPath() + "/filesystemtreeconfig.xml"; }

// Qt 5's DOM writes the attributes of an element in the order of its hash
// table, which changes from one run to the next; that order is no part of
// the file format. Everything else is read byte for byte, with "name" put
// first in the one element that has two attributes.
QByteArray readState(bool raw = false)
{
    QFile file(statePath());
    const QByteArray bytes = file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    static const QRegularExpression swapped(QStringLiteral(" (expanded=\"[^\"]*\") (name=\"[^\"]*\")"));
    return raw ? bytes : QString::fromUtf8(bytes).replace(swapped, QStringLiteral(" \\2 \\1")).toUtf8();
}

void writeState(const QByteArray& bytes)
{
    QFile file(statePath());
    QVERIFY(file.open(QIODevice::WriteOnly | QIODevice::Truncate));
    QCOMPARE(file.write(bytes), qint64(bytes.size()));
}

// The whole file holding those instance records.
QByteArray document(const QByteArray& instances)
{
    return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<!DOCTYPE filesystemtreeconfig.xml>\n"
           "<filesystemtreeconfig version=\"0.2\">\n" + instances + "</filesystemtreeconfig>\n";
}

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

} // namespace

// The expand-state file shared by every browser, and the three tree searches
// of the manager base.
class tst_KAProjectBrowserAbstract : public QObject
{
    Q_OBJECT

    SampleTree m_tree;

private slots:
    void initTestCase() { kaInitTestEnvironment(); }
    void init()
    {
        QFile::remove(statePath());
        m_tree = SampleTree();
    }

    // Byte for byte, in UTF-8; a record is replaced in place, a new one
    // appended, and another browser's record kept, even by two browsers open
    // together.
    void saveWritesExactDocument()
    {
        QCOMPARE(QDir::cleanPath(KAProjectBrowserAbstract::treeStatePath()), QDir::cleanPath(statePath()));
        writeState(document("  <instance name=\"Other\">\n    <node name=\"C:\" expanded=\"0\"/>\n  </instance>\n"));
        Mgr a(QStringLiteral("A"), m_tree.root.get());
        SampleTree tree2;
        Mgr other(QStringLiteral("Other"), tree2.root.get());
        a.saveTreeState(QStringLiteral("A"));
        a.saveTreeState(QStringLiteral("B"));
        other.saveTreeState(QStringLiteral("Other"));
        m_tree.samples->setExpanded(false);
        m_tree.batch1->setExpanded(true);
        a.saveTreeState(QStringLiteral("A"));
        a.saveTreeState(QStringLiteral("C"));
        QCOMPARE(readState(), document(sampleInstance(QStringLiteral("Other")) + sampleInstance("A", "10111")
                                       + sampleInstance("B") + sampleInstance("C", "10111")));
        QVERIFY(readState(true).contains(QByteArray("\xc3\x89""chantillons &amp; \xc3\xa9t\xc3\xa9")));
    }

    void savedStateReadBack()
    {
        Mgr(QStringLiteral("A"), m_tree.root.get()).saveTreeState(QStringLiteral("A"));
        SampleTree fresh; // the same tree built again, every node collapsed
        for (Node* n : {fresh.root.get(), fresh.samples, fresh.batch2, fresh.wells})
            n->setExpanded(false);
        Mgr a(QStringLiteral("A"), fresh.root.get());
        QCOMPARE(recalled(a, fresh), QByteArray("11011"));
        // A node new since the save comes up collapsed.
        QVERIFY(!a.getNodeExpandState(addFolder(fresh.samples, QStringLiteral("Batch 3"), true)));
        // A renamed node loses its state, and so does its subtree; names are matched exactly.
        fresh.samples->data()->setName(QStringLiteral("ÉCHANTILLONS & ÉTÉ"));
        QCOMPARE(recalled(a, fresh), QByteArray("10001"));
        fresh.samples->data()->setName(QStringLiteral("Échantillons & été"));
        // A manager of another name knows nothing; loading switches records.
        Mgr b(QStringLiteral("B"), fresh.root.get());
        QCOMPARE(recalled(b, fresh), QByteArray("00000"));
        fresh.batch1->setExpanded(true);
        b.saveTreeState(QStringLiteral("B"));
        b.loadTreeState(QStringLiteral("A"));
        QCOMPARE(recalled(b, fresh), QByteArray("11011"));
        b.loadTreeState(QStringLiteral("B"));
        b.loadTreeState(QString()); // keeps the record in force
        QCOMPARE(recalled(b, fresh), QByteArray("00100"));
        b.loadTreeState(QStringLiteral("missing"));
        QCOMPARE(recalled(b, fresh), QByteArray("00000"));
        // A snapshot without a name stays in memory, and serves a rebuilt tree.
        const QByteArray saved = readState(true);
        b.setTree(m_tree.root.get());
        b.saveTreeState();
        QCOMPARE(readState(true), saved);
        b.setTree(fresh.root.get());
        QCOMPARE(recalled(b, fresh), QByteArray("11011"));
    }

    // Ignored, never read as something it is not, replaced at the next save.
    void unreadableFileIgnored_data()
    {
        QTest::addColumn<QByteArray>("content");
        const QByteArray record = "<instance name=\"A\"><node name=\"Projects\" expanded=\"1\"/></instance>";
        const QByteArray end = record + "</filesystemtreeconfig>\n";
        QTest::newRow("version 0.1") << "<!DOCTYPE filesystemtreeconfig.xml>\n<filesystemtreeconfig version=\"0.1\">" + end;
        QTest::newRow("no version") << "<!DOCTYPE filesystemtreeconfig.xml>\n<filesystemtreeconfig>" + end;
        QTest::newRow("version 0.20") << "<filesystemtreeconfig version=\"0.20\">" + end;
        QTest::newRow("malformed") << "<filesystemtreeconfig version=\"0.2\">" + record + "<instance name=\"B\">" + end;
        const QByteArray full = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<filesystemtreeconfig version=\"0.2\">" + end;
        QTest::newRow("truncated") << full.left(full.size() - 20);
        QTest::newRow("empty") << QByteArray();
        QTest::newRow("binary") << QByteArray("\x00\xff\xfe<\x01\x02", 6);
        QTest::newRow("nested 50000 levels")
            << "<filesystemtreeconfig version=\"0.2\"><instance name=\"A\">"
                + QByteArray("<node name=\"Projects\" expanded=\"1\">").repeated(50000)
                + QByteArray("</node>").repeated(50000) + "</instance></filesystemtreeconfig>\n";
    }
    void unreadableFileIgnored()
    {
        QFETCH(QByteArray, content);
        writeState(content);
        Mgr a(QStringLiteral("A"), m_tree.root.get());
        QCOMPARE(recalled(a, m_tree), QByteArray("00000"));
        QCOMPARE(readState(true), content); // reading alone writes nothing
        a.saveTreeState(QStringLiteral("A"));
        QCOMPARE(readState(), document(sampleInstance(QStringLiteral("A"))));
    }

    // By name, case-insensitively, among direct children; by kind and exact
    // name, or by object identity, breadth-first from the start node itself.
    void treeSearches()
    {
        Mgr a(QStringLiteral("A"), m_tree.root.get());
        Node* root = m_tree.root.get();
        new Node(root, -1); // a child without payload is skipped
        QCOMPARE(a.findChild(QStringLiteral("échantillons & ÉTÉ"), nullptr), m_tree.samples);
        QCOMPARE(a.findChild(QStringLiteral("batch 2"), nullptr), nullptr);
        QCOMPARE(a.findChild(QStringLiteral("batch 2"), m_tree.samples), m_tree.batch2);
        QCOMPARE(a.findChild(QStringLiteral("Projects"), nullptr), nullptr);
        // The same name two levels down on the first branch and one level down
        // on the second: depth-first would meet the deeper one first.
        Node* deep = addFolder(m_tree.batch1, QStringLiteral("Dup"), false);
        Node* shallow = addFolder(m_tree.wells, QStringLiteral("Dup"), false);
        QCOMPARE(a.findInTree(KAObjectTypeFolder, QStringLiteral("Dup"), root), shallow);
        QCOMPARE(a.findInTree(KAObjectTypeFolder, QStringLiteral("Dup"), m_tree.samples), deep);
        QCOMPARE(a.findInTree(KAObjectTypeFolder, QStringLiteral("dup"), root), nullptr);
        QCOMPARE(a.findInTree(KAObjectTypeAnalysis, QStringLiteral("Dup"), root), nullptr);
        QCOMPARE(a.findInTree(KAObjectTypeFolder, QStringLiteral("Batch 1"), m_tree.batch1), m_tree.batch1);
        KAObject2Folder lookalike(QStringLiteral("Dup"), KAObjectTypeUserFolder);
        QCOMPARE(a.findObjectInTree(&lookalike, root), nullptr);
        QCOMPARE(a.findObjectInTree(deep->data(), m_tree.wells), nullptr);
        QCOMPARE(a.findObjectInTree(root->data(), root), root);
        // One object in two nodes: the shallower one.
        for (Node* copy : {new Node(m_tree.batch2, -1), new Node(root, -1)}) {
            copy->setOwnsData(false); // borrowed: the first node holding it owns it
            copy->setData(copy->parent() == root ? deep->data() : shallow->data());
        }
        QCOMPARE(a.findObjectInTree(deep->data(), root), root->firstChild());
        QCOMPARE(a.findObjectInTree(shallow->data(), root), shallow);
    }
};

QTEST_MAIN(tst_KAProjectBrowserAbstract)
#include "tst_kaprojectbrowserabstract.moc"
