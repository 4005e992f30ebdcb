#include "kafilesystembrowserfilterpackage.h"

#include "kaobject2aliasfolder.h"
#include "kaobject2winfile.h"
#include "kaobject2winitemfactory.h"
#include "kaaliasfolderinterface.h"
#include "ttree.h"

#include <QFileInfo>
#include <QSet>

namespace {
const KAObjectType FileSystemKinds[] = {FsProjectContent, FsAliasFolders, FsDrives, FsUserFolders, FsFiles};
} // namespace

// Trees held are freed once, even when one is both content and a root.
// Trees taken out (replaced or removed) went back to the caller.
KAFileSystemBrowserFilterPackage::Shared::~Shared()
{
    delete forcedRoot;
    QSet<Node*> trees;
    for (Node* tree : qAsConst(customContent))
        trees.insert(tree);
    for (Node* tree : qAsConst(customRoots))
        trees.insert(tree);
    trees.remove(nullptr);
    qDeleteAll(trees);
}

KAFileSystemBrowserFilterPackage::KAFileSystemBrowserFilterPackage()
    : m_shared(new Shared)
{
    for (KAObjectType type : FileSystemKinds)
        appendSilent(type);
}

KAFileSystemBrowserFilterPackage::KAFileSystemBrowserFilterPackage(const KAFileSystemBrowserFilterPackage& other) = default;

KAFileSystemBrowserFilterPackage& KAFileSystemBrowserFilterPackage::operator=(
    const KAFileSystemBrowserFilterPackage& other) = default;

KAFileSystemBrowserFilterPackage::~KAFileSystemBrowserFilterPackage() = default;

void KAFileSystemBrowserFilterPackage::add(KAObjectType type)
{
    if (contains(type))
        return;
    for (KAObjectType kind : FileSystemKinds) {
        if (kind == type) {
            appendSilent(type);
            return;
        }
    }
    KAProjectBrowserFilterPackage::add(type);
}

QStringList KAFileSystemBrowserFilterPackage::extensionFilters() const
{
    QStringList patterns;
    patterns.reserve(m_extensions.size());
    for (const QString& extension : m_extensions)
        patterns.append(QStringLiteral("*%1").arg(extension));
    return patterns;
}

const KAObject2WinFile* KAFileSystemBrowserFilterPackage::rootForced() const
{
    return m_shared->forcedRoot;
}

void KAFileSystemBrowserFilterPackage::setRootForced(const QString& path)
{
    delete m_shared->forcedRoot;
    m_shared->forcedRoot = KAObject2WinItemFactory::createItem(QFileInfo(path));
}

void KAFileSystemBrowserFilterPackage::setRootForced(const KAAliasFolderInterface* alias)
{
    delete m_shared->forcedRoot;
    m_shared->forcedRoot = alias ? new KAObject2AliasFolder(QFileInfo(alias->path()), alias->name()) : nullptr;
}

void KAFileSystemBrowserFilterPackage::resetRoot()
{
    delete m_shared->forcedRoot;
    m_shared->forcedRoot = nullptr;
}

KAFileSystemBrowserFilterPackage::Node* KAFileSystemBrowserFilterPackage::getCustomContent(
    const KAObject2Project* project) const
{
    return m_shared->customContent.value(project);
}

void KAFileSystemBrowserFilterPackage::setCustomContent(const KAObject2Project* project, Node* tree)
{
    m_shared->customContent.insert(project, tree);
}

void KAFileSystemBrowserFilterPackage::setCustomProjectsContent(const QMap<const KAObject2Project*, Node*>& content)
{
    m_shared->customContent = content;
}

void KAFileSystemBrowserFilterPackage::addCustomRoot(Node* tree)
{
    if (!m_shared->customRoots.contains(tree))
        m_shared->customRoots.append(tree);
}

const QList<KAFileSystemBrowserFilterPackage::Node*>& KAFileSystemBrowserFilterPackage::customRoots() const
{
    return m_shared->customRoots;
}

void KAFileSystemBrowserFilterPackage::removeCustomRoot(Node* tree)
{
    m_shared->customRoots.removeAll(tree);
}

void KAFileSystemBrowserFilterPackage::clearCustomRoots()
{
    m_shared->customRoots.clear();
}
