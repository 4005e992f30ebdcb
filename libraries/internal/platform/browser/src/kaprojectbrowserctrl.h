#pragma once

#include "kaabstractbrowserctrl.h"
#include "kabrowser_export.h"
#include "kaobjecttype.h"
#include "tprojectmgrobserver.h"

#include <QCoreApplication>
#include <QList>

class KAObject2;
class KAProjectBrowserMgr;
class KAProjectBrowserPlugin;
class KAProjectBrowserPluginSearch;
class KAProjectBrowserTreeWidget;
class KATreeWidgetItemCreatorAbstract;
class QThread;

// Controller of the project explorer: one tree manager per project shown,
// the plug-ins that add branches, and the view. Every operation on a node
// goes to the manager first, then to the plug-ins in creation order.
class KABROWSER_EXPORT KAProjectBrowserCtrl : public KAAbstractBrowserCtrl, public TProjectMgrObserver
{
    Q_DECLARE_TR_FUNCTIONS(KAProjectBrowserCtrl)
public:
    using Node = TTree<KAObject2*>;

    KAProjectBrowserCtrl();
    ~KAProjectBrowserCtrl() override;

    // Set-up with a view, following the host's projects.
    void init(bool multiProject, KAProjectBrowserFilterPackage* filter);
    // Set-up without a view, bound to one given project.
    void init(KAProjectBrowserFilterPackage* filter, const KAObject2Project* project, bool read) override;

    QWidget* getEditor() const override;
    KAProjectBrowserTreeWidget* treeWidget() const { return m_editor; }
    void clearMgrList() override;
    void fillTree(Node* tree) override;
    void refreshNode(Node* node) override;
    void deleteNode(Node* node) override;
    void fillNodeOnExpand(Node* node) override;
    void clearEditor() override;
    void restoreMainTree(Node* tree) override;
    void refreshCurrentView(bool intuitive) override;
    bool belongsToMe(Node* node) override;
    Node* getTree() const override;
    Node* getTree(KAObjectType type) const;
    Node* search(const QString& text) override;
    void search(const QString& text, bool flag);
    KAProjectBrowserFilterPackage* getFilter() const override { return m_filter; }
    bool isInMultiProject() const override { return m_multiProject; }

    void projectOpened() override;
    void projectClosed(const KAObject2Project* project) override;

    void setMultiProject();
    void fillPluginTree();
    void refreshRequested(KAObjectType type, const KAObject2* object);
    void viewFiltered();
    void setDefaultView();
    void setFocus();
    void setCurrentFilter(KAObjectType type);
    void restoreDefaultEditor();
    void saveTree();

    void intuitiveDragStart(void* source, KAObjectType type);
    void intuitiveDragEnd(void* source);

    Node* createFolder(const QString& name, Node* parent);
    bool deleteObject(Node* node, bool flag);
    bool renameObject(Node* node, QString& name) override;
    bool moveItem(const QList<const KAObject2*>& objects, Node* target, QList<const KAObject2*>& moved);
    void reparentItem(Node* node, Node* newParent);

    // The result tree of a search without view, handed over to the caller.
    Node* takeSearchResult(const QString& text);
    // A controller built on a worker thread moves its objects to the GUI
    // thread and registers its item creators there.
    void moveToThread(QThread* thread);
    void registerPendingCreators();

    const QList<KAProjectBrowserMgr*>& mgrList() const { return m_mgrList; }
    const QList<KAProjectBrowserPlugin*>& pluginList() const { return m_pluginList; }
    KAProjectBrowserPluginSearch* searchPlugin() const { return m_searchPlugin; }
    // Adds a plug-in made by the host (the controller takes it) and
    // registers its item creator.
    void addPlugin(KAProjectBrowserPlugin* plugin, KATreeWidgetItemCreatorAbstract* creator);

private:
    KAObjectType currentKind() const;
    bool viewShows(const KAObject2* object) const;

    QList<KAProjectBrowserMgr*> m_mgrList;                  // owned
    QList<KAProjectBrowserPlugin*> m_pluginList;            // owned
    KAProjectBrowserPluginSearch* m_searchPlugin = nullptr; // not owned: also in m_pluginList
    QList<KATreeWidgetItemCreatorAbstract*> m_creatorList;  // not owned: facets of the plug-ins
    QList<KATreeWidgetItemCreatorAbstract*> m_pendingCreators; // registered once on the GUI thread
    void* m_dragSource = nullptr;                           // not owned, only compared
    bool m_multiProject = false;
    KAProjectBrowserFilterPackage* m_filter = nullptr;      // not owned
    KAProjectBrowserTreeWidget* m_editor = nullptr;         // owned
};
