#pragma once

#include "kabrowser_export.h"
#include "kaprojectbrowserabstract.h"

#include <QHash>
#include <QMap>
#include <QObject>

class KAObject2Project;
class KAProjectBrowserCtrl;
class KAProjectBrowserFilterPackage;
namespace TechDB { class TDatabase; }

// Builds the project browser's model from a project database: a project
// root holding the four default branch folders, objects created directly in
// the user folders the saved layout records, lazy project and
// identification expansion, and per-kind rebuilds when the database changes.
class KABROWSER_EXPORT KAProjectBrowserMgr : public QObject, public KAProjectBrowserAbstract
{
    Q_OBJECT
public:
    KAProjectBrowserMgr(KAProjectBrowserCtrl* ctrl, const KAObject2Project* project);
    ~KAProjectBrowserMgr() override;

    void init() override;
    Node* getTree() const override;
    Node* getTree(KAObjectType type) const;
    bool refreshRequested(KAObjectType type, const KAObject2* object) override;
    void refreshCurrentView() override;
    bool fillNodeOnExpand(Node* node) override;
    bool deleteObject(Node* node, bool flag) override;
    bool renameObject(Node* node, QString& name) override;
    bool moveItem(const QList<const KAObject2*>& objects, Node* target,
                  QList<const KAObject2*>& rejected) override;
    bool reparentItem(Node* node, Node* newParent);
    Node* createFolder(const QString& name, Node* parent);

    bool readProject();
    void createTree();
    const KAObject2Project* project() const;
    TechDB::TDatabase* database() const { return m_db; }
    void projectClosed();
    void clearAll();
    void viewFiltered(KAObjectType type);
    void setDefaultView();

    // Saved layout of the user folders.
    bool saveTree();
    bool createUserFolder();
    Node* getParent(KAObjectType type, const QString& name) const;
    QString savedTreePath() const;

    // Frees every browser-made payload of a subtree; the nodes stay.
    void clearTreeMLObject(Node* node);

    void updateAnalysis(const KAObject2* object);
    void updateAnalysis();
    void updateGeneric(KAObjectType type, Node* tree);
    void updateWell(const KAObject2* well);
    void updateWells();
    void updateDataset(const KAObject2* dataset);
    void updateIndexation();
    void updateIdentification();

private slots:
    void slotAboutToDeleteObjects(QList<const KAObject2*>* objects);

private:
    using FolderMap = QMap<QString, QStringList>;

    void createDefaultFolder(const KAProjectBrowserFilterPackage* filter);
    void createUserFolder(KAObjectType type, const FolderMap& map, KAObject2* branchPayload);
    void buildWellTree();
    void buildWellTree(const KAObject2* well, Node* parent);
    void buildDatasetTree(const KAObject2* well, Node* wellNode);
    void buildAnalysisTree();
    void buildAnalysisEntry(const KAObject2* analysis, Node* parent);
    void buildSignalTreeSon(const KAObject2* analysis, Node* analysisNode);
    void buildGlobalIndexationTree(Node* root);
    void buildAutoIdentificationTree(Node* root);
    void buildManualIdentificationTree();
    void buildAutoIdenticationNode(const KAObject2* group, Node* parent);
    bool expandProject(Node* node);
    bool expandIdentification(Node* node);
    void clearNodeWithType(Node* root, KAObjectType type);
    static bool inCompoundBranch(const Node* node);
    void removeBranches();
    void forgetPlacementsUnder(Node* node);

    Node* addNode(Node* parent, const KAObject2* object);
    Node* addOwnedNode(Node* parent, KAObject2* object); // the node owns object
    Node* parentOr(KAObjectType type, const QString& name, KAObjectType branch) const;
    void refreshInView(Node* node);
    bool filterContains(KAObjectType type) const;

    KAProjectBrowserCtrl* m_ctrl;             // not owned: owns this manager
    QMap<KAObjectType, Node*> m_trees;        // owned through the root (key 768)
    TechDB::TDatabase* m_db = nullptr;        // not owned
    KAObject2* m_project = nullptr;           // not owned: the host's project object
    QString m_pathTemplate;
    // Placement table from the saved layout: kind, then object name, then
    // the folder node the object is created in.
    QHash<qint32, QHash<QString, Node*>> m_placement;
};
