#pragma once

#include "kabrowser_export.h"
#include "kaprojectbrowserabstract.h"

class KAFileSystemBrowserCtrl;
class KAFileSystemBrowserFilterPackage;
class QFileInfo;

// Builds the file-system explorer's tree: a Computer node holding the
// drives, Desktop and Documents, the alias folders and the caller's own
// roots (or one forced root), each folder listed when it is expanded. The
// expand state saved under the controller's name decides which folders are
// listed at once.
class KABROWSER_EXPORT KAFileSystemBrowserMgr : public KAProjectBrowserAbstract
{
public:
    explicit KAFileSystemBrowserMgr(KAFileSystemBrowserCtrl* ctrl);
    ~KAFileSystemBrowserMgr() override;

    void init() override;
    void createTree();
    Node* getTree() const override { return m_tree; }
    bool refreshRequested(KAObjectType type, const KAObject2* object) override;
    void refreshCurrentView() override;
    bool fillNodeOnExpand(Node* node) override;

    KAFileSystemBrowserFilterPackage* filter() const { return m_filter; }

private:
    // mayLoop: the folder may be a link back to one of its ancestors (not
    // known for roots); only then is that checked.
    void attach(Node* node, bool mayLoop = true);
    void fillAtOnce(Node* node);
    bool leadsIntoItself(const Node* node) const;

    KAFileSystemBrowserCtrl* m_fsCtrl;                // not owned: owns this manager
    KAFileSystemBrowserFilterPackage* m_filter = nullptr; // not owned
    Node* m_tree = nullptr;                           // owned: the Computer node
};
