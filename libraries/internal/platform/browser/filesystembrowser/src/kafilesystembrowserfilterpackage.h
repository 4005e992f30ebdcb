#pragma once

#include "kabrowser_export.h"
#include "kaprojectbrowserfilterpackage.h"

#include <QMap>
#include <QSharedPointer>
#include <QStringList>

template <typename T> class TTree;
class KAAliasFolderInterface;
class KAObject2;
class KAObject2Project;
class KAObject2WinFile;

// What a file-system browser shows: which top-level branches, which file
// extensions, an optional forced root, per-project replacement content and
// extra root branches. Copies share the forced root, the custom content and
// the custom roots with their source: a copy is another view of one
// configuration. The shared objects are freed when the last package that
// shares them goes.
class KABROWSER_EXPORT KAFileSystemBrowserFilterPackage : public KAProjectBrowserFilterPackage
{
public:
    using Node = TTree<KAObject2*>;

    KAFileSystemBrowserFilterPackage();
    KAFileSystemBrowserFilterPackage(const KAFileSystemBrowserFilterPackage& other);
    KAFileSystemBrowserFilterPackage& operator=(const KAFileSystemBrowserFilterPackage& other);
    ~KAFileSystemBrowserFilterPackage() override;

    void add(KAObjectType type) override;

    QStringList extensionFilters() const;
    const QStringList& extensionAllowed() const { return m_extensions; }
    void setExtensionAllowed(const QStringList& extensions) { m_extensions = extensions; }
    void resetExtensionFilter() { m_extensions.clear(); }

    const KAObject2WinFile* rootForced() const;
    void setRootForced(const QString& path);
    void setRootForced(const KAAliasFolderInterface* alias);
    void resetRoot();

    bool useCustomProjectsContent() const { return m_useCustomContent; }
    void setUseCustomProjectsContent(bool use) { m_useCustomContent = use; }
    Node* getCustomContent(const KAObject2Project* project) const;
    void setCustomContent(const KAObject2Project* project, Node* tree);
    void setCustomProjectsContent(const QMap<const KAObject2Project*, Node*>& content);

    void addCustomRoot(Node* tree);
    const QList<Node*>& customRoots() const;
    void removeCustomRoot(Node* tree);
    void clearCustomRoots();

private:
    // Everything copies share, freed with the last package holding it.
    struct Shared {
        ~Shared();
        KAObject2WinFile* forcedRoot = nullptr;                // owned
        QMap<const KAObject2Project*, Node*> customContent;    // owned trees
        QList<Node*> customRoots;                              // owned trees
    };

    QStringList m_extensions;
    bool m_useCustomContent = false;
    QSharedPointer<Shared> m_shared;
};
