// ctest-label: threads
#include "kaabstractbrowserctrl.h"
#include "kaabstractbrowserlistview.h"
#include "kabackgroundtaskthread.h"
#include "kafilesystembrowserfilterpackage.h"
#include "kamimedata.h"
#include "kaobject2.h"
#include "kaobject2decoder.h"
#include "kaprojectbrowserfilterpackage.h"
#include "katreewidgetitem.h"
#include "testfixture.h"
#include "projecttreehelpers.h"

#include <QHeaderView>
#include <QImage>
#include <QLayout>
#include <QMimeData>
#include <QPointer>
#include <QScrollBar>
#include <QTest>
#include <QToolButton>
#include <QTreeWidgetItemIterator>

#include <memory>

namespace {

using TreeTest::Node;

// The smallest controller a view can live with: it counts the expansions
// it is asked to fill and records the nodes it is asked to restore.
class ListCtrl : public KAAbstractBrowserCtrl
{
public:
    ListCtrl() : KAAbstractBrowserCtrl(QStringLiteral("list view test")) {}

    void init(KAProjectBrowserFilterPackage*, const KAObject2Project*, bool) override {}
    QWidget* getEditor() const override { return nullptr; }
    void clearMgrList() override {}
    void fillTree(Node*) override {}
    void refreshNode(Node*) override {}
    void deleteNode(Node*) override {}
    void fillNodeOnExpand(Node* node) override { expanded.append(node); }
    void clearEditor() override {}
    void restoreMainTree(Node* tree) override { restored.append(tree); }
    void refreshCurrentView(bool) override {}
    bool belongsToMe(Node*) override { return false; }
    Node* getTree() const override { return nullptr; }
    Node* search(const QString&) override { return nullptr; }
    KAProjectBrowserFilterPackage* getFilter() const override { return filter; }

    KAProjectBrowserFilterPackage* filter = nullptr; // not owned
    QList<Node*> expanded;
    QList<Node*> restored;
};

// Opens the protected parts of the view to the test.
class ProbeView : public KAAbstractBrowserListView
{
public:
    explicit ProbeView(KAAbstractBrowserCtrl* ctrl)
        : KAAbstractBrowserListView(ctrl, nullptr, QStringLiteral("probe"))
    {
    }
    using KAAbstractBrowserListView::getMLTree;
    using KAAbstractBrowserListView::mimeData;
};

// A node whose payload the tree frees (ownsData comes from the parent).
Node* addChild(Node* parent, const QString& name, KAObjectType type = KAObjectTypeAnalysis)
{
    Node* node = new Node(parent, -1);
    node->setData(new KAObject2(type, name));
    return node;
}

Node* makeRoot(const QString& name, KAObjectType type = KAObjectTypeProject)
{
    Node* root = new Node;
    root->setOwnsData(true);
    root->setData(new KAObject2(type, name));
    return root;
}

QList<QTreeWidgetItem*> allItems(QTreeWidget* view)
{
    QList<QTreeWidgetItem*> items;
    for (QTreeWidgetItemIterator it(view); *it; ++it)
        items.append(*it);
    return items;
}

bool isPlaceholder(QTreeWidgetItem* item)
{
    auto* tree = dynamic_cast<KATreeWidgetItem*>(item);
    return tree && !tree->object() && tree->getVar().toString() == QLatin1String("FAKE");
}

QStringList childTexts(QTreeWidgetItem* item)
{
    QStringList texts;
    for (int i = 0; i < item->childCount(); ++i)
        texts.append(isPlaceholder(item->child(i)) ? QStringLiteral("FAKE") : item->child(i)->text(0));
    return texts;
}

bool near(const QColor& actual, const QColor& expected, int tolerance)
{
    return qAbs(actual.red() - expected.red()) <= tolerance && qAbs(actual.green() - expected.green()) <= tolerance
        && qAbs(actual.blue() - expected.blue()) <= tolerance;
}

QByteArray describe(const QColor& c)
{
    return QStringLiteral("rgb(%1,%2,%3)").arg(c.red()).arg(c.green()).arg(c.blue()).toUtf8();
}

// The project of the model:
//   Root
//     A          A1 (A1a, A1b), A2
//     B
//     C
struct Model {
    Node *root = nullptr, *a = nullptr, *a1 = nullptr, *a1a = nullptr, *a2 = nullptr, *b = nullptr, *c = nullptr;
};

Model makeModel()
{
    Model m;
    m.root = makeRoot(QStringLiteral("Root"));
    m.c = addChild(m.root, QStringLiteral("C"));
    m.b = addChild(m.root, QStringLiteral("B"));
    m.a = addChild(m.root, QStringLiteral("A"));
    m.a2 = addChild(m.a, QStringLiteral("A2"));
    m.a1 = addChild(m.a, QStringLiteral("A1"));
    addChild(m.a1, QStringLiteral("A1b"));
    m.a1a = addChild(m.a1, QStringLiteral("A1a"));
    return m;
}

} // namespace

// The tree widget of every browser: lazy items, states, node operations,
// restore buttons, drag data and the intuitive highlight band.
class tst_KAAbstractBrowserListView : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void cleanup();

    void changeStateSetsColumnsOnce();

    void itemsOnlyForExpandedNodes();
    void refreshNodeKeepsExpandedSubtree();
    void childrenComeInSortOrder_data();
    void childrenComeInSortOrder();
    void refreshedItemMovesToItsPlace_data();
    void refreshedItemMovesToItsPlace();
    void findSelectAndDeleteItems();
    void fillAndFocusPerState_data();
    void fillAndFocusPerState();

    void restoreButtons_data();
    void restoreButtons();
    void restoreButtonAddedOnceAndRestoresItsNode();

    void mimeDataCarriesObjectsInOrder();

    void intuitiveModeNeedsEditableFilter_data();
    void intuitiveModeNeedsEditableFilter();
    void intuitiveBandPainted();
    void intuitiveSweepStopsByItself();
    void lowWidgetHasNoStep();
    void destroyingViewStopsIntuitiveThread();

private:
    void showView(int width, int height);
    // The model's root expanded, filled in and shown.
    void showModel(int width, int height);
    // Appends rows "Row 01".."Row nn" to the model's root.
    QList<Node*> addRows(int count);

    std::unique_ptr<KAProjectBrowserFilterPackage> m_filter;
    std::unique_ptr<ListCtrl> m_ctrl;
    std::unique_ptr<ProbeView> m_view;
    std::unique_ptr<Node> m_root;
    Model m_model;
};

void tst_KAAbstractBrowserListView::initTestCase()
{
    kaInitTestEnvironment();
}

void tst_KAAbstractBrowserListView::init()
{
    m_filter.reset(new KAProjectBrowserFilterPackage);
    m_ctrl.reset(new ListCtrl);
    m_ctrl->filter = m_filter.get();
    m_model = makeModel();
    m_root.reset(m_model.root);
    m_view.reset(new ProbeView(m_ctrl.get()));
}

void tst_KAAbstractBrowserListView::cleanup()
{
    m_view.reset();
    m_root.reset();
    m_ctrl.reset();
    m_filter.reset();
    m_model = Model();
}

void tst_KAAbstractBrowserListView::showView(int width, int height)
{
    m_view->resize(width, height);
    m_view->show();
    QVERIFY(QTest::qWaitForWindowExposed(m_view.get()));
}

void tst_KAAbstractBrowserListView::showModel(int width, int height)
{
    m_model.root->setExpanded(true);
    m_view->fillTree(m_model.root);
    showView(width, height);
}

QList<Node*> tst_KAAbstractBrowserListView::addRows(int count)
{
    QList<Node*> rows;
    for (int i = 1; i <= count; ++i)
        rows.append(addChild(m_model.root, QStringLiteral("Row %1").arg(i, 2, 10, QLatin1Char('0'))));
    return rows;
}

// Entering a state sets its columns: the sort column hidden, the search
// state's restore column 10 wide. Changing to the current state runs no
// set-up again: columns changed by hand stay as they are.
void tst_KAAbstractBrowserListView::changeStateSetsColumnsOnce()
{
    showView(300, 200);
    // The view starts in the normal state.
    const KAAbstractBrowserListView::stateEnum states[] = {
        KAAbstractBrowserListView::stateNormal, KAAbstractBrowserListView::stateSearch,
        KAAbstractBrowserListView::stateNormal};
    for (int i = 0; i < 3; ++i) {
        const bool search = states[i] == KAAbstractBrowserListView::stateSearch;
        if (i > 0)
            m_view->changeState(states[i]);
        QCOMPARE(int(m_view->currentStateId()), int(states[i]));
        QCOMPARE(m_view->columnCount(), search ? 3 : 2);
        QVERIFY(!m_view->isColumnHidden(0));
        QVERIFY(m_view->isColumnHidden(1));
        if (search) {
            QVERIFY(!m_view->isColumnHidden(2));
            QCOMPARE(m_view->columnWidth(2), 10);
        }
        m_view->setColumnHidden(1, false);
        m_view->setColumnCount(5);
        m_view->changeState(states[i]);
        QVERIFY(!m_view->isColumnHidden(1));
        QCOMPARE(m_view->columnCount(), 5);
    }
}

// Items exist for the top node and the children of expanded nodes only: a
// collapsed node with children shows one placeholder, which the first
// expansion replaces by the children; the node's flag follows the item. A
// hidden node gets a hidden item.
void tst_KAAbstractBrowserListView::itemsOnlyForExpandedNodes()
{
    m_model.a1->setVisible(false);
    m_view->fillTree(m_model.root);
    QCOMPARE(m_view->topLevelItemCount(), 1);
    QTreeWidgetItem* top = m_view->topLevelItem(0);
    QCOMPARE(top->text(0), QStringLiteral("Root"));
    QCOMPARE(static_cast<KATreeWidgetItem*>(top)->node(), m_model.root);
    QCOMPARE(childTexts(top), (QStringList{"A", "B", "C"}));
    // A has children: one placeholder; B and C have none: no expander.
    QCOMPARE(childTexts(top->child(0)), QStringList{"FAKE"});
    QCOMPARE(top->child(1)->childCount(), 0);
    QCOMPARE(top->child(2)->childCount(), 0);
    QCOMPARE(allItems(m_view.get()).size(), 5);
    QVERIFY(!m_view->getMLTree(m_model.a1));
    QVERIFY(m_ctrl->expanded.isEmpty());

    KATreeWidgetItem* a = m_view->getMLTree(m_model.a);
    QVERIFY(a);
    a->setExpanded(true);
    QCOMPARE(m_ctrl->expanded, (QList<Node*>{m_model.a}));
    QVERIFY(m_model.a->isExpanded());
    QCOMPARE(childTexts(a), (QStringList{"A1", "A2"}));
    QCOMPARE(childTexts(a->child(0)), QStringList{"FAKE"});
    QVERIFY(a->child(0)->isHidden());
    QVERIFY(!a->child(1)->isHidden());
    a->setExpanded(false);
    QVERIFY(!m_model.a->isExpanded());
    a->setExpanded(true);
    QCOMPARE(m_ctrl->expanded.size(), 1);
    QCOMPARE(childTexts(a), (QStringList{"A1", "A2"}));

    // Without a placeholder, an expansion only marks the node.
    KATreeWidgetItem* b = m_view->getMLTree(m_model.b);
    KAObject2 stranger(KAObjectTypeAnalysis, QStringLiteral("Stranger"));
    new KATreeWidgetItem(b, &stranger);
    b->setExpanded(true);
    QCOMPARE(m_ctrl->expanded.size(), 1);
    QCOMPARE(childTexts(b), QStringList{"Stranger"});
    QVERIFY(m_model.b->isExpanded());

    // The flag decides the next build: a collapsed node comes back behind
    // its placeholder.
    a->setExpanded(false);
    m_view->clear();
    m_view->fillTree(m_model.root);
    a = m_view->getMLTree(m_model.a);
    QVERIFY(a);
    QVERIFY(!a->isExpanded());
    QCOMPARE(childTexts(a), QStringList{"FAKE"});
}

void tst_KAAbstractBrowserListView::refreshNodeKeepsExpandedSubtree()
{
    m_model.a2->setVisible(false);
    m_view->fillTree(m_model.root);
    m_view->getMLTree(m_model.a)->setExpanded(true);
    m_view->getMLTree(m_model.a1)->setExpanded(true);
    QVERIFY(m_view->getMLTree(m_model.a1a));

    addChild(m_model.a, QStringLiteral("A3"));
    m_view->refreshNode(m_model.a);
    KATreeWidgetItem* a = m_view->getMLTree(m_model.a);
    QVERIFY(a);
    QCOMPARE(a->node(), m_model.a);
    QCOMPARE(a->parent(), m_view->topLevelItem(0));
    QVERIFY(a->isExpanded());
    QCOMPARE(childTexts(a), (QStringList{"A1", "A2", "A3"}));
    QVERIFY(a->child(1)->isHidden()); // A2, rebuilt hidden too
    QVERIFY(!a->child(2)->isHidden());
    KATreeWidgetItem* a1 = m_view->getMLTree(m_model.a1);
    QVERIFY(a1);
    QVERIFY(a1->isExpanded());
    QCOMPARE(childTexts(a1), (QStringList{"A1a", "A1b"}));
    QVERIFY(m_view->getMLTree(m_model.a1a));
    // The refresh is a rebuild from the model, not a new expansion.
    QCOMPARE(m_ctrl->expanded.size(), 2);

    // A change of enabling makes a new item: it comes hidden and disabled
    // as its node now is.
    m_model.a->setVisible(false);
    m_model.a->setEnabled(false);
    m_view->refreshNode(m_model.a);
    a = m_view->getMLTree(m_model.a);
    QVERIFY(a);
    QVERIFY(a->isHidden());
    QVERIFY(a->isDisabled());
}

void tst_KAAbstractBrowserListView::childrenComeInSortOrder_data()
{
    // Names are "|"-separated; "F:" marks a folder. The children at first,
    // as the expansion shows them, those added, as the refresh shows them
    // all, and one made alone with the place it takes.
    QTest::addColumn<QString>("names");
    QTest::addColumn<QString>("expanded");
    QTest::addColumn<QString>("added");
    QTest::addColumn<QString>("refreshed");
    QTest::addColumn<QString>("single");
    QTest::addColumn<int>("singleAt");
    QTest::newRow("folders first, numbers by value")
        << "Sample 10|F:zeta|sample 9|Blank" << "zeta|Blank|sample 9|Sample 10" << "F:alpha|Sample 2"
        << "alpha|zeta|Blank|Sample 2|sample 9|Sample 10" << "Sample 3" << 4;
    QTest::newRow("case and accents aside") << "Ete 2|été|ETE" << "ETE|été|Ete 2" << "ete 10"
                                            << "ETE|été|Ete 2|ete 10" << "F:Zoo" << 0;
    QTest::newRow("long numbers and leading zeros")
        << "Lot 123456789012|Lot 007|Lot 99" << "Lot 007|Lot 99|Lot 123456789012" << "Lot 1000"
        << "Lot 007|Lot 99|Lot 1000|Lot 123456789012" << "Lot 7" << 1;
}

// Children made by an expansion, by a refresh of the open node and one at a
// time, each in the view's order.
void tst_KAAbstractBrowserListView::childrenComeInSortOrder()
{
    QFETCH(QString, names);
    QFETCH(QString, expanded);
    QFETCH(QString, added);
    QFETCH(QString, refreshed);
    QFETCH(QString, single);
    QFETCH(int, singleAt);
    auto add = [](Node* parent, const QString& entry) {
        const bool folder = entry.startsWith(QLatin1String("F:"));
        return addChild(parent, folder ? entry.mid(2) : entry, folder ? KAObjectTypeFolder : KAObjectTypeAnalysis);
    };
    Node* box = addChild(m_model.root, QStringLiteral("Box"), KAObjectTypeFolder);
    for (const QString& name : names.split(QLatin1Char('|')))
        add(box, name);
    m_view->fillTree(m_model.root);
    KATreeWidgetItem* item = m_view->getMLTree(box);
    QVERIFY(item);
    QCOMPARE(childTexts(item), QStringList{"FAKE"});

    item->setExpanded(true);
    QCOMPARE(childTexts(item), expanded.split(QLatin1Char('|')));

    for (const QString& name : added.split(QLatin1Char('|')))
        add(box, name);
    m_view->refreshNode(box);
    item = m_view->getMLTree(box);
    QVERIFY(item);
    QVERIFY(item->isExpanded());
    QCOMPARE(childTexts(item), refreshed.split(QLatin1Char('|')));

    Node* one = add(box, single);
    KATreeWidgetItem* made = m_view->makeItem(one, item);
    QVERIFY(made);
    QCOMPARE(item->indexOfChild(made), singleAt);
}

void tst_KAAbstractBrowserListView::refreshedItemMovesToItsPlace_data()
{
    QTest::addColumn<QString>("newName");
    QTest::addColumn<QStringList>("order");
    QTest::newRow("to the end") << QStringLiteral("Zulu") << QStringList{"A", "C", "Zulu"};
    QTest::newRow("to the front") << QStringLiteral("0 first") << QStringList{"0 first", "A", "C"};
    QTest::newRow("among names that fold alike") << QStringLiteral("a") << QStringList{"A", "a", "C"};
    QTest::newRow("same place") << QStringLiteral("Bravo") << QStringList{"A", "Bravo", "C"};
}

// A node renamed in the model and refreshed: its item shows the new name at
// its sorted place.
void tst_KAAbstractBrowserListView::refreshedItemMovesToItsPlace()
{
    QFETCH(QString, newName);
    QFETCH(QStringList, order);
    m_view->fillTree(m_model.root);
    QCOMPARE(childTexts(m_view->topLevelItem(0)), (QStringList{"A", "B", "C"}));
    m_model.b->data()->setName(newName);
    m_view->refreshNode(m_model.b);
    QCOMPARE(childTexts(m_view->topLevelItem(0)), order);
    KATreeWidgetItem* b = m_view->getMLTree(m_model.b);
    QVERIFY(b);
    QCOMPARE(b->text(KATreeWidgetItem::SortKeyColumn), KATreeWidgetItem::naturalSortKey(newName, false));
    QCOMPARE(b->node(), m_model.b);
}

void tst_KAAbstractBrowserListView::findSelectAndDeleteItems()
{
    m_view->fillTree(m_model.root);
    Node other;
    other.setData(m_model.b->data());
    KATreeWidgetItem* item = m_view->getMLTree(&other);
    QVERIFY(item);
    QCOMPARE(item, m_view->getMLTree(m_model.b));
    QCOMPARE(item->node(), m_model.b);
    QVERIFY(!m_view->getMLTree(nullptr));

    m_view->selectNode(m_model.c);
    QCOMPARE(m_view->currentItem(), m_view->getMLTree(m_model.c));
    m_view->selectNode(nullptr);
    QCOMPARE(m_view->currentItem(), m_view->getMLTree(m_model.c));

    m_view->deleteNode(m_model.b);
    QVERIFY(!m_view->getMLTree(&other));
    QVERIFY(!m_view->getMLTree(m_model.b));
    QCOMPARE(childTexts(m_view->topLevelItem(0)), (QStringList{"A", "C"}));
    m_view->deleteNode(nullptr);
    m_view->deleteNode(m_model.a1); // no item: nothing happens
    QCOMPARE(allItems(m_view.get()).size(), 4);
}

void tst_KAAbstractBrowserListView::fillAndFocusPerState_data()
{
    QTest::addColumn<bool>("search");
    QTest::newRow("normal state: at once") << false;
    QTest::newRow("search state: when the timer ends") << true;
}

// A fill in the search state leaves sorting and updates off until its timer
// ends, and a focus asked for meanwhile waits for it, the last one asked for
// winning. The focused node and its open subtree are scrolled into view.
void tst_KAAbstractBrowserListView::fillAndFocusPerState()
{
    QFETCH(bool, search);
    m_model.root->setExpanded(true);
    const QList<Node*> rows = addRows(60);
    Node* open = rows.at(29);
    open->setExpanded(true);
    for (int i = 1; i <= 3; ++i)
        addChild(open, QStringLiteral("Sub %1").arg(i));
    showView(220, 200);
    m_view->changeState(search ? KAAbstractBrowserListView::stateSearch : KAAbstractBrowserListView::stateNormal);
    m_view->fillTree(m_model.root);
    QCOMPARE(m_view->updatesEnabled(), !search);
    QCOMPARE(m_view->isSortingEnabled(), !search);
    QCOMPARE(m_view->reactivateTimer()->isActive(), search);
    QTreeWidgetItem* item = m_view->getMLTree(open);
    QVERIFY(item && item->isExpanded());
    QCOMPARE(item->childCount(), 3);
    const QRect viewport = m_view->viewport()->rect();
    const int before = m_view->verticalScrollBar()->value();

    m_view->focusOnNode(rows.at(52));
    QCOMPARE(m_view->pendingFocusNode(), search ? rows.at(52) : nullptr);
    if (!search) {
        QVERIFY(!viewport.contains(m_view->visualItemRect(item)));
        QVERIFY(viewport.height() > 5 * m_view->visualItemRect(item).height());
    }
    m_view->focusOnNode(open);
    if (search) {
        QCOMPARE(m_view->pendingFocusNode(), open);
        QCOMPARE(m_view->verticalScrollBar()->value(), before);
        QTRY_VERIFY(!m_view->reactivateTimer()->isActive());
        QVERIFY(!m_view->pendingFocusNode());
    }
    QVERIFY(m_view->verticalScrollBar()->value() > before);
    QVERIFY(viewport.contains(m_view->visualItemRect(item)));
    QVERIFY2(viewport.contains(m_view->visualItemRect(item->child(2))), "the open subtree is brought into view");

    QVERIFY(m_view->updatesEnabled());
    QVERIFY(m_view->isSortingEnabled());
    QCOMPARE(m_view->sortColumn(), 1);
    QCOMPARE(m_view->header()->sortIndicatorOrder(), Qt::AscendingOrder);
    QStringList order{"A", "B", "C"};
    for (Node* row : rows)
        order.append(row->data()->name());
    QCOMPARE(childTexts(m_view->topLevelItem(0)), order);
}

void tst_KAAbstractBrowserListView::restoreButtons_data()
{
    QTest::addColumn<bool>("fileSystemFilter");
    QTest::addColumn<bool>("projectContent");
    QTest::addColumn<int>("topKind");
    QTest::addColumn<bool>("button");
    QTest::newRow("project result of a file-system search") << true << true << int(KAObjectTypeProject) << true;
    QTest::newRow("file-system filter without project content") << true << false << int(KAObjectTypeProject) << false;
    QTest::newRow("project explorer filter") << false << false << int(KAObjectTypeProject) << false;
    QTest::newRow("top item is no project") << true << true << int(KAObjectTypeFolder) << false;
}

void tst_KAAbstractBrowserListView::restoreButtons()
{
    QFETCH(bool, fileSystemFilter);
    QFETCH(bool, projectContent);
    QFETCH(int, topKind);
    QFETCH(bool, button);
    KAFileSystemBrowserFilterPackage fsFilter;
    if (!projectContent)
        fsFilter.remove(FsProjectContent);
    if (fileSystemFilter)
        m_ctrl->filter = &fsFilter;
    std::unique_ptr<Node> top(makeRoot(QStringLiteral("Top"), KAObjectType(topKind)));
    addChild(top.get(), QStringLiteral("Child"));
    m_view->changeState(KAAbstractBrowserListView::stateSearch);
    m_view->fillTree(top.get());
    QVERIFY(!m_view->itemWidget(m_view->topLevelItem(0), 2));
    QTRY_VERIFY(!m_view->reactivateTimer()->isActive());
    QWidget* cell = m_view->itemWidget(m_view->topLevelItem(0), 2);
    QCOMPARE(cell != nullptr, button);
    m_view.reset(); // before the filter goes
}

void tst_KAAbstractBrowserListView::restoreButtonAddedOnceAndRestoresItsNode()
{
    KAFileSystemBrowserFilterPackage fsFilter;
    m_ctrl->filter = &fsFilter;
    std::unique_ptr<Node> first(makeRoot(QStringLiteral("First project")));
    std::unique_ptr<Node> second(makeRoot(QStringLiteral("Second project")));
    addChild(first.get(), QStringLiteral("Analysis"));
    addChild(second.get(), QStringLiteral("Analysis"));
    showView(300, 200);
    m_view->changeState(KAAbstractBrowserListView::stateSearch);
    m_view->fillTree(first.get());
    m_view->fillTree(second.get());
    QTRY_VERIFY(!m_view->reactivateTimer()->isActive());
    QHash<Node*, QWidget*> cells;
    for (Node* node : {first.get(), second.get()})
        cells.insert(node, m_view->itemWidget(m_view->getMLTree(node), 2));

    // Another fill runs the finishing step again: the cells already made
    // stay as they were, one button each.
    std::unique_ptr<Node> third(makeRoot(QStringLiteral("Third project")));
    m_view->fillTree(third.get());
    QTRY_VERIFY(!m_view->reactivateTimer()->isActive());
    QCOMPARE(m_view->topLevelItemCount(), 3);
    for (Node* node : {first.get(), second.get(), third.get()}) {
        QWidget* cell = m_view->itemWidget(m_view->getMLTree(node), 2);
        QVERIFY(cell);
        if (cells.contains(node))
            QCOMPARE(cell, cells.value(node));
        // No margins: the button fits the narrow column.
        QVERIFY(cell->contentsMargins().isNull() && cell->layout() && cell->layout()->contentsMargins().isNull());
        const QList<QToolButton*> buttons = cell->findChildren<QToolButton*>();
        QCOMPARE(buttons.size(), 1);
        QCOMPARE(buttons.first()->text(), QStringLiteral("..."));
        QVERIFY(buttons.first()->autoRaise());
    }

    KATreeWidgetItem* secondItem = m_view->getMLTree(second.get());
    QToolButton* button = m_view->itemWidget(secondItem, 2)->findChild<QToolButton*>();
    QVERIFY(m_ctrl->restored.isEmpty());
    button->click();
    QCOMPARE(m_ctrl->restored, (QList<Node*>{second.get()}));
    m_view.reset(); // before the filter goes
}

void tst_KAAbstractBrowserListView::mimeDataCarriesObjectsInOrder()
{
    m_view->fillTree(m_model.root);
    QVERIFY(!m_view->mimeData({})); // nothing selected: no drag data
    KATreeWidgetItem* a = m_view->getMLTree(m_model.a);
    KATreeWidgetItem* c = m_view->getMLTree(m_model.c);
    QTreeWidgetItem* placeholder = a->child(0);
    QVERIFY(isPlaceholder(placeholder));
    auto* plain = new QTreeWidgetItem(m_view.get(), QStringList{QStringLiteral("plain")});

    std::unique_ptr<QMimeData> data(m_view->mimeData({c, placeholder, plain, a}));
    QVERIFY(data);
    QVERIFY(data->hasFormat(QStringLiteral("kavelo/data")));
    QVERIFY(dynamic_cast<KAMimeData<QList<const KAObject2*>>*>(data.get()));
    const QList<const KAObject2*> expected{m_model.c->data(), m_model.a->data()};
    QCOMPARE(KAObject2Decoder::decodeObject(data.get()), expected);

    // Only items without object: the drag data exists and carries nothing.
    std::unique_ptr<QMimeData> empty(m_view->mimeData({placeholder, plain}));
    QVERIFY(empty);
    QVERIFY(empty->hasFormat(QStringLiteral("kavelo/data")));
    QVERIFY(KAObject2Decoder::decodeObject(empty.get()).isEmpty());
}

void tst_KAAbstractBrowserListView::intuitiveModeNeedsEditableFilter_data()
{
    QTest::addColumn<int>("filter");
    QTest::addColumn<bool>("active");
    QTest::newRow("editable filter") << 0 << true;
    QTest::newRow("read-only filter") << 1 << false;
    QTest::newRow("no filter") << 2 << false;
}

void tst_KAAbstractBrowserListView::intuitiveModeNeedsEditableFilter()
{
    QFETCH(int, filter);
    QFETCH(bool, active);
    if (filter == 1)
        m_filter->setReadOnly();
    if (filter == 2)
        m_ctrl->filter = nullptr;
    QVERIFY(!m_view->isIntuitiveModeActive());
    m_view->startIntuitiveMode();
    QCOMPARE(m_view->isIntuitiveModeActive(), active);
    m_view->stopIntuitiveMode();
    QVERIFY(!m_view->isIntuitiveModeActive());
}

void tst_KAAbstractBrowserListView::intuitiveBandPainted()
{
    showModel(240, 330);
    const int height = m_view->viewport()->height();
    const int width = m_view->viewport()->width();
    QVERIFY(height >= 200);

    m_view->startIntuitiveMode();
    // A few ticks down, well clear of both ends of the sweep.
    QTRY_VERIFY(m_view->bandPosition() >= 40 && !m_view->bandMovingUp());
    QVERIFY(m_view->isIntuitiveModeActive());
    const int band = m_view->bandPosition();
    QVERIFY2(band + 40 < height - 20, "the band is still inside the viewport");
    const QImage image = m_view->viewport()->grab().toImage();
    QCOMPARE(image.height(), height);

    const int x = width - 12;
    const int backgroundRow = band > height / 2 ? 5 : height - 5;
    const QColor background = image.pixelColor(x, backgroundRow);
    const QColor middle = image.pixelColor(x, band + 20);
    const double alpha = 200.0 / 255.0;
    const QColor expected(qRound(164 * alpha + background.red() * (1 - alpha)),
                          qRound(175 * alpha + background.green() * (1 - alpha)),
                          qRound(188 * alpha + background.blue() * (1 - alpha)));
    QVERIFY2(near(middle, expected, 6), describe(middle) + " instead of " + describe(expected));
    // Below the band and right of its width: untouched.
    QVERIFY2(near(image.pixelColor(x, band + 45), background, 2), describe(image.pixelColor(x, band + 45)));
    QVERIFY2(near(image.pixelColor(width - 2, band + 20), background, 2),
             describe(image.pixelColor(width - 2, band + 20)));
    // The edges fade towards white: lighter than the middle.
    const QColor edge = image.pixelColor(x, band + 1);
    QVERIFY2(edge.red() > middle.red() + 20 && edge.blue() > middle.blue() + 10, describe(edge));
    m_view->stopIntuitiveMode();
}

void tst_KAAbstractBrowserListView::intuitiveSweepStopsByItself()
{
    showModel(200, 160);
    m_view->startIntuitiveMode();
    QVERIFY(m_view->isIntuitiveModeActive());
    auto* thread = m_view->findChild<KABackgroundTaskThread*>();
    QVERIFY(thread);
    QTRY_VERIFY_WITH_TIMEOUT(m_view->bandMovingUp(), 10000);
    QVERIFY(m_view->isIntuitiveModeActive());
    QTRY_VERIFY_WITH_TIMEOUT(!m_view->isIntuitiveModeActive(), 10000);
    QVERIFY(!m_view->bandMovingUp());
    QVERIFY(m_view->bandPosition() < 0);
    QTRY_VERIFY(thread->isFinished());
}

void tst_KAAbstractBrowserListView::lowWidgetHasNoStep()
{
    m_model.root->setExpanded(true);
    m_view->fillTree(m_model.root);
    // No header nor scroll bar may take the little height there is.
    m_view->setHeaderHidden(true);
    m_view->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    m_view->setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    showView(200, 14);
    QVERIFY(m_view->viewport()->height() > 0);
    QVERIFY(m_view->viewport()->height() < 15);
    m_view->startIntuitiveMode();
    auto* thread = m_view->findChild<KABackgroundTaskThread*>();
    QVERIFY(thread);
    // Counted on this thread: the ticks are emitted on the pacing thread.
    int ticks = 0;
    connect(thread, &KABackgroundTaskThread::updateWork, this, [&ticks] { ++ticks; }, Qt::QueuedConnection);
    QTRY_VERIFY(ticks >= 5);
    QCoreApplication::processEvents();
    QCOMPARE(m_view->bandPosition(), 0);
    QVERIFY(!m_view->bandMovingUp());
    m_view->stopIntuitiveMode();
}

void tst_KAAbstractBrowserListView::destroyingViewStopsIntuitiveThread()
{
    showModel(200, 300);
    m_view->startIntuitiveMode();
    QPointer<KABackgroundTaskThread> thread = m_view->findChild<KABackgroundTaskThread*>();
    QVERIFY(thread);
    int ticks = 0;
    connect(thread.data(), &KABackgroundTaskThread::updateWork, this, [&ticks] { ++ticks; }, Qt::QueuedConnection);
    QTRY_VERIFY(ticks >= 2);
    QVERIFY(thread->isRunning());
    m_view.reset();
    QVERIFY(thread.isNull());
    // Ticks still queued for the view are dropped with it.
    QCoreApplication::processEvents();
}

QTEST_MAIN(tst_KAAbstractBrowserListView)
#include "tst_kaabstractbrowserlistview.moc"
