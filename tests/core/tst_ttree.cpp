#include "kaobject2.h"
#include "messageloggerinterface.h"
#include "testfixture.h"
#include "ttree.h"
#include "ttreeiterator.h"

#include <QRandomGenerator>
#include <QRegularExpression>
#include <QSet>
#include <QStringList>
#include <QTest>

#include <functional>
#include <memory>

namespace {

using Node = TTree<KAObject2*>;

// A payload that counts its destructions, deleted through KAObject2*.
class CountedObject : public KAObject2
{
public:
    explicit CountedObject(const QString& name)
        : KAObject2(KAObjectTypeBrowserItem, name) {}
    ~CountedObject() override { ++destroyed; }
    static int destroyed;
};
int CountedObject::destroyed = 0;

// A payload hierarchy unrelated to the object model.
struct Shape {
    virtual ~Shape() = default;
    virtual QString label() const = 0;
};
struct Circle : Shape {
    explicit Circle(int r) : radius(r) {}
    ~Circle() override { ++destroyed; }
    QString label() const override { return QStringLiteral("circle%1").arg(radius); }
    int radius;
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

QStringList childNames(const Node* parent)
{
    QStringList names;
    for (const Node* c = parent->firstChild(); c; c = c->nextSibling())
        names << nameOf(c);
    return names;
}

// R with children A then B; A with A1 then A2; B with B1. Children go in at
// the head, so each list is built back to front. The root owns its payloads.
struct SampleTree {
    SampleTree()
    {
        root->setOwnsData(true);
        root->setData(new CountedObject(QStringLiteral("R")));
        Node* b = addChild(root.get(), QStringLiteral("B"));
        addChild(b, QStringLiteral("B1"));
        Node* a = addChild(root.get(), QStringLiteral("A"));
        addChild(a, QStringLiteral("A2"));
        addChild(a, QStringLiteral("A1"));
    }
    Node* find(const QString& name) const
    {
        std::function<Node*(Node*)> walk = [&](Node* n) -> Node* {
            if (nameOf(n) == name)
                return n;
            for (Node* c = n->firstChild(); c; c = c->nextSibling())
                if (Node* hit = walk(c))
                    return hit;
            return nullptr;
        };
        return walk(root.get());
    }
    std::unique_ptr<Node> root = std::make_unique<Node>();
};

QStringList walkConst(const Node* root, int strategy)
{
    QStringList names;
    for (TTreeConstIterator<KAObject2*> it(root, strategy); *it; ++it)
        names << nameOf(*it);
    return names;
}

QStringList walkMutable(Node* root, int strategy)
{
    QStringList names;
    for (TTreeIterator<KAObject2*> it(root, strategy); *it; ++it)
        names << nameOf(it.current());
    return names;
}

} // namespace

class TestTTree : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();

    void constructionDefaults();
    void childIsLinkedAtTheHead();
    void childByIndex_data();
    void childByIndex();
    void destroyUnlinks_data();
    void destroyUnlinks();
    void payloadOwnership_data();
    void payloadOwnership();
    void walkOrder_data();
    void walkOrder();
    void walkVisitsEverySubtreeNodeOnce_data();
    void walkVisitsEverySubtreeNodeOnce();
    void unknownStrategyReportsAndStaysAtRoot_data();
    void unknownStrategyReportsAndStaysAtRoot();
    void detachKeepsSubtree();
    void attachToTakesOwnershipFlagOfNewParent_data();
    void attachToTakesOwnershipFlagOfNewParent();
    void attachToOwnSubtreeIsRefused_data();
    void attachToOwnSubtreeIsRefused();
    void copyKeepsOrderFlagsAndPayloadsButNeverOwns();
    void otherPolymorphicPayload();
};

void TestTTree::initTestCase()
{
    kaInitTestEnvironment();
}

void TestTTree::init()
{
    CountedObject::destroyed = 0;
    Circle::destroyed = 0;
    MessageLoggerInterface::returnMe()->clear();
}

void TestTTree::constructionDefaults()
{
    Node root;
    QCOMPARE(root.data(), nullptr);
    QCOMPARE(root.parent(), nullptr);
    QCOMPARE(root.firstChild(), nullptr);
    QCOMPARE(root.nextSibling(), nullptr);
    QCOMPARE(root.childCount(), 0);
    QCOMPARE(root.tag(), -1);
    QVERIFY(root.isEnabled());
    QVERIFY(root.isVisible());
    QVERIFY(!root.ownsData());
    QVERIFY(!root.isExpanded());

    // A child starts with the same defaults except its link, its tag and the
    // ownership flag, which it copies from the parent.
    root.setOwnsData(true);
    root.setExpanded(true);
    root.setVisible(false);
    root.setEnabled(false);
    auto* child = new Node(&root, 7);
    QCOMPARE(child->parent(), &root);
    QCOMPARE(child->tag(), 7);
    QVERIFY(child->ownsData());
    QVERIFY(child->isEnabled());
    QVERIFY(child->isVisible());
    QVERIFY(!child->isExpanded());
    QCOMPARE(root.childCount(), 1);

    // A null parent makes a root.
    Node orphan(nullptr, 3);
    QCOMPARE(orphan.parent(), nullptr);
    QCOMPARE(orphan.tag(), 3);
    QVERIFY(!orphan.ownsData());
}

void TestTTree::childIsLinkedAtTheHead()
{
    Node root;
    Node* x = addChild(&root, QStringLiteral("X"));
    Node* y = addChild(&root, QStringLiteral("Y"));
    QCOMPARE(root.firstChild(), y);
    QCOMPARE(y->nextSibling(), x);
    QCOMPARE(x->nextSibling(), nullptr);
    QCOMPARE(root.child(0), y);
    QCOMPARE(root.child(1), x);
    QCOMPARE(root.childCount(), 2);
    // The root does not own: the test frees the payloads.
    delete x->data();
    delete y->data();
}

void TestTTree::childByIndex_data()
{
    QTest::addColumn<int>("children");
    QTest::addColumn<int>("index");
    QTest::addColumn<QString>("expected"); // empty: null

    // Children are added as C0, C1, ... so the newest, C(n-1), is child(0).
    QTest::newRow("leaf, index 0") << 0 << 0 << QString();
    QTest::newRow("first") << 3 << 0 << QStringLiteral("C2");
    QTest::newRow("last") << 3 << 2 << QStringLiteral("C0");
    QTest::newRow("index equal to count") << 3 << 3 << QString();
    QTest::newRow("far beyond") << 3 << 100 << QString();
    QTest::newRow("negative") << 3 << -1 << QString();
}

void TestTTree::childByIndex()
{
    QFETCH(int, children);
    QFETCH(int, index);
    QFETCH(QString, expected);

    Node root;
    root.setOwnsData(true);
    for (int i = 0; i < children; ++i)
        addChild(&root, QStringLiteral("C%1").arg(i));
    Node* found = root.child(index);
    if (expected.isEmpty())
        QCOMPARE(found, nullptr);
    else
        QCOMPARE(nameOf(found), expected);
}

void TestTTree::destroyUnlinks_data()
{
    QTest::addColumn<QString>("victim");
    QTest::addColumn<QStringList>("remaining");

    QTest::newRow("first child") << QStringLiteral("A") << QStringList{"B", "C"};
    QTest::newRow("middle child") << QStringLiteral("B") << QStringList{"A", "C"};
    QTest::newRow("last child") << QStringLiteral("C") << QStringList{"A", "B"};
}

void TestTTree::destroyUnlinks()
{
    QFETCH(QString, victim);
    QFETCH(QStringList, remaining);

    Node root;
    root.setOwnsData(true);
    Node* c = addChild(&root, QStringLiteral("C"));
    Node* b = addChild(&root, QStringLiteral("B"));
    Node* a = addChild(&root, QStringLiteral("A"));
    Node* doomed = victim == QLatin1String("A") ? a : victim == QLatin1String("B") ? b : c;
    // The victim's own subtree goes with it.
    addChild(addChild(doomed, QStringLiteral("sub")), QStringLiteral("subsub"));

    delete doomed;

    QCOMPARE(childNames(&root), remaining);
    QCOMPARE(root.childCount(), 2);
    QCOMPARE(nameOf(root.firstChild()), remaining.first());
    QCOMPARE(nameOf(root.child(1)), remaining.last());
    QCOMPARE(root.child(1)->nextSibling(), nullptr);
    QCOMPARE(CountedObject::destroyed, 3);
}

void TestTTree::payloadOwnership_data()
{
    QTest::addColumn<bool>("ownsBeforeChildren");
    QTest::addColumn<bool>("ownsAfterChildren");
    QTest::addColumn<int>("freed");

    // Four payloads: the root's and three descendants'. The flag is copied
    // when a child is linked in, so setting it later does not reach the
    // existing children.
    QTest::newRow("owning root") << true << true << 4;
    QTest::newRow("non-owning root") << false << false << 0;
    QTest::newRow("root owns only after the children were added") << false << true << 1;
    QTest::newRow("root stops owning after the children were added") << true << false << 3;
}

void TestTTree::payloadOwnership()
{
    QFETCH(bool, ownsBeforeChildren);
    QFETCH(bool, ownsAfterChildren);
    QFETCH(int, freed);

    QList<KAObject2*> payloads;
    {
        Node root;
        root.setData(new CountedObject(QStringLiteral("root")));
        root.setOwnsData(ownsBeforeChildren);
        Node* a = addChild(&root, QStringLiteral("a"));
        addChild(a, QStringLiteral("a1"));
        addChild(&root, QStringLiteral("b"));
        root.setOwnsData(ownsAfterChildren);
        for (TTreeIterator<KAObject2*> it(&root, 1); *it; ++it) {
            QCOMPARE(it.current()->ownsData(), it.current() == &root ? ownsAfterChildren : ownsBeforeChildren);
            if (!it.current()->ownsData())
                payloads << it.current()->data();
        }
    }
    QCOMPARE(CountedObject::destroyed, freed);
    QCOMPARE(payloads.size(), 4 - freed);
    // The payloads the tree did not own are still alive and belong to us.
    for (KAObject2* p : payloads)
        QVERIFY(!p->name().isEmpty());
    qDeleteAll(payloads);
}

void TestTTree::walkOrder_data()
{
    QTest::addColumn<QString>("start"); // node the walk starts from
    QTest::addColumn<int>("strategy");
    QTest::addColumn<QStringList>("expected");

    QTest::newRow("bfs from the root") << "R" << 0 << QStringList{"R", "A", "B", "B1", "A1", "A2"};
    QTest::newRow("dfs from the root") << "R" << 1 << QStringList{"R", "A", "A1", "A2", "B", "B1"};
    // A walk started inside the tree never reaches the start's siblings.
    QTest::newRow("bfs from A") << "A" << 0 << QStringList{"A", "A1", "A2"};
    QTest::newRow("dfs from A") << "A" << 1 << QStringList{"A", "A1", "A2"};
    QTest::newRow("bfs from B") << "B" << 0 << QStringList{"B", "B1"};
    QTest::newRow("dfs from B") << "B" << 1 << QStringList{"B", "B1"};
    QTest::newRow("bfs from leaf A1") << "A1" << 0 << QStringList{"A1"};
    QTest::newRow("dfs from leaf A1") << "A1" << 1 << QStringList{"A1"};
}

void TestTTree::walkOrder()
{
    QFETCH(QString, start);
    QFETCH(int, strategy);
    QFETCH(QStringList, expected);

    SampleTree tree;
    Node* from = tree.find(start);
    QVERIFY(from);
    QCOMPARE(walkConst(from, strategy), expected);
    QCOMPARE(walkMutable(from, strategy), expected);

    // Advancing past the end keeps the iterator at the end.
    TTreeIterator<KAObject2*> it(from, strategy);
    for (int i = 0; i < expected.size(); ++i)
        ++it;
    QCOMPARE(it.current(), nullptr);
    ++it;
    QCOMPARE(it.current(), nullptr);
}

void TestTTree::walkVisitsEverySubtreeNodeOnce_data()
{
    QTest::addColumn<int>("strategy");
    QTest::newRow("bfs") << 0;
    QTest::newRow("dfs") << 1;
}

void TestTTree::walkVisitsEverySubtreeNodeOnce()
{
    QFETCH(int, strategy);

    // An irregular tree from a fixed seed: node i hangs under a random
    // earlier node, so chains, wide fans and leaves mix.
    Node root;
    root.setOwnsData(true);
    root.setData(new CountedObject(QStringLiteral("0")));
    QVector<Node*> nodes{&root};
    QRandomGenerator random(20240611);
    for (int i = 1; i < 300; ++i)
        nodes << addChild(nodes[int(random.bounded(i))], QString::number(i));

    // Reference pre-order, children in list order.
    QStringList preorder;
    std::function<void(const Node*)> visit = [&](const Node* n) {
        preorder << nameOf(n);
        for (const Node* c = n->firstChild(); c; c = c->nextSibling())
            visit(c);
    };

    for (Node* start : {nodes[0], nodes[1], nodes[5], nodes[42]}) {
        preorder.clear();
        visit(start);
        const QStringList walked = walkConst(start, strategy);
        QCOMPARE(walked.first(), nameOf(start));
        QCOMPARE(walked.size(), preorder.size());
        QCOMPARE(QSet<QString>(walked.begin(), walked.end()).size(), walked.size());
        QCOMPARE(QSet<QString>(walked.begin(), walked.end()),
                 QSet<QString>(preorder.begin(), preorder.end()));
        if (strategy == 1)
            QCOMPARE(walked, preorder);
    }
}

void TestTTree::unknownStrategyReportsAndStaysAtRoot_data()
{
    QTest::addColumn<int>("strategy");
    QTest::newRow("2") << 2;
    QTest::newRow("-1") << -1;
    QTest::newRow("1000") << 1000;
}

void TestTTree::unknownStrategyReportsAndStaysAtRoot()
{
    QFETCH(int, strategy);

    SampleTree tree;
    QTest::ignoreMessage(QtWarningMsg, QRegularExpression(QStringLiteral("ttreeiterator")));
    TTreeIterator<KAObject2*> it(tree.root.get(), strategy);

    const QList<MessageLoggerInterface::Entry> entries = MessageLoggerInterface::returnMe()->entries();
    QCOMPARE(entries.size(), 1);
    QCOMPARE(entries.first().level, MessageLoggerInterface::LevelError);
    const QString text = entries.first().text;
    QVERIFY2(text.contains(QLatin1String("ttreeiterator")), qPrintable(text));
    QVERIFY2(text.contains(QLatin1String("36")), qPrintable(text));
    QVERIFY2(text.contains(QLatin1String("false")), qPrintable(text));

    QCOMPARE(it.current(), tree.root.get());
    ++it;
    ++it;
    QCOMPARE(it.current(), tree.root.get());
}

void TestTTree::detachKeepsSubtree()
{
    SampleTree tree;
    Node* a = tree.find(QStringLiteral("A"));
    a->detach();

    QCOMPARE(a->parent(), nullptr);
    QCOMPARE(a->nextSibling(), nullptr);
    QCOMPARE(childNames(a), (QStringList{"A1", "A2"}));
    QCOMPARE(tree.root->childCount(), 1);
    QCOMPARE(childNames(tree.root.get()), QStringList{"B"});
    QCOMPARE(walkConst(tree.root.get(), 1), (QStringList{"R", "B", "B1"}));

    // The detached branch is now the caller's: freeing it leaves the tree be.
    delete a;
    QCOMPARE(CountedObject::destroyed, 3);
    QCOMPARE(walkConst(tree.root.get(), 0), (QStringList{"R", "B", "B1"}));
}

void TestTTree::attachToTakesOwnershipFlagOfNewParent_data()
{
    QTest::addColumn<bool>("newParentOwns");
    QTest::newRow("into an owning tree") << true;
    QTest::newRow("into a non-owning tree") << false;
}

void TestTTree::attachToTakesOwnershipFlagOfNewParent()
{
    QFETCH(bool, newParentOwns);

    SampleTree tree; // owns its payloads
    Node target;
    target.setOwnsData(newParentOwns);
    Node* existing = addChild(&target, QStringLiteral("T1"));
    KAObject2* existingPayload = existing->data();

    Node* a = tree.find(QStringLiteral("A"));
    KAObject2* moved = a->data();
    a->attachTo(&target);

    QCOMPARE(a->parent(), &target);
    QCOMPARE(target.firstChild(), a);
    QCOMPARE(a->nextSibling(), existing);
    QCOMPARE(target.childCount(), 2);
    QCOMPARE(tree.root->childCount(), 1);
    QCOMPARE(childNames(tree.root.get()), QStringList{"B"});
    QCOMPARE(a->ownsData(), newParentOwns);

    // Detach A's children first so that only A's own payload decides.
    Node* a1 = a->child(0);
    Node* a2 = a->child(1);
    a1->detach();
    a2->detach();
    delete a1;
    delete a2;
    const int before = CountedObject::destroyed;
    delete a;
    QCOMPARE(CountedObject::destroyed - before, newParentOwns ? 1 : 0);
    if (!newParentOwns) {
        delete moved;
        delete existingPayload;
    }
}

void TestTTree::attachToOwnSubtreeIsRefused_data()
{
    QTest::addColumn<QString>("target");
    QTest::newRow("itself") << QStringLiteral("A");
    QTest::newRow("its child") << QStringLiteral("A1");
}

void TestTTree::attachToOwnSubtreeIsRefused()
{
    QFETCH(QString, target);

    SampleTree tree;
    Node* a = tree.find(QStringLiteral("A"));
    QTest::ignoreMessage(QtWarningMsg, QRegularExpression(QStringLiteral("ttree")));
    a->attachTo(tree.find(target));

    QCOMPARE(MessageLoggerInterface::returnMe()->entries().size(), 1);
    QCOMPARE(a->parent(), tree.root.get());
    QCOMPARE(walkConst(tree.root.get(), 1), (QStringList{"R", "A", "A1", "A2", "B", "B1"}));
}

void TestTTree::copyKeepsOrderFlagsAndPayloadsButNeverOwns()
{
    SampleTree tree;
    Node* a = tree.find(QStringLiteral("A"));
    a->setExpanded(true);
    tree.find(QStringLiteral("A2"))->setVisible(false);
    tree.find(QStringLiteral("A1"))->setEnabled(false);

    std::unique_ptr<Node> copy(a->copy());
    QCOMPARE(copy->parent(), nullptr);
    QCOMPARE(copy->nextSibling(), nullptr);
    QCOMPARE(copy->childCount(), 2);
    QCOMPARE(walkConst(copy.get(), 1), (QStringList{"A", "A1", "A2"}));

    QVector<const Node*> original;
    QVector<const Node*> copied;
    for (TTreeConstIterator<KAObject2*> it(a, 1); *it; ++it)
        original << *it;
    for (TTreeConstIterator<KAObject2*> it(copy.get(), 1); *it; ++it)
        copied << *it;
    QCOMPARE(copied.size(), original.size());
    for (int i = 0; i < copied.size(); ++i) {
        QVERIFY(copied[i] != original[i]);
        QCOMPARE(copied[i]->data(), original[i]->data());
        QCOMPARE(copied[i]->tag(), original[i]->tag());
        QCOMPARE(copied[i]->isEnabled(), original[i]->isEnabled());
        QCOMPARE(copied[i]->isExpanded(), original[i]->isExpanded());
        QCOMPARE(copied[i]->isVisible(), original[i]->isVisible());
        QCOMPARE(copied[i]->childCount(), original[i]->childCount());
        QVERIFY(original[i]->ownsData());
        QVERIFY(!copied[i]->ownsData());
    }

    // Freeing the copy leaves every payload alive; a child added to the copy
    // does not own either.
    auto* extra = new Node(copy.get(), -1);
    QVERIFY(!extra->ownsData());
    copy.reset();
    QCOMPARE(CountedObject::destroyed, 0);
    QCOMPARE(walkConst(a, 0), (QStringList{"A", "A1", "A2"}));
}

void TestTTree::otherPolymorphicPayload()
{
    {
        TTree<Shape*> root;
        root.setOwnsData(true);
        for (int r = 1; r <= 3; ++r) {
            auto* n = new TTree<Shape*>(&root, -1);
            n->setData(new Circle(r));
            (new TTree<Shape*>(n, -1))->setData(new Circle(r * 10));
        }
        QStringList labels;
        for (TTreeIterator<Shape*> it(&root, 1); *it; ++it)
            if (it.current()->data())
                labels << it.current()->data()->label();
        QCOMPARE(labels, (QStringList{"circle3", "circle30", "circle2", "circle20", "circle1", "circle10"}));
        delete root.child(1);
        QCOMPARE(Circle::destroyed, 2);
    }
    QCOMPARE(Circle::destroyed, 6);
}

QTEST_GUILESS_MAIN(TestTTree)
#include "tst_ttree.moc"
