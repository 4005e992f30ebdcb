#pragma once

#include "kaabstractbrowserctrl.h"
#include "kaaliasfoldermgrobserver.h"
#include "kabrowser_export.h"
#include "kaobjecttype.h"
#include "tprojectmgrobserver.h"

#include <QList>
#include <QMap>
#include <QObject>
#include <QPointer>
#include <QTimer>
#include <QUrl>

class KAFileSystemBrowserEditor;
class KAFileSystemBrowserFilterPackage;
class KAFileSystemBrowserMgr;
class KAFileSystemBrowserObserver;
class KAFileSystemBrowserSearchMediator;
class QFileInfo;
class QTreeWidgetItem;
class TProcessProgressInterface;

// Controller of the file-system explorer: the Computer tree, its view, the
// background search over all projects, and one project controller per
// project folder whose content unfolds in the tree.
class KABROWSER_EXPORT KAFileSystemBrowserCtrl : public QObject,
                                                 public KAAbstractBrowserCtrl,
                                                 public KAAliasFolderMgrObserver,
                                                 public TProjectMgrObserver
{
    Q_OBJECT
public:
    using Node = TTree<KAObject2*>;

    explicit KAFileSystemBrowserCtrl(const QString& name);
    ~KAFileSystemBrowserCtrl() override;

    void init(KAProjectBrowserFilterPackage* filter, const KAObject2Project* project, bool read) override;
    QWidget* initView(QWidget* parent);
    void setTitleView(const QString& title);
    QWidget* getEditor() const override;
    KAFileSystemBrowserEditor* view() const;
    Node* getTree() const override;
    KAProjectBrowserFilterPackage* getFilter() const override;
    KAFileSystemBrowserFilterPackage* fileSystemFilter() const { return m_filter; }
    KAFileSystemBrowserMgr* manager() const { return m_manager; }
    KAFileSystemBrowserSearchMediator* mediator() const { return m_mediator; }

    void fillTree(Node* node) override;
    void refreshNode(Node* node) override;
    void fillNodeOnExpand(Node* node) override;
    void deleteNode(Node* node) override;
    void clearView();
    void clearEditor() override;
    void clearMgrList() override;
    void resetView();
    void restoreMainTree(Node* node) override;
    void refreshCurrentView(bool intuitive) override;
    bool belongsToMe(Node* node) override;
    Node* search(const QString& text) override;

    Node* createProjectNode(const QFileInfo& info);
    // One node per folder, in order: the project node of a project folder,
    // null for any other folder.
    virtual QList<Node*> createProjectNodes(const QList<QFileInfo>& folders);
    // Drops a node createProjectNode made and the caller does not show.
    void forgetProjectNode(Node* node);
    void addCtrl(const KAObject2* object, KAAbstractBrowserCtrl* ctrl);
    const QMap<const KAObject2*, KAAbstractBrowserCtrl*>& getCtrlList() const { return m_projectCtrls; }
    void refreshProjects(QList<const KAObject2Project*> projects);

    void aliasListChanged() override;
    // The project's database goes once this returns: its nodes fold back
    // to a project waiting to be read, and a search that used it ends.
    void projectClosed(const KAObject2Project* project) override;

    const KAObject2* getSelectedObject() const;
    QList<const KAObject2*> getSelectedObjects() const;
    QList<const KAObject2*> getSelectedObjects(const KAObjectType& type, bool walkUp) const;
    void selectObjectInTree(const KAObject2* object);
    bool expandPath(const QString& path, bool select);
    void itemSelected(Node* node);
    bool openItem(Node* node);
    QList<QUrl> getObjectUrls(QList<const KAObject2*>* objects) const;
    bool createFolder(QTreeWidgetItem* item) const;
    void allowCreateFolder(bool allowed) { m_createFolderAllowed = allowed; }
    bool isCreateFolderEnabled() const { return m_createFolderAllowed; }

    void registerObserver(KAFileSystemBrowserObserver* observer);
    void unregisterObserver(KAFileSystemBrowserObserver* observer);

    bool isSearchActive() const;
    void setSearchProcessProgress(TProcessProgressInterface* progress);
    // The delay between the last keystroke and the search (500 ms).
    QTimer* searchTimer() { return &m_searchTimer; }

private slots:
    void slotSearchTimeout();

protected:
    // Folds a project node back: its content goes, a placeholder waits for
    // the next expansion. The node stays where it is.
    virtual void foldProjectNode(Node* node);

private:
    void addRootItems();
    Node* findPathChild(const QString& part, Node* parent) const;

    QPointer<KAFileSystemBrowserEditor> m_view;            // owned by its Qt parent, or deleted later here
    KAFileSystemBrowserMgr* m_manager = nullptr;           // owned
    KAFileSystemBrowserFilterPackage* m_filter = nullptr;  // not owned
    QMap<const KAObject2*, KAAbstractBrowserCtrl*> m_projectCtrls; // owned controllers
    QList<KAFileSystemBrowserObserver*> m_observers;       // not owned
    QList<KAAbstractBrowserCtrl*> m_displacedCtrls;        // owned: a project listed twice
    KAFileSystemBrowserSearchMediator* m_mediator = nullptr; // owned
    QTimer m_searchTimer;
    bool m_createFolderAllowed = true;
};
