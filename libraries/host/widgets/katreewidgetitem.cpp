#include "katreewidgetitem.h"

#include "kaobject2.h"
#include "kaobject2folder.h"
#include "katreewidget.h"
#include "tpixmapcache.h"

#include <QHash>
#include <QIcon>
#include <QTreeWidget>

#include <algorithm>
#include <typeinfo>

namespace {

// Folds case and drops accents of a name that is not plain ASCII.
QString foldForSort(const QString& name)
{
    const QString decomposed = name.normalized(QString::NormalizationForm_D);
    QString stripped;
    stripped.reserve(decomposed.size());
    for (const QChar c : decomposed) {
        if (c.category() != QChar::Mark_NonSpacing)
            stripped += c;
    }
    return stripped.toCaseFolded();
}

int digitOf(QChar c)
{
    const ushort u = c.unicode();
    return u >= '0' && u <= '9' ? u - '0' : c.digitValue();
}

bool isAscii(const QString& text)
{
    for (const QChar c : text) {
        if (c.unicode() >= 0x80)
            return false;
    }
    return true;
}

// Icons are shared by every item of a kind; items are made on the GUI
// thread only, so the cache needs no lock. The icons stay where they are
// for the life of the process; a kind without a picture gets null.
const QIcon* iconFor(const char* name)
{
    static QHash<const char*, QIcon> cache;
    auto it = cache.constFind(name);
    if (it == cache.constEnd())
        it = cache.insert(name, QIcon(TPixmapCache::find(name)));
    return it.value().isNull() ? nullptr : &it.value();
}

} // namespace

KATreeWidgetItem::KATreeWidgetItem(QTreeWidget* view, const KAObject2* object)
    : QTreeWidgetItem(ItemType)
    , m_object(object)
{
    initFromObject();
    // Inserted once filled, so the view is not told of each field.
    attach(view, nullptr);
}

KATreeWidgetItem::KATreeWidgetItem(QTreeWidgetItem* parentItem, const KAObject2* object)
    : QTreeWidgetItem(ItemType)
    , m_object(object)
{
    initFromObject();
    attach(nullptr, parentItem);
}

KATreeWidgetItem::KATreeWidgetItem(QTreeWidgetItem* parentItem, void* unused, const KAObject2* object)
    : QTreeWidgetItem(ItemType)
    , m_object(object)
{
    Q_UNUSED(unused);
    initFromObject();
    if (!object)
        m_var = placeholderVar();
    attach(nullptr, parentItem);
}

KATreeWidgetItem::~KATreeWidgetItem() = default;

void KATreeWidgetItem::attach(QTreeWidget* view, QTreeWidgetItem* parentItem)
{
    QTreeWidget* owner = parentItem ? parentItem->treeWidget() : view;
    if (auto* tree = qobject_cast<KATreeWidget*>(owner)) {
        tree->insertItem(parentItem, this);
        return;
    }
    if (parentItem)
        parentItem->addChild(this);
    else if (view)
        view->addTopLevelItem(this);
}

QString KATreeWidgetItem::placeholderVar()
{
    return QStringLiteral("FAKE");
}

bool KATreeWidgetItem::isPlaceholder() const
{
    return m_var.type() == QVariant::String && m_var.toString() == placeholderVar();
}

void KATreeWidgetItem::initFromObject()
{
    if (!m_object)
        return;
    // Only the name is stored in Qt's item: the key and the kind's icon are
    // read from the item (data()), which spares every item two stored
    // values. The key is the one sortKey() gives (an override is not
    // reachable from this constructor); the object keeps it for its next
    // items (a search shows the same objects again and again).
    const QString& name = m_object->name();
    m_sortKey = m_object->itemSortKey();
    if (m_sortKey.isNull()) {
        m_sortKey = naturalSortKey(name, static_cast<qint32>(m_object->type()) == 260);
        m_object->keepItemSortKey(m_sortKey);
    }
    QTreeWidgetItem::setData(NameColumn, Qt::DisplayRole, name);
    if (const char* icon = iconName(m_object))
        m_kindIcon = iconFor(icon);
}

QVariant KATreeWidgetItem::data(int column, int role) const
{
    if (column == SortKeyColumn && (role == Qt::DisplayRole || role == Qt::EditRole) && !m_sortKey.isNull())
        return m_sortKey;
    if (column == NameColumn && role == Qt::DecorationRole && m_kindIcon) {
        // An icon set on the item (even a null one) replaces the kind's.
        const QVariant own = QTreeWidgetItem::data(column, role);
        return own.isValid() ? own : QVariant(*m_kindIcon);
    }
    return QTreeWidgetItem::data(column, role);
}

QString KATreeWidgetItem::sortKey() const
{
    const bool folder = m_object && static_cast<qint32>(m_object->type()) == 260;
    return naturalSortKey(text(NameColumn), folder);
}

void KATreeWidgetItem::updateSortKey()
{
    setText(SortKeyColumn, sortKey());
}

QString KATreeWidgetItem::naturalSortKey(const QString& name, bool folder)
{
    const QString base = isAscii(name) ? name : foldForSort(name);
    const int size = base.size();
    const QChar* in = base.constData();
    // At most three characters for a character of base (a one-digit run),
    // then the separator and the name.
    QString key(1 + 3 * size + 1 + name.size(), Qt::Uninitialized);
    QChar* out = key.data();
    *out++ = QLatin1Char(folder ? '0' : '1');
    for (int i = 0; i < size;) {
        const QChar c = in[i];
        if (!c.isDigit()) {
            const ushort u = c.unicode();
            *out++ = (u >= 'A' && u <= 'Z') ? QChar(ushort(u + ('a' - 'A'))) : c;
            ++i;
            continue;
        }
        // A run of digits (any script), leading zeros stripped, becomes '0',
        // then its number of digits as one character, then its ASCII
        // digits: "10" sorts after "9" (more digits), numbers of as many
        // digits by their digits, and against a letter or a sign the run
        // sorts as its '0'. Short keys keep comparisons short.
        int end = i;
        while (end < size && in[end].isDigit())
            ++end;
        int first = i;
        while (first < end - 1 && digitOf(in[first]) == 0)
            ++first;
        *out++ = QLatin1Char('0');
        *out++ = QChar(ushort('0' + (end - first)));
        for (int k = first; k < end; ++k)
            *out++ = QLatin1Char(char('0' + digitOf(in[k])));
        i = end;
    }
    // The separator sorts before any character of a name, so "ab" comes
    // before "abc"; the name itself then orders names that fold alike.
    *out++ = QChar(0x0001);
    const int nameSize = name.size();
    std::copy(name.constData(), name.constData() + nameSize, out);
    out += nameSize;
    key.truncate(int(out - key.constData()));
    return key;
}

const char* KATreeWidgetItem::iconName(const KAObject2* object)
{
    if (!object)
        return nullptr;
    // Plain kind numbers: they are the contract, and some enumerators share
    // a value.
    switch (static_cast<qint32>(object->type())) {
    case 1: return "analysis";
    case 2: return "signal";
    case 3: return "well";
    case 4: return "dataset";
    case 5: return "variable";
    case 260: {
        const auto* folder = dynamic_cast<const KAObject2Folder*>(object);
        switch (folder ? static_cast<qint32>(folder->folderKind()) : 260) {
        case 519: return "user_folder";
        case 514: return "folder_analysis";
        case 516: return "datasetfolder";
        case 528: return "indexation";
        case 530: return "identification";
        default: return "folder";
        }
    }
    case 264: return "peakdetect";
    case 277: return "identification";
    case 281: return "identificationgroup";
    case 282: return "identification";
    case 293: return "deconvms";
    case 528: return "indexation";
    case 600: return "compound";
    case 601:
    case 602: return "compound_list";
    case 768: return "project";
    case 2554:
    case 2555: return "file";
    case 2556: return "folder";
    case 2557: return "computer";
    case 2558: return "alias_folder";
    case 2456: return "placeholder";
    default: return nullptr;
    }
}

bool KATreeWidgetItem::operator<(const QTreeWidgetItem& other) const
{
    const QTreeWidget* view = treeWidget();
    if (!view || view->sortColumn() != SortKeyColumn)
        return QTreeWidgetItem::operator<(other);
    if (other.type() == ItemType)
        return m_sortKey < static_cast<const KATreeWidgetItem&>(other).m_sortKey;
    return m_sortKey < other.text(SortKeyColumn);
}

void KATreeWidgetItem::setData(int column, int role, const QVariant& value)
{
    if (column != SortKeyColumn || (role != Qt::DisplayRole && role != Qt::EditRole)) {
        QTreeWidgetItem::setData(column, role, value);
        return;
    }
    const QString old = m_sortKey;
    m_sortKey = value.toString();
    QTreeWidgetItem::setData(column, role, value);
    if (m_sortKey != old) {
        if (auto* tree = qobject_cast<KATreeWidget*>(treeWidget()))
            tree->placeItem(this);
    }
}

bool KATreeWidgetItem::refreshFrom(const KATreeWidgetItem& fresh)
{
    if (typeid(*this) != typeid(KATreeWidgetItem) || typeid(fresh) != typeid(KATreeWidgetItem)
        || fresh.m_object != m_object)
        return false;
    // Cell by cell and only what differs: the view repaints a changed cell
    // if it is on screen, and nothing else. The key column goes through
    // setData() like any other, which moves the item if its key changed.
    // The key column is read from the item, whatever Qt's item holds.
    const int columns = qMax(qMax(columnCount(), fresh.columnCount()), int(SortKeyColumn) + 1);
    for (int column = 0; column < columns; ++column) {
        for (int role = Qt::DisplayRole; role <= Qt::InitialSortOrderRole; ++role) {
            if (role == Qt::EditRole)
                continue; // the same as the display role
            const QVariant value = fresh.data(column, role);
            if (data(column, role) != value)
                setData(column, role, value);
        }
    }
    if (flags() != fresh.flags())
        setFlags(fresh.flags());
    if (childIndicatorPolicy() != fresh.childIndicatorPolicy())
        setChildIndicatorPolicy(fresh.childIndicatorPolicy());
    m_var = fresh.m_var;
    if (m_kindIcon != fresh.m_kindIcon) {
        m_kindIcon = fresh.m_kindIcon;
        emitDataChanged();
    }
    return true;
}
