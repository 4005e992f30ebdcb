// ctest-label: threads
#include "kaabstractbrowserctrl.h"
#include "kaabstractbrowserlistview.h"
#include "kabackgroundtaskthread.h"
#include "kafilesystembrowserfilterpackage.h"
#include "kaobject2decoder.h"
#include "kaprojectbrowserfilterpackage.h"
#include "katreewidgetitem.h"
#include "projecttreehelpers.h"
#include "testfixture.h"

#include <QMimeData>
#include <QPointer>
#include <QScrollBar>
#include <QTest>
#include <QToolButton>

#include <memory>

namespace {

using TreeTest::Node;
using View = KAAbstractBrowserListView;

// The smallest controller a view can live with: it records the nodes it is asked to expand and restore.
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
    QList<Node*> expanded, restored;
};

// Opens the protected parts of the view to the test.
class ProbeView : public View
{
public:
    explicit ProbeView(KAAbstractBrowserCtrl* ctrl) : View(ctrl, nullptr, QStringLiteral("probe")) {}
    using View::getMLTree;
    using View::mimeData;
};

// A new first child of parent, or a root; "F:" before the name makes a folder. The tree frees payloads.
Node* addChild(Node* parent, const QString& name, KAObjectType type = KAObjectTypeAnalysis)
{
    const bool folder = name.startsWith(QLatin1String("F:"));
    Node* node = parent ? new Node(parent, -1) : new Node;
    node->setOwnsData(true);
    node->setData(new KAObject2(folder ? KAObjectTypeFolder : type, name.mid(folder ? 2 : 0)));
    return node;
}

// The texts of an item's children; the placeholder, without object, shows its "FAKE" mark.
QStringList childTexts(QTreeWidgetItem* item)
{
    QStringList texts;
    for (int i = 0; i < item->childCount(); ++i) {
        auto* child = static_cast<KATreeWidgetItem*>(item->child(i));
        texts.append(child->object() ? child->text(0) : child->getVar().toString());
    }
    return texts;
}

} // namespace

// The tree widget of every browser: lazy items, states, node operations, restore buttons, drag data, the band.
class tst_KAAbstractBrowserListView : public QObject
{
    Q_OBJECT
private slots:
    void initTestCase() { kaInitTestEnvironment(); }
    // The model: Root, open, with A (A1 (A1a, A1b), A2), B and C, each made before its elder siblings.
    void init()
    {
        m_filter.reset(new KAProjectBrowserFilterPackage);
        m_ctrl.reset(new ListCtrl);
        m_ctrl->filter = m_filter.get();
        m_root.reset(addChild(nullptr, QStringLiteral("Root"), KAObjectTypeProject));
        m_root->setExpanded(true);
        m_c = addChild(m_root.get(), QStringLiteral("C"));
        m_b = addChild(m_root.get(), QStringLiteral("B"));
        m_a = addChild(m_root.get(), QStringLiteral("A"));
        m_a2 = addChild(m_a, QStringLiteral("A2"));
        m_a1 = addChild(m_a, QStringLiteral("A1"));
        addChild(m_a1, QStringLiteral("A1b"));
        addChild(m_a1, QStringLiteral("A1a"));
        m_view.reset(new ProbeView(m_ctrl.get()));
    }
    void cleanup() { m_view.reset(); m_root.reset(); m_ctrl.reset(); m_filter.reset(); } // the view first
    // Items for the top node and the children of expanded nodes only: a collapsed node with children shows
    // one placeholder, replaced once by the first expansion; the node's flag follows the item, hidden or not.
    void lazyItemsRefreshFindAndDrag()
    {
        m_a1->setVisible(false);
        m_view->fillTree(m_root.get());
        QCOMPARE(childTexts(m_view->topLevelItem(0)), (QStringList{"A", "B", "C"}));
        QCOMPARE(childTexts(m_view->topLevelItem(0)->child(0)), QStringList{"FAKE"});
        QVERIFY(!m_view->topLevelItem(0)->child(1)->childCount() && !m_view->topLevelItem(0)->child(2)->childCount());
        KATreeWidgetItem* a = m_view->getMLTree(m_a);
        a->setExpanded(true);
        QCOMPARE(m_ctrl->expanded, QList<Node*>{m_a});
        QCOMPARE(childTexts(a), (QStringList{"A1", "A2"}));
        QCOMPARE(childTexts(a->child(0)), QStringList{"FAKE"}); // A1's, made hidden
        QVERIFY(a->child(0)->isHidden() && !a->child(1)->isHidden());
        a->setExpanded(false);
        QVERIFY(!m_a->isExpanded());
        a->setExpanded(true);
        QVERIFY(m_a->isExpanded() && m_ctrl->expanded.size() == 1 && a->childCount() == 2);
        // A refresh rebuilds from the model what was open, without a new expansion; a node's new
        // visibility and enabling reach its new item.
        m_view->getMLTree(m_a1)->setExpanded(true);
        addChild(m_a, QStringLiteral("A3"));
        m_view->refreshNode(m_a);
        QCOMPARE(childTexts(m_view->getMLTree(m_a)), (QStringList{"A1", "A2", "A3"}));
        QVERIFY(m_view->getMLTree(m_a1)->isHidden() && !m_view->getMLTree(m_a2)->isHidden());
        QCOMPARE(childTexts(m_view->getMLTree(m_a1)), (QStringList{"A1a", "A1b"}));
        QCOMPARE(m_ctrl->expanded.size(), 2);
        m_a->setEnabled(false);
        m_view->refreshNode(m_a);
        QVERIFY(m_view->getMLTree(m_a)->isDisabled());
        // The flag decides the next build: a collapsed node comes back behind its placeholder.
        m_view->getMLTree(m_a)->setExpanded(false);
        m_view->clear();
        m_view->fillTree(m_root.get());
        QCOMPARE(childTexts(m_view->getMLTree(m_a)), QStringList{"FAKE"});
        // An item is found for any node of the same object, and no longer once deleted.
        Node other;
        other.setData(m_b->data());
        QVERIFY(m_view->getMLTree(m_b) && m_view->getMLTree(&other) == m_view->getMLTree(m_b));
        m_view->deleteNode(m_b);
        QVERIFY(!m_view->getMLTree(&other) && !m_view->getMLTree(m_b));
        m_view->deleteNode(m_a1); // no item: nothing happens
        QCOMPARE(childTexts(m_view->topLevelItem(0)), (QStringList{"A", "C"}));
        QCOMPARE(childTexts(m_view->getMLTree(m_a)), QStringList{"FAKE"});
        // Drag data carries the objects of the selected items, in order; items without one add nothing.
        QVERIFY(!m_view->mimeData({}));
        a = m_view->getMLTree(m_a);
        auto* plain = new QTreeWidgetItem(m_view.get(), QStringList{QStringLiteral("plain")});
        std::unique_ptr<QMimeData> data(m_view->mimeData({m_view->getMLTree(m_c), a->child(0), plain, a}));
        QVERIFY(data && data->hasFormat(QStringLiteral("kavelo/data")));
        QCOMPARE(KAObject2Decoder::decodeObject(data.get()), (QList<const KAObject2*>{m_c->data(), m_a->data()}));
        data.reset(m_view->mimeData({a->child(0), plain}));
        QVERIFY(data && data->hasFormat(QStringLiteral("kavelo/data")) && KAObject2Decoder::decodeObject(data.get()).isEmpty());
    }
    // Folders first, then names ignoring case and accents, numbers by value: as an expansion shows
    // children, as a refresh merges new ones, as one item is made alone, and as a renamed one moves.
    void childrenComeInSortOrder()
    {
        Node* box = addChild(m_root.get(), QStringLiteral("F:Box"));
        for (const QString& name : QStringLiteral("Sample 10|F:zeta|sample 9|Blank|Lot 123456789012|Lot 007|Lot 99|Ete 2|été|ETE").split('|'))
            addChild(box, name);
        m_view->fillTree(m_root.get());
        m_view->getMLTree(box)->setExpanded(true);
        QCOMPARE(childTexts(m_view->getMLTree(box)).join('|'),
                 QString::fromUtf8("zeta|Blank|ETE|été|Ete 2|Lot 007|Lot 99|Lot 123456789012|sample 9|Sample 10"));
        for (const QString& name : {"F:alpha", "Sample 2", "ete 10", "Lot 1000"})
            addChild(box, name);
        m_view->refreshNode(box);
        KATreeWidgetItem* item = m_view->getMLTree(box);
        QCOMPARE(childTexts(item).join('|'), QString::fromUtf8("alpha|zeta|Blank|ETE|été|Ete 2|ete 10|Lot 007|Lot 99|"
                                                               "Lot 1000|Lot 123456789012|Sample 2|sample 9|Sample 10"));
        QCOMPARE(item->indexOfChild(m_view->makeItem(addChild(box, QStringLiteral("Sample 3")), item)), 12);
        QCOMPARE(item->indexOfChild(m_view->makeItem(addChild(box, QStringLiteral("F:Zoo")), item)), 2);
        Node* blank = static_cast<KATreeWidgetItem*>(item->child(3))->node();
        blank->data()->setName(QStringLiteral("Zulu"));
        m_view->refreshNode(blank);
        QCOMPARE(item->indexOfChild(m_view->getMLTree(blank)), item->childCount() - 1);
    }
    void fillAndFocusPerState_data()
    {
        QTest::addColumn<bool>("search");
        QTest::newRow("normal state: at once") << false;
        QTest::newRow("search state: when the timer ends") << true;
    }
    // A fill in the search state leaves sorting and updates off until its timer ends; a focus asked for
    // meanwhile waits for it, the last one winning. The node and its open subtree are scrolled into view.
    void fillAndFocusPerState()
    {
        QFETCH(bool, search);
        QList<Node*> rows;
        QStringList order{"A", "B", "C"};
        for (int i = 1; i <= 60; ++i) {
            rows.append(addChild(m_root.get(), QStringLiteral("Row %1").arg(i, 2, 10, QLatin1Char('0'))));
            order.append(rows.last()->data()->name());
        }
        Node* open = rows.at(29);
        open->setExpanded(true);
        for (int i = 1; i <= 3; ++i)
            addChild(open, QStringLiteral("Sub %1").arg(i));
        showView(220, 200);
        m_view->changeState(search ? View::stateSearch : View::stateNormal);
        m_view->fillTree(m_root.get());
        QVERIFY(m_view->updatesEnabled() != search && m_view->isSortingEnabled() != search);
        QCOMPARE(m_view->reactivateTimer()->isActive(), search);
        QTreeWidgetItem* item = m_view->getMLTree(open);
        const QRect viewport = m_view->viewport()->rect();
        const int before = m_view->verticalScrollBar()->value();
        m_view->focusOnNode(rows.at(52));
        m_view->focusOnNode(open);
        QCOMPARE(m_view->pendingFocusNode(), search ? open : nullptr);
        if (search) {
            QCOMPARE(m_view->verticalScrollBar()->value(), before);
            QTRY_VERIFY(!m_view->reactivateTimer()->isActive() && !m_view->pendingFocusNode());
        }
        QVERIFY(m_view->verticalScrollBar()->value() > before && viewport.contains(m_view->visualItemRect(item)));
        QVERIFY2(viewport.contains(m_view->visualItemRect(item->child(2))), "the open subtree is brought into view");
        QVERIFY(m_view->updatesEnabled() && m_view->isSortingEnabled() && m_view->sortColumn() == 1);
        QCOMPARE(childTexts(m_view->topLevelItem(0)), order);
    }
    void searchStateAndRestoreButtons_data()
    {
        QTest::addColumn<int>("filter"); // 0: the project explorer's, 1: file system without project content, 2: file system
        QTest::addColumn<int>("topKind");
        QTest::addColumn<bool>("button");
        QTest::newRow("project result of a file-system search") << 2 << int(KAObjectTypeProject) << true;
        QTest::newRow("file-system filter without project content") << 1 << int(KAObjectTypeProject) << false;
        QTest::newRow("project explorer filter") << 0 << int(KAObjectTypeProject) << false;
        QTest::newRow("top item is no project") << 2 << int(KAObjectTypeFolder) << false;
    }
    // Entering the search state sets its columns: the sort column hidden, the restore column 10 wide;
    // changing to the current state sets nothing, columns changed by hand staying. When a fill of the
    // search state ends, each project item of a file-system search gets one "..." button that restores
    // it; a later fill keeps the buttons made.
    void searchStateAndRestoreButtons()
    {
        QFETCH(int, filter);
        QFETCH(int, topKind);
        QFETCH(bool, button);
        KAFileSystemBrowserFilterPackage fsFilter;
        if (filter == 1)
            fsFilter.remove(FsProjectContent);
        m_ctrl->filter = filter > 0 ? &fsFilter : m_filter.get();
        std::unique_ptr<Node> first(addChild(nullptr, QStringLiteral("First"), KAObjectType(topKind)));
        std::unique_ptr<Node> second(addChild(nullptr, QStringLiteral("Second"), KAObjectType(topKind)));
        QCOMPARE(m_view->columnCount(), 2);
        m_view->changeState(View::stateSearch);
        QVERIFY(m_view->columnCount() == 3 && m_view->isColumnHidden(1) && m_view->columnWidth(2) == 10);
        m_view->setColumnHidden(1, false);
        m_view->changeState(View::stateSearch);
        QVERIFY(!m_view->isColumnHidden(1));
        m_view->fillTree(first.get());
        QVERIFY(!m_view->itemWidget(m_view->getMLTree(first.get()), 2));
        QTRY_VERIFY(!m_view->reactivateTimer()->isActive());
        QWidget* cell = m_view->itemWidget(m_view->getMLTree(first.get()), 2);
        QCOMPARE(cell != nullptr, button);
        m_view->fillTree(second.get());
        QTRY_VERIFY(!m_view->reactivateTimer()->isActive());
        QCOMPARE(m_view->itemWidget(m_view->getMLTree(first.get()), 2), cell);
        if (button) {
            QVERIFY(m_view->itemWidget(m_view->getMLTree(second.get()), 2));
            QVERIFY(cell->findChildren<QToolButton*>().size() == 1 && cell->findChild<QToolButton*>()->text() == "...");
            cell->findChild<QToolButton*>()->click();
            QCOMPARE(m_ctrl->restored, QList<Node*>{first.get()});
        }
        m_view.reset(); // before the filter goes
    }
    // The band's middle blends (164, 175, 188) at alpha 200 over the background, its edges fade
    // towards white, and nothing else is painted.
    void intuitiveBandPaintedAndSweepStops()
    {
        m_view->fillTree(m_root.get());
        showView(240, 330);
        const int height = m_view->viewport()->height();
        const int x = m_view->viewport()->width() - 12;
        m_view->startIntuitiveMode();
        // A few ticks down, well clear of both ends of the sweep.
        QTRY_VERIFY(m_view->bandPosition() >= 40 && !m_view->bandMovingUp());
        const int band = m_view->bandPosition();
        QVERIFY2(height >= 200 && band + 40 < height - 20, "the band is still inside the viewport");
        const QImage image = m_view->viewport()->grab().toImage();
        auto near = [](QColor a, QColor b, int t) {
            return qAbs(a.red() - b.red()) <= t && qAbs(a.green() - b.green()) <= t && qAbs(a.blue() - b.blue()) <= t;
        };
        const QColor background = image.pixelColor(x, band > height / 2 ? 5 : height - 5);
        const QColor middle = image.pixelColor(x, band + 20);
        const double alpha = 200.0 / 255.0;
        const QColor expected(qRound(164 * alpha + background.red() * (1 - alpha)),
                              qRound(175 * alpha + background.green() * (1 - alpha)), qRound(188 * alpha + background.blue() * (1 - alpha)));
        QVERIFY2(near(middle, expected, 6), qPrintable(middle.name() + " instead of " + expected.name()));
        QVERIFY2(near(image.pixelColor(x, band + 45), background, 2), "below the band");
        QVERIFY2(near(image.pixelColor(x + 10, band + 20), background, 2), "right of the band");
        const QColor edge = image.pixelColor(x, band + 1);
        QVERIFY2(edge.red() > middle.red() + 20 && edge.blue() > middle.blue() + 10, qPrintable(edge.name()));
        // One sweep down and back up, then the mode ends and its thread with it.
        auto* thread = m_view->findChild<KABackgroundTaskThread*>();
        QVERIFY(thread);
        QTRY_VERIFY_WITH_TIMEOUT(m_view->bandMovingUp(), 10000);
        QVERIFY(m_view->isIntuitiveModeActive());
        QTRY_VERIFY_WITH_TIMEOUT(!m_view->isIntuitiveModeActive(), 10000);
        QVERIFY(!m_view->bandMovingUp() && m_view->bandPosition() < 0);
        QTRY_VERIFY(thread->isFinished());
    }
    void destroyingViewStopsIntuitiveThread()
    {
        m_view->fillTree(m_root.get());
        showView(200, 300);
        m_view->startIntuitiveMode();
        QPointer<KABackgroundTaskThread> thread = m_view->findChild<KABackgroundTaskThread*>();
        int ticks = 0; // counted on this thread: the pacing thread emits them
        connect(thread.data(), &KABackgroundTaskThread::updateWork, this, [&ticks] { ++ticks; }, Qt::QueuedConnection);
        QTRY_VERIFY(ticks >= 2 && thread->isRunning());
        m_view.reset();
        QVERIFY(thread.isNull());
        QCoreApplication::processEvents(); // ticks still queued for the view are dropped with it
    }
private:
    void showView(int width, int height)
    {
        m_view->resize(width, height);
        m_view->show();
        QVERIFY(QTest::qWaitForWindowExposed(m_view.get()));
    }
    std::unique_ptr<KAProjectBrowserFilterPackage> m_filter;
    std::unique_ptr<ListCtrl> m_ctrl;
    std::unique_ptr<ProbeView> m_view;
    std::unique_ptr<Node> m_root;
    Node *m_a = nullptr, *m_a1 = nullptr, *m_a2 = nullptr, *m_b = nullptr, *m_c = nullptr;
};

QTEST_MAIN(tst_KAAbstractBrowserListView)
#include "tst_kaabstractbrowserlistview.moc"
