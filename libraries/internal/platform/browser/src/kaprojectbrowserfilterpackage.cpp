#include "kaprojectbrowserfilterpackage.h"

#include "kaprojectbrowserfilter.h"
#include "tpixmapcache.h"

namespace {
const KAObjectType SilentKinds[] = {
    KAObjectTypeDeconvMS, KAObjectTypeExternalFolders, KAObjectTypeBrowserItem,
    KAObjectTypeActionProject, KAObjectTypeActionChromatogram, KAObjectTypeEditMenu,
    KAObjectTypeEditRename, KAObjectTypeEditDelete, KAObjectTypeEditMove,
};
const KAObjectType SelectableKinds[] = {
    KAObjectTypeProject, KAObjectTypeAnalysis, KAObjectTypeWell,
    KAObjectTypeGlobalIndexation, KAObjectTypeIdentifications,
};

bool isSilentKind(KAObjectType type)
{
    for (KAObjectType k : SilentKinds)
        if (k == type)
            return true;
    return false;
}
} // namespace

KAProjectBrowserFilterPackage::KAProjectBrowserFilterPackage()
{
    for (KAObjectType type : SelectableKinds)
        appendKnown(type);
    for (KAObjectType type : SilentKinds)
        appendKnown(type);
}

KAProjectBrowserFilterPackage::KAProjectBrowserFilterPackage(const KAProjectBrowserFilterPackage& other)
    : m_currentUserFilter(other.m_currentUserFilter)
    , m_readOnly(other.m_readOnly)
{
    copyEntries(other);
}

KAProjectBrowserFilterPackage& KAProjectBrowserFilterPackage::operator=(const KAProjectBrowserFilterPackage& other)
{
    if (this == &other)
        return *this;
    m_currentUserFilter = other.m_currentUserFilter;
    m_readOnly = other.m_readOnly;
    deleteEntries();
    copyEntries(other);
    return *this;
}

KAProjectBrowserFilterPackage::~KAProjectBrowserFilterPackage()
{
    deleteEntries();
}

void KAProjectBrowserFilterPackage::add(KAObjectType type)
{
    if (contains(type))
        return;
    appendKnown(type);
}

void KAProjectBrowserFilterPackage::appendKnown(KAObjectType type)
{
    const char* label = nullptr;
    const char* french = nullptr;
    const char* icon = nullptr;
    switch (type) {
    case KAObjectTypeProject:
        label = "Show projects"; french = "Afficher les projets"; icon = "view_projectbrowser"; break;
    case KAObjectTypeAnalysis:
        label = "Show analyses"; french = "Afficher les analyses"; icon = "folder_analysis"; break;
    case KAObjectTypeWell:
        label = "Show numerical arrays"; french = "Afficher les tableaux numériques"; icon = "datasetfolder"; break;
    case KAObjectTypeGlobalIndexation:
        label = "Show indexations"; french = "Afficher les indexations"; icon = "indexation"; break;
    case KAObjectTypeIdentifications:
        label = "Show identifications"; french = "Afficher les identifications"; icon = "identification"; break;
    default:
        if (isSilentKind(type))
            appendSilent(type);
        return;
    }
    auto* entry = new KAProjectBrowserFilter;
    entry->type = type;
    entry->icon = TPixmapCache::find(icon);
    entry->label = tr(label, french, -1);
    entry->active = true;
    m_filters.append(entry);
}

void KAProjectBrowserFilterPackage::appendSilent(KAObjectType type)
{
    auto* entry = new KAProjectBrowserFilter;
    entry->type = type;
    m_filters.append(entry);
}

void KAProjectBrowserFilterPackage::remove(KAObjectType type)
{
    for (int i = m_filters.size() - 1; i >= 0; --i) {
        if (m_filters.at(i)->type == type)
            delete m_filters.takeAt(i);
    }
}

const KAProjectBrowserFilter* KAProjectBrowserFilterPackage::contains(KAObjectType type) const
{
    for (const KAProjectBrowserFilter* entry : m_filters)
        if (entry->type == type)
            return entry;
    return nullptr;
}

QList<const KAProjectBrowserFilter*> KAProjectBrowserFilterPackage::list() const
{
    QList<const KAProjectBrowserFilter*> result;
    result.reserve(m_filters.size());
    for (const KAProjectBrowserFilter* entry : m_filters)
        result.append(entry);
    return result;
}

void KAProjectBrowserFilterPackage::setReadOnly()
{
    m_readOnly = true;
    remove(KAObjectTypeEditMenu);
    remove(KAObjectTypeEditRename);
    remove(KAObjectTypeEditDelete);
    remove(KAObjectTypeEditMove);
}

void KAProjectBrowserFilterPackage::copyEntries(const KAProjectBrowserFilterPackage& other)
{
    for (const KAProjectBrowserFilter* entry : other.m_filters)
        m_filters.append(new KAProjectBrowserFilter(*entry));
}

void KAProjectBrowserFilterPackage::deleteEntries()
{
    qDeleteAll(m_filters);
    m_filters.clear();
}
