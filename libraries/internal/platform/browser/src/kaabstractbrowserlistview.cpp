#include "kaabstractbrowserlistview.h"

#include "kaabstractbrowserctrl.h"
#include "kaabstractbrowserlistviewstatenormal.h"
#include "kaabstractbrowserlistviewstatesearch.h"
#include "kabackgroundtaskthread.h"
#include "kamimedata.h"
#include "kaobject2.h"
#include "kaprojectbrowserfilterpackage.h"
#include "katreewidgetitem.h"
#include "katreewidgetitemcreator.h"
#include "mainwindowinterface.h"
#include "tassert.h"
#include "ttree.h"
#include "twaitmode.h"

#include <QLinearGradient>
#include <QPainter>
#include <QStatusBar>
#include <QTreeWidgetItemIterator>

namespace {
const char* const SourceName = "kaabstractbrowserlistview";
const int BandHeight = 40;
} // namespace

KAAbstractBrowserListView::KAAbstractBrowserListView(KAAbstractBrowserCtrl* ctrl, QWidget* parent,
                                                     const QString& name)
    : KAListView(parent, name)
    , m_controller(ctrl)
{
    setStyleSheet(QStringLiteral(
        "KAAbstractBrowserListView {background: rgb(250,250,250) ; font:  8pt \"Segoe UI\";}"));
    // Every row is one line of text: a uniform height spares the view from
    // measuring each of a large branch's rows.
    setUniformRowHeights(true);
    m_reactivateTimer.setInterval(100);
    m_reactivateTimer.setSingleShot(true);
    connect(&m_reactivateTimer, &QTimer::timeout, this, &KAAbstractBrowserListView::reactivateView);
    initStates();
    changeState(stateNormal);
    connect(this, &QTreeWidget::itemExpanded, this, &KAAbstractBrowserListView::slotExpand);
    connect(this, &QTreeWidget::itemCollapsed, this, &KAAbstractBrowserListView::slotCollapse);
}

KAAbstractBrowserListView::~KAAbstractBrowserListView()
{
    if (m_intuitiveThread) {
        m_intuitiveThread->setRunFlag(false);
        m_intuitiveThread->wait();
        delete m_intuitiveThread;
        m_intuitiveThread = nullptr;
    }
    clearStates();
    m_itemIndex.clear();
}

void KAAbstractBrowserListView::initStates()
{
    m_stateList[stateNormal] = new KAAbstractBrowserListViewStateNormal;
    m_stateList[stateSearch] = new KAAbstractBrowserListViewStateSearch;
}

void KAAbstractBrowserListView::clearStates()
{
    m_state = nullptr;
    delete m_stateList[stateNormal];
    delete m_stateList[stateSearch];
    m_stateList[stateNormal] = m_stateList[stateSearch] = nullptr;
}

void KAAbstractBrowserListView::changeState(stateEnum state)
{
    if (state < stateNormal || state > stateSearch || !m_stateList[state]) {
        t_assert("m_stateList[state]", SourceName, __LINE__, false);
        return;
    }
    if (m_state == m_stateList[state])
        return;
    m_state = m_stateList[state];
    m_stateId = state;
    m_state->init(this);
}

void KAAbstractBrowserListView::fillTree(Node* root)
{
    if (!m_state) {
        t_assert("m_state", SourceName, __LINE__, false);
        return;
    }
    m_state->fillTree(this, root);
}

void KAAbstractBrowserListView::createSon(Node* node, KATreeWidgetItem* item)
{
    if (!m_state) {
        t_assert("m_state", SourceName, __LINE__, false);
        return;
    }
    m_state->createSon(this, node, item);
}

// ---- items --------------------------------------------------------------------

void KAAbstractBrowserListView::indexItem(KATreeWidgetItem* item)
{
    if (item->object())
        m_itemIndex.insert(item->object(), item);
}

void KAAbstractBrowserListView::unindexSubtree(QTreeWidgetItem* item)
{
    if (auto* tree = dynamic_cast<KATreeWidgetItem*>(item)) {
        if (tree->object())
            m_itemIndex.remove(tree->object(), tree);
    }
    for (int i = 0; i < item->childCount(); ++i)
        unindexSubtree(item->child(i));
}

void KAAbstractBrowserListView::deleteItem(QTreeWidgetItem* item)
{
    unindexSubtree(item);
    delete item;
}

void KAAbstractBrowserListView::clear()
{
    m_itemIndex.clear();
    QTreeWidget::clear();
}

bool KAAbstractBrowserListView::showsObject(const KAObject2* object) const
{
    return object && m_itemIndex.contains(object);
}

KATreeWidgetItem* KAAbstractBrowserListView::makeItem(Node* node, KATreeWidgetItem* parentItem)
{
    KATreeWidgetItem* item = parentItem
        ? KATreeWidgetItemCreator::instance()->createItemTree(node->data(), parentItem, nullptr)
        : KATreeWidgetItemCreator::instance()->createItemTree(node->data(), nullptr, this);
    if (!item)
        return nullptr;
    item->setNode(node);
    indexItem(item);
    if (node->isExpanded())
        item->setExpanded(true);
    item->setDisabled(!node->isEnabled());
    item->setHidden(!node->isVisible());
    return item;
}

// Children are made as free items and handed to their parent in one batch:
// sorted once among themselves and inserted in order, so the view never
// re-sorts what it already shows.
void KAAbstractBrowserListView::buildChildren(Node* node, KATreeWidgetItem* parentItem)
{
    if (!node || !parentItem)
        return;
    QList<QTreeWidgetItem*> batch;
    batch.reserve(node->childCount());
    m_itemIndex.reserve(m_itemIndex.size() + node->childCount());
    QList<QPair<KATreeWidgetItem*, Node*>> expanded;
    QList<QTreeWidgetItem*> hidden;
    bool unfilled = false;
    for (Node* child = node->firstChild(); child; child = child->nextSibling()) {
        // A placeholder of the model stands for children not built: no item
        // of its own (see below).
        if (child->data() && child->data()->type() == KAObjectTypeFake) {
            unfilled = true;
            continue;
        }
        KATreeWidgetItem* item = KATreeWidgetItemCreator::instance()->createItemTree(child->data(), nullptr, nullptr);
        if (!item)
            continue;
        item->setNode(child);
        indexItem(item);
        item->setDisabled(!child->isEnabled());
        // Hiding is a state of the view: it takes once the item is in it.
        if (!child->isVisible())
            hidden.append(item);
        if (child->isExpanded())
            expanded.append({item, child});
        else if (child->childCount() > 0)
            new KATreeWidgetItem(item, nullptr, nullptr); // "FAKE": an expander without its subtree
        batch.append(item);
    }
    // A collapsed item whose node is still to be filled (a top-level folder
    // not listed yet, a project not read, a fill that failed) gets the view's
    // placeholder: it shows an expander, and expanding it fills the node.
    if (unfilled && batch.isEmpty() && !parentItem->isExpanded() && parentItem->childCount() == 0)
        new KATreeWidgetItem(parentItem, nullptr, nullptr);
    insertItems(parentItem, batch);
    for (QTreeWidgetItem* item : qAsConst(hidden))
        item->setHidden(true);
    // Expanded only once in the view: expanding a free item has no effect.
    for (const auto& pair : qAsConst(expanded)) {
        pair.first->setExpanded(true);
        createSon(pair.second, pair.first);
    }
}

KATreeWidgetItem* KAAbstractBrowserListView::getMLTree(Node* node) const
{
    if (!node || !node->data())
        return nullptr;
    const QList<KATreeWidgetItem*> items = m_itemIndex.values(node->data());
    if (items.isEmpty())
        return nullptr;
    if (items.size() == 1)
        return items.first();
    // Several items show the object: the first in pre-order wins.
    for (QTreeWidgetItemIterator it(const_cast<KAAbstractBrowserListView*>(this)); *it; ++it) {
        auto* item = dynamic_cast<KATreeWidgetItem*>(*it);
        if (item && items.contains(item))
            return item;
    }
    return nullptr;
}

void KAAbstractBrowserListView::slotExpand(QTreeWidgetItem* qitem)
{
    auto* item = dynamic_cast<KATreeWidgetItem*>(qitem);
    if (!item)
        return;
    auto* first = dynamic_cast<KATreeWidgetItem*>(item->child(0));
    if (first && first->isPlaceholder()) {
        TWaitMode wait;
        delete first;
        if (m_controller && item->node())
            m_controller->fillNodeOnExpand(item->node());
        createSon(item->node(), item);
    }
    if (item->node())
        item->node()->setExpanded(true);
}

void KAAbstractBrowserListView::slotCollapse(QTreeWidgetItem* qitem)
{
    auto* item = dynamic_cast<KATreeWidgetItem*>(qitem);
    if (item && item->node())
        item->node()->setExpanded(false);
}

void KAAbstractBrowserListView::refreshNode(Node* node)
{
    KATreeWidgetItem* item = getMLTree(node);
    if (!node || !item)
        return;
    if (MainWindowInterface* window = MainWindowInterface::returnMe()) {
        if (QStatusBar* bar = window->statusBar())
            bar->clearMessage();
    }
    auto* parent = dynamic_cast<KATreeWidgetItem*>(item->parent());
    const bool wasExpanded = node->isExpanded();
    KATreeWidgetItem* fresh = KATreeWidgetItemCreator::instance()->createItemTree(node->data(), nullptr, nullptr);
    if (fresh)
        fresh->setDisabled(!node->isEnabled());
    // The item takes over what the fresh one shows where it can: a row taken
    // out of the view or put into it makes the view lay out every item it
    // shows again, which in a large branch costs far more than the refresh.
    // Enabling is handed down to children by the view: a change of it, or a
    // disabled parent, goes the long way.
    const bool parentEnabled = !item->parent() || (item->parent()->flags() & Qt::ItemIsEnabled);
    const bool sameEnabling = item->isDisabled() == !node->isEnabled();
    if (fresh && parentEnabled && sameEnabling && item->refreshFrom(*fresh)) {
        delete fresh;
        item->setNode(node);
        if (item->isHidden() != !node->isVisible())
            item->setHidden(!node->isVisible());
        refreshChildren(node, item, wasExpanded);
        return;
    }
    const int index = parent ? parent->indexOfChild(item) : indexOfTopLevelItem(item);
    deleteItem(item);
    if (!fresh)
        return;
    fresh->setNode(node);
    indexItem(fresh);
    // Where the old item was, unless the sort puts it elsewhere.
    const int at = isSortingEnabled() ? sortedIndex(parent, fresh, index) : qMax(0, index);
    if (parent)
        parent->insertChild(at, fresh);
    else
        insertTopLevelItem(at, fresh);
    fresh->setHidden(!node->isVisible());
    if (wasExpanded) {
        fresh->setExpanded(true);
        createSon(node, fresh);
    } else if (node->childCount() > 0) {
        new KATreeWidgetItem(fresh, nullptr, nullptr);
    }
}

// The children of a refreshed item, rebuilt as a new item would have them:
// the whole open subtree when the node is expanded, else the placeholder
// alone when the node has children. A collapsed item that keeps its
// placeholder keeps it, so that nothing moves in the view.
void KAAbstractBrowserListView::refreshChildren(Node* node, KATreeWidgetItem* item, bool expanded)
{
    const auto* first = dynamic_cast<const KATreeWidgetItem*>(item->child(0));
    const bool keepPlaceholder = !expanded && node->childCount() > 0 && item->childCount() == 1 && first
        && first->isPlaceholder();
    if (!keepPlaceholder) {
        const QList<QTreeWidgetItem*> children = item->takeChildren();
        for (QTreeWidgetItem* child : children)
            deleteItem(child);
        if (expanded)
            createSon(node, item);
        else if (node->childCount() > 0)
            new KATreeWidgetItem(item, nullptr, nullptr);
    }
    // Children first: expanding over a placeholder would fill the node anew.
    if (item->isExpanded() != expanded)
        item->setExpanded(expanded);
}

void KAAbstractBrowserListView::deleteNode(Node* node)
{
    if (!node)
        return;
    if (KATreeWidgetItem* item = getMLTree(node))
        deleteItem(item);
}

void KAAbstractBrowserListView::selectNode(Node* node)
{
    if (node)
        setCurrentItem(getMLTree(node));
}

void KAAbstractBrowserListView::focusOnNode(Node* node)
{
    if (m_reactivateTimer.isActive()) {
        m_pendingFocus = node;
        return;
    }
    KATreeWidgetItem* item = getMLTree(node);
    if (!item)
        return;
    QTreeWidgetItem* deepest = item;
    while (deepest->isExpanded() && deepest->childCount() > 0)
        deepest = deepest->child(deepest->childCount() - 1);
    scrollToItem(deepest);
    scrollToItem(item);
}

void KAAbstractBrowserListView::reactivateView()
{
    sortItems(1, Qt::AscendingOrder);
    setSortingEnabled(true);
    setUpdatesEnabled(true);
    if (!m_state) {
        t_assert("m_state", SourceName, __LINE__, false);
        return;
    }
    m_state->finishFill(this);
    if (m_pendingFocus) {
        Node* node = m_pendingFocus;
        m_pendingFocus = nullptr;
        focusOnNode(node);
    }
}

void KAAbstractBrowserListView::slotRestoreProjectNode()
{
    TWaitMode wait;
    auto* button = qobject_cast<QWidget*>(sender());
    QWidget* cell = button ? button->parentWidget() : nullptr;
    if (!cell)
        return;
    for (int i = 0; i < topLevelItemCount(); ++i) {
        QTreeWidgetItem* top = topLevelItem(i);
        if (itemWidget(top, 2) != cell)
            continue;
        if (auto* item = dynamic_cast<KATreeWidgetItem*>(top)) {
            if (m_controller)
                m_controller->restoreMainTree(item->node());
        }
        return;
    }
}

QMimeData* KAAbstractBrowserListView::mimeData(const QList<QTreeWidgetItem*> items) const
{
    if (items.isEmpty())
        return nullptr;
    QList<const KAObject2*> objects;
    for (QTreeWidgetItem* qitem : items) {
        auto* item = dynamic_cast<KATreeWidgetItem*>(qitem);
        if (item && item->object())
            objects.append(item->object());
    }
    return KAMimeData<QList<const KAObject2*>>::create(nullptr, objects, QStringLiteral("kavelo/data"));
}

bool KAAbstractBrowserListView::readOnly() const
{
    const KAProjectBrowserFilterPackage* filter = m_controller ? m_controller->getFilter() : nullptr;
    return !filter || filter->readOnly();
}

bool KAAbstractBrowserListView::renameItem(QTreeWidgetItem* qitem, QString& name)
{
    auto* item = dynamic_cast<KATreeWidgetItem*>(qitem);
    if (!item || !item->node() || !m_controller)
        return false;
    return m_controller->renameObject(item->node(), name);
}

// ---- intuitive mode -----------------------------------------------------------------

void KAAbstractBrowserListView::startIntuitiveMode()
{
    if (!m_intuitiveThread) {
        m_intuitiveThread = new KABackgroundTaskThread(this);
        connect(m_intuitiveThread, &KABackgroundTaskThread::updateWork, this, &KAAbstractBrowserListView::slotUpdate,
                Qt::QueuedConnection);
    }
    m_intuitiveThread->setRunFlag(true);
    if (!m_intuitiveThread->isRunning())
        m_intuitiveThread->start(QThread::LowPriority);
}

void KAAbstractBrowserListView::stopIntuitiveMode()
{
    if (m_intuitiveThread)
        m_intuitiveThread->setRunFlag(false);
    viewport()->update();
}

bool KAAbstractBrowserListView::isIntuitiveModeActive()
{
    const KAProjectBrowserFilterPackage* filter = m_controller ? m_controller->getFilter() : nullptr;
    if (!filter || filter->readOnly() || !m_intuitiveThread)
        return false;
    return m_intuitiveThread->runFlag();
}

// One run is one sweep down and back up.
void KAAbstractBrowserListView::slotUpdate()
{
    viewport()->update();
    const int height = viewport()->height();
    const int step = height / 15;
    m_bandPosition += m_bandMovingUp ? -step : step;
    if (m_bandPosition >= height) {
        m_bandPosition -= step;
        m_bandMovingUp = true;
    }
    if (m_bandPosition >= -step)
        return;
    m_bandMovingUp = false;
    stopIntuitiveMode();
}

void KAAbstractBrowserListView::paintEvent(QPaintEvent* event)
{
    KAListView::paintEvent(event);
    if (!m_intuitiveThread || !m_intuitiveThread->runFlag())
        return;
    QTreeWidgetItem* first = topLevelItem(0);
    if (!first || first->childCount() == 0) {
        stopIntuitiveMode();
        return;
    }
    QPainter painter(viewport());
    QLinearGradient gradient(0, 0, 0, 1);
    gradient.setCoordinateMode(QGradient::ObjectBoundingMode);
    gradient.setColorAt(0.0, QColor(255, 255, 255, 100));
    gradient.setColorAt(0.5, QColor(164, 175, 188, 200));
    gradient.setColorAt(1.0, QColor(255, 255, 255, 100));
    painter.setPen(Qt::NoPen);
    painter.setBrush(gradient);
    painter.drawRect(QRect(0, m_bandPosition, viewport()->width() - 5, BandHeight));
}
