#include "katreewidgetitem.h"

#include "kaobject2.h"
#include "kaobject2folder.h"
#include "tpixmapcache.h"

#include <QHash>
#include <QIcon>
#include <QTreeWidget>

namespace {

// Digit runs are written with this many digits (leading zeros stripped,
// then padded), so that "10" sorts after "9"; it holds any 64-bit number.
const int NumberWidth = 20;

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

bool isAscii(const QString& text)
{
    for (const QChar c : text) {
        if (c.unicode() >= 0x80)
            return false;
    }
    return true;
}

// Icons are shared by every item of a kind; items are made on the GUI
// thread only, so the cache needs no lock.
QIcon iconFor(const char* name)
{
    static QHash<const char*, QIcon> cache;
    auto it = cache.constFind(name);
    if (it == cache.constEnd())
        it = cache.insert(name, QIcon(TPixmapCache::find(name)));
    return it.value();
}

} // namespace

KATreeWidgetItem::KATreeWidgetItem(QTreeWidget* view, const KAObject2* object)
    : QTreeWidgetItem(ItemType)
    , m_object(object)
{
    initFromObject();
    // Inserted once filled, so the view is not told of each field.
    if (view)
        view->addTopLevelItem(this);
}

KATreeWidgetItem::KATreeWidgetItem(QTreeWidgetItem* parentItem, const KAObject2* object)
    : QTreeWidgetItem(ItemType)
    , m_object(object)
{
    initFromObject();
    if (parentItem)
        parentItem->addChild(this);
}

KATreeWidgetItem::KATreeWidgetItem(QTreeWidgetItem* parentItem, void* unused, const KAObject2* object)
    : QTreeWidgetItem(ItemType)
    , m_object(object)
{
    Q_UNUSED(unused);
    initFromObject();
    if (!object)
        m_var = placeholderVar();
    if (parentItem)
        parentItem->addChild(this);
}

KATreeWidgetItem::~KATreeWidgetItem() = default;

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
    setText(NameColumn, m_object->name());
    if (const char* name = iconName(m_object)) {
        const QIcon icon = iconFor(name);
        if (!icon.isNull())
            setIcon(NameColumn, icon);
    }
    // Not virtual here: an override is not reachable from this constructor.
    setText(SortKeyColumn, KATreeWidgetItem::sortKey());
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
    QString key;
    key.reserve(base.size() + 2 * NumberWidth + name.size() + 2);
    key += QLatin1Char(folder ? '0' : '1');
    const int size = base.size();
    for (int i = 0; i < size;) {
        const QChar c = base.at(i);
        if (!c.isDigit()) {
            const ushort u = c.unicode();
            key += (u >= 'A' && u <= 'Z') ? QChar(u + ('a' - 'A')) : c;
            ++i;
            continue;
        }
        // A run of digits (any script) becomes a zero-padded ASCII number.
        int end = i;
        while (end < size && base.at(end).isDigit())
            ++end;
        int first = i;
        while (first < end - 1 && base.at(first).digitValue() == 0)
            ++first;
        for (int pad = end - first; pad < NumberWidth; ++pad)
            key += QLatin1Char('0');
        for (int k = first; k < end; ++k)
            key += QLatin1Char(char('0' + base.at(k).digitValue()));
        i = end;
    }
    // The separator sorts before any character of a name, so "ab" comes
    // before "abc"; the name itself then orders names that fold alike.
    key += QChar(0x0001);
    key += name;
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
    if (column == SortKeyColumn && (role == Qt::DisplayRole || role == Qt::EditRole))
        m_sortKey = value.toString();
    QTreeWidgetItem::setData(column, role, value);
}
