#include "kaobject2.h"
#include "messageloggerinterface.h"
#include "testfixture.h"
#include "ttree.h"
#include "ttreeiterator.h"

#include <QRandomGenerator>
#include <QRegularExpression>
#include <QSet>
#include <QTest>

#include <functional>
#include <memory>
#include <tuple>

namespace {

using Node = TTree<KAObject2*>;

// A payload that counts its destructions, deleted through KAObject2*.
struct CountedObject : KAObject2 {
    explicit CountedObject(const QString& name) : KAObject2(KAObjectTypeBrowserItem, name) {}
    ~CountedObject() override { ++destroyed; }
    static int destroyed;
};
int CountedObject::destroyed = 0;

// A payload hierarchy unrelated to the object model.
struct Circle : QObject {
    ~Circle() override { ++destroyed; }
    static int destroyed;
};
int Circle::destroyed = 0;

Node* addChild(Node* parent, const QString& name)
{
    auto* node = new Node(parent, -1);
    node->setData(new CountedObject(name));
    return node;
}

QString nameOf(const Node* node)
{
    return node && node->data() ? node->data()->name() : QString();
}

// The visit order; the mutable and the const iterator must agree on it.
QStringList walk(Node* root, int strategy)
{
    QStringList names, viaConst;
    for (TTreeIterator<KAObject2*> it(root, strategy); *it; ++it)
        names << nameOf(it.current());
    for (TTreeConstIterator<KAObject2*> it(root, strategy); *it; ++it)
        viaConst << nameOf(*it);
    return names == viaConst ? names : QStringList{QStringLiteral("iterators disagree")};
}

// R with children A then B; A with A1 then A2; B with B1. Children go in at
// the head, so each list is built back to front. The root owns its payloads.
struct SampleTree : Node {
    SampleTree()
    {
        setOwnsData(true);
        setData(new CountedObject(QStringLiteral("R")));
        addChild(addChild(this, QStringLiteral("B")), QStringLiteral("B1"));
        Node* a = addChild(this, QStringLiteral("A"));
        addChild(a, QStringLiteral("A2"));
        addChild(a, QStringLiteral("A1"));
    }
    Node* find(const QString& name)
    {
        for (TTreeIterator<KAObject2*> it(this, 1); *it; ++it)
            if (nameOf(*it) == name)
                return *it;
        return nullptr;
    }
};

} // namespace

class TestTTree : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { kaInitTestEnvironment(); }
    void init()
    {
        CountedObject::destroyed = Circle::destroyed = 0;
        MessageLoggerInterface::returnMe()->clear();
    }
    void childByIndexAndDestroyUnlinks();
    void payloadOwnership();
    void walkOrderAndUnknownStrategy();
    void walkVisitsEverySubtreeNodeOnce();
    void copyDetachAndAttach();
};

void TestTTree::childByIndexAndDestroyUnlinks()
{
    for (int victim : {0, 1, 2}) { // first, middle, last
        CountedObject::destroyed = 0;
        SampleTree tree;
        Node* a = tree.find(QStringLiteral("A"));
        QVERIFY(!a->child(-1) && !a->child(2));
        addChild(a, QStringLiteral("A0")); // linked at the head: A0, A1, A2
        QCOMPARE(nameOf(a->child(2)), QStringLiteral("A2"));
        // The victim's own subtree goes with it.
        addChild(a->child(victim), QStringLiteral("sub"));
        delete a->child(victim);
        QStringList remaining{"A", "A0", "A1", "A2"};
        remaining.removeAt(victim + 1);
        QCOMPARE(walk(a, 1), remaining);
        QCOMPARE(a->childCount(), 2);
        QCOMPARE(CountedObject::destroyed, 2);
    }
}

void TestTTree::payloadOwnership()
{
    // The flag is copied when a child is linked in, so setting it later
    // does not reach the children already there, either way.
    QList<KAObject2*> notOwned;
    {
        Node root;
        root.setData(new CountedObject(QStringLiteral("root")));
        notOwned << addChild(&root, QStringLiteral("a"))->data();
        root.setOwnsData(true);
        Node* b = addChild(&root, QStringLiteral("b"));
        addChild(b, QStringLiteral("b1"));
        b->setOwnsData(false);
        notOwned << b->data();
    }
    QCOMPARE(CountedObject::destroyed, 2); // root and b1
    qDeleteAll(notOwned); // still alive: the tree left them to us

    // Any polymorphic payload, freed through its base.
    {
        TTree<QObject*> root;
        root.setOwnsData(true);
        (new TTree<QObject*>(&root, -1))->setData(new Circle);
        int visited = 0;
        for (TTreeIterator<QObject*> it(&root, 0); *it; ++it)
            ++visited;
        QCOMPARE(visited, 2);
    }
    QCOMPARE(Circle::destroyed, 1);
}

void TestTTree::walkOrderAndUnknownStrategy()
{
    SampleTree tree;
    const QList<std::tuple<QString, int, QStringList>> walks{
        {"R", 0, {"R", "A", "B", "B1", "A1", "A2"}},
        {"R", 1, {"R", "A", "A1", "A2", "B", "B1"}},
        // A walk started inside the tree never reaches the start's siblings.
        {"A", 0, {"A", "A1", "A2"}}, {"B", 1, {"B", "B1"}}, {"A1", 0, {"A1"}},
    };
    for (const auto& [start, strategy, expected] : walks) {
        Node* from = tree.find(start);
        QCOMPARE(walk(from, strategy), expected);
        // Advancing past the end keeps the iterator at the end.
        TTreeIterator<KAObject2*> it(from, strategy);
        for (int i = 0; i <= expected.size(); ++i)
            ++it;
        QCOMPARE(it.current(), nullptr);
    }

    // An unknown strategy is logged as an error; the iterator stays at its root.
    QTest::ignoreMessage(QtWarningMsg, QRegularExpression(QStringLiteral("ttreeiterator")));
    TTreeIterator<KAObject2*> it(&tree, 2);
    const QList<MessageLoggerInterface::Entry> entries = MessageLoggerInterface::returnMe()->entries();
    QCOMPARE(entries.size(), 1);
    QCOMPARE(entries.first().level, MessageLoggerInterface::LevelError);
    for (const char* piece : {"ttreeiterator", "36", "false"})
        QVERIFY2(entries.first().text.contains(QLatin1String(piece)), qPrintable(entries.first().text));
    ++it;
    ++it;
    QCOMPARE(it.current(), &tree);
}

void TestTTree::walkVisitsEverySubtreeNodeOnce()
{
    // An irregular tree from a fixed seed: node i hangs under a random
    // earlier node, so chains, wide fans and leaves mix.
    Node root;
    root.setOwnsData(true);
    QVector<Node*> nodes{&root};
    QRandomGenerator random(20240611);
    for (int i = 1; i < 300; ++i)
        nodes << addChild(nodes[int(random.bounded(i))], QString::number(i));

    // Reference pre-order, children in list order.
    std::function<QStringList(const Node*)> preorder = [&](const Node* n) {
        QStringList names{nameOf(n)};
        for (const Node* c = n->firstChild(); c; c = c->nextSibling())
            names += preorder(c);
        return names;
    };
    for (Node* start : {nodes[0], nodes[1], nodes[5], nodes[42]}) {
        const QStringList expected = preorder(start), bfs = walk(start, 0);
        QCOMPARE(walk(start, 1), expected);
        QCOMPARE(bfs.size(), expected.size());
        QCOMPARE(QSet<QString>(bfs.begin(), bfs.end()), QSet<QString>(expected.begin(), expected.end()));
    }
}

void TestTTree::copyDetachAndAttach()
{
    SampleTree tree; // owns its payloads
    Node* a = tree.find(QStringLiteral("A"));
    a->setExpanded(true);
    a->child(1)->setVisible(false);
    a->child(0)->setEnabled(false);
    std::unique_ptr<Node> copy(a->copy());
    QVERIFY(!copy->parent() && !copy->nextSibling());
    QCOMPARE(walk(copy.get(), 1), (QStringList{"A", "A1", "A2"}));
    QVERIFY(copy->child(0) != a->child(0));
    QCOMPARE(copy->child(0)->data(), a->child(0)->data());
    QVERIFY(copy->isExpanded() && !copy->child(0)->isEnabled() && !copy->child(1)->isVisible());
    for (TTreeIterator<KAObject2*> it(copy.get(), 1); *it; ++it)
        QVERIFY(!it.current()->ownsData());

    // Freeing the copy frees no payload; nor would a child added to it.
    QVERIFY(!(new Node(copy.get(), -1))->ownsData());
    copy.reset();
    QCOMPARE(CountedObject::destroyed, 0);

    a->detach();
    QVERIFY(!a->parent() && !a->nextSibling());
    QCOMPARE(walk(&tree, 1), (QStringList{"R", "B", "B1"}));

    // Linked as the new first child, the node takes ownsData from its new
    // parent; its children keep theirs.
    Node target;
    KAObject2* existing = addChild(&target, QStringLiteral("T1"))->data();
    a->attachTo(&target);
    QCOMPARE(a->parent(), &target);
    QCOMPARE(walk(&target, 0), (QStringList{"", "A", "T1", "A1", "A2"}));
    QVERIFY(!a->ownsData() && a->child(0)->ownsData());
    a->attachTo(&tree);
    QVERIFY(a->ownsData());
    QCOMPARE(walk(&tree, 1), (QStringList{"R", "A", "A1", "A2", "B", "B1"}));
    QCOMPARE(walk(&target, 1), (QStringList{"", "T1"}));
    delete existing;

    // Under itself or its own subtree would close a cycle: refused, reported
    // through the log, the tree left as it was.
    for (const char* inside : {"A", "A1"}) { // itself, its child
        MessageLoggerInterface::returnMe()->clear();
        QTest::ignoreMessage(QtWarningMsg, QRegularExpression(QStringLiteral("ttree")));
        a->attachTo(tree.find(QLatin1String(inside)));
        QCOMPARE(MessageLoggerInterface::returnMe()->entries().size(), 1);
        QCOMPARE(walk(&tree, 1), (QStringList{"R", "A", "A1", "A2", "B", "B1"}));
    }
}

QTEST_GUILESS_MAIN(TestTTree)
#include "tst_ttree.moc"
