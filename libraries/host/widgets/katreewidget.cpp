#include "katreewidget.h"

#include "katreewidgetitem.h"

#include <QEvent>
#include <QHeaderView>
#include <QVector>

#include <algorithm>

namespace {

// The text an item is ordered by: the kept key of a KATreeWidgetItem in its
// key column (no copy), else the column's text, stored in `spare`.
const QString& orderText(const QTreeWidgetItem* item, int column, QString& spare)
{
    if (column == KATreeWidgetItem::SortKeyColumn && item->type() == KATreeWidgetItem::ItemType)
        return static_cast<const KATreeWidgetItem*>(item)->sortText();
    spare = item->text(column);
    return spare;
}

// A batch item with the first characters of its text packed in order, four
// UTF-16 units to a word, zeros after the end: comparing the words compares
// those characters as QString does; equal heads fall back to the texts.
struct Entry {
    static const int Words = 4;
    Entry(const QString* t, QTreeWidgetItem* i)
        : text(t)
        , item(i)
    {
        const int size = qMin(t->size(), Words * 4);
        const ushort* units = reinterpret_cast<const ushort*>(t->constData());
        for (int w = 0; w < Words; ++w) {
            quint64 word = 0;
            for (int k = 0; k < 4; ++k) {
                const int at = w * 4 + k;
                word = (word << 16) | (at < size ? units[at] : 0);
            }
            head[w] = word;
        }
    }
    bool operator<(const Entry& other) const
    {
        for (int w = 0; w < Words; ++w) {
            if (head[w] != other.head[w])
                return head[w] < other.head[w];
        }
        return *text < *other.text;
    }
    quint64 head[Words];
    const QString* text;
    QTreeWidgetItem* item;
};

bool textBefore(const QString& a, const QString& b, Qt::SortOrder order)
{
    return order == Qt::AscendingOrder ? a < b : b < a;
}

} // namespace

KATreeWidget::KATreeWidget(QWidget* parent, const QString& name)
    : QTreeWidget(parent)
{
    setObjectName(name);
    // A click on a section turns the indicator; the widget then sorts by it,
    // as Qt's sorting would.
    connect(header(), &QHeaderView::sectionClicked, this, [this] {
        if (m_sorting)
            sortItems(header()->sortIndicatorSection(), header()->sortIndicatorOrder());
    });
}

KATreeWidget::~KATreeWidget() = default;

void KATreeWidget::setSortingEnabled(bool enable)
{
    header()->setSortIndicatorShown(enable);
    header()->setSectionsClickable(enable);
    const bool wasOn = m_sorting;
    m_sorting = enable;
    if (enable && !wasOn)
        sortItems(header()->sortIndicatorSection(), header()->sortIndicatorOrder());
}

QTreeWidgetItem* KATreeWidget::container(QTreeWidgetItem* parent) const
{
    return parent ? parent : invisibleRootItem();
}

const QTreeWidgetItem* KATreeWidget::container(const QTreeWidgetItem* parent) const
{
    return parent ? parent : invisibleRootItem();
}

bool KATreeWidget::goesBefore(const QTreeWidgetItem* a, const QTreeWidgetItem* b) const
{
    const int column = header()->sortIndicatorSection();
    QString spareA, spareB;
    return textBefore(orderText(a, column, spareA), orderText(b, column, spareB), header()->sortIndicatorOrder());
}

int KATreeWidget::sortedIndex(QTreeWidgetItem* parent, const QTreeWidgetItem* item, int hint) const
{
    const QTreeWidgetItem* target = container(static_cast<const QTreeWidgetItem*>(parent));
    // The children without item itself, by index.
    const bool child = item->parent() == parent && (parent || item->treeWidget() == this);
    const int own = child ? target->indexOfChild(const_cast<QTreeWidgetItem*>(item)) : -1;
    const int count = target->childCount() - (own >= 0 ? 1 : 0);
    auto at = [&](int i) { return target->child(own >= 0 && i >= own ? i + 1 : i); };
    if (hint >= 0 && hint <= count && (hint == 0 || !goesBefore(item, at(hint - 1)))
        && (hint == count || !goesBefore(at(hint), item)))
        return hint;
    // The first child that goes after item: equals stay before it.
    int low = 0;
    int high = count;
    while (low < high) {
        const int mid = (low + high) / 2;
        if (goesBefore(item, at(mid)))
            high = mid;
        else
            low = mid + 1;
    }
    return low;
}

void KATreeWidget::insertItem(QTreeWidgetItem* parent, QTreeWidgetItem* item)
{
    if (!item)
        return;
    QTreeWidgetItem* target = container(parent);
    if (m_sorting)
        target->insertChild(sortedIndex(parent, item), item);
    else
        target->addChild(item);
}

void KATreeWidget::insertItems(QTreeWidgetItem* parent, QList<QTreeWidgetItem*> items)
{
    QTreeWidgetItem* target = container(parent);
    if (!m_sorting || items.isEmpty()) {
        target->addChildren(items);
        return;
    }

    // One sort of the batch on its texts, read once. The first characters
    // of each text are packed into the entry, so that most comparisons are
    // decided without reaching the strings scattered over the heap.
    const int column = header()->sortIndicatorSection();
    const Qt::SortOrder order = header()->sortIndicatorOrder();
    QVector<QString> spares(items.size());
    QVector<Entry> entries;
    entries.reserve(items.size());
    for (int i = 0; i < items.size(); ++i)
        entries.append(Entry(&orderText(items.at(i), column, spares[i]), items.at(i)));
    if (order == Qt::AscendingOrder)
        std::stable_sort(entries.begin(), entries.end());
    else
        std::stable_sort(entries.begin(), entries.end(), [](const Entry& a, const Entry& b) { return b < a; });
    for (int i = 0; i < entries.size(); ++i)
        items[i] = entries.at(i).item;

    // Merged with the children already there: each run of the batch that
    // goes before the same child is one insertion.
    int first = 0;
    while (first < items.size()) {
        const int at = target->childCount() == 0 ? 0 : sortedIndex(parent, items.at(first));
        int end = items.size();
        if (at < target->childCount()) {
            QString spare;
            const QString& next = orderText(target->child(at), column, spare);
            end = first + 1;
            while (end < items.size() && textBefore(*entries.at(end).text, next, order))
                ++end;
        }
        target->insertChildren(at, items.mid(first, end - first));
        first = end;
    }
}

void KATreeWidget::setUpdatesEnabled(bool enable)
{
    QTreeWidget::setUpdatesEnabled(enable);
    if (enable && m_layoutDeferred)
        doItemsLayout();
}

void KATreeWidget::doItemsLayout()
{
    // Rows taken out clear the view's row list at once, so a layout put off
    // never leaves it pointing at removed items: it only misses new ones,
    // which nobody sees while updates are off.
    if (!updatesEnabled()) {
        m_layoutDeferred = true;
        return;
    }
    m_layoutDeferred = false;
    QTreeWidget::doItemsLayout();
}

bool KATreeWidget::viewportEvent(QEvent* event)
{
    if (event->type() == QEvent::Paint && m_layoutDeferred)
        doItemsLayout();
    return QTreeWidget::viewportEvent(event);
}

void KATreeWidget::placeItem(QTreeWidgetItem* item)
{
    if (!m_sorting || !item || item->treeWidget() != this)
        return;
    QTreeWidgetItem* parent = item->parent();
    QTreeWidgetItem* target = container(parent);
    const int index = target->indexOfChild(item);
    if (index < 0 || sortedIndex(parent, item, index) == index)
        return;
    // Sorting the siblings moves the item through the model's layout change,
    // which keeps its selection, expansion and current state.
    target->sortChildren(header()->sortIndicatorSection(), header()->sortIndicatorOrder());
}
