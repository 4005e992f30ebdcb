#pragma once

#include "kabrowser_export.h"
#include "kaobjecttype.h"

#include <QCoreApplication>
#include <QDomDocument>
#include <QDomElement>
#include <QHash>
#include <QList>
#include <QString>

template <typename T> class TTree;
class KAAbstractBrowserCtrl;
class KAObject2;

// Tree manager under a controller: default editing rules for user folders,
// the three tree searches, and the per-user expand state of the tree kept in
// "filesystemtreeconfig.xml", one "instance" record per browser name.
class KABROWSER_EXPORT KAProjectBrowserAbstract
{
    Q_DECLARE_TR_FUNCTIONS(KAProjectBrowserAbstract)
public:
    using Node = TTree<KAObject2*>;

    explicit KAProjectBrowserAbstract(KAAbstractBrowserCtrl* ctrl);
    virtual ~KAProjectBrowserAbstract();

    virtual void init() = 0;
    virtual Node* getTree() const = 0;
    virtual bool refreshRequested(KAObjectType type, const KAObject2* object) = 0;
    virtual void refreshCurrentView();
    virtual bool fillNodeOnExpand(Node* node) = 0;
    virtual bool deleteObject(Node* node, bool flag);
    virtual bool renameObject(Node* node, QString& name);
    virtual bool moveItem(const QList<const KAObject2*>& objects, Node* target,
                          QList<const KAObject2*>& rejected);

    void saveTreeState();
    void saveTreeState(const QString& name);
    void loadTreeState(const QString& name);

    Node* findObjectInTree(const KAObject2* object, Node* start) const;
    Node* findInTree(int type, const QString& name, Node* start) const;
    Node* findChild(const QString& name, Node* parent) const;

    Node* createFolder(const QString& name, Node* parent);

    KAAbstractBrowserCtrl* ctrl() const { return m_ctrl; }
    // Saved layouts separate folders with "/": such a name is refused, with
    // a message, as file managers refuse it.
    static bool checkFolderName(const QString& name);
    static QString treeStatePath();
    // A node holding a placeholder, the mark of children not built yet.
    static bool isPlaceholder(const Node* node);
    // A new last-built child holding a database object without owning it.
    static Node* addReference(Node* parent, const KAObject2* object);
    // A new last-built child holding, and owning, a placeholder of kind.
    static Node* addPlaceholder(Node* parent, KAObjectType kind);

protected:
    QDomElement encodeNodeState(Node* node);
    QDomElement encodeNodeState(Node* node, QDomDocument& doc);
    bool getNodeExpandState(Node* node);
    QDomElement findDomElt(const Node* node);
    QDomDocument readXmlConfig();
    QDomDocument createXmlConfig();
    void writeXmlConfig(QDomDocument doc);
    bool moveIsAllowed(Node* moved, Node* target);

    // The requested name, or the first of name_1, name_2, ... that no
    // folder under scope holds; a folder holding `self` keeps its name.
    QString uniqueFolderName(const QString& name, Node* scope, const KAObject2* self = nullptr) const;

    // Object-to-node index of the managed tree, so that findObjectInTree
    // answers without a walk. Every node the manager links in or destroys
    // goes through these; a manager that never enables it is walked.
    void enableNodeIndex(bool enabled);
    void indexNode(Node* node);
    void indexSubtree(Node* node);
    void unindexSubtree(Node* node);
    void clearNodeIndex();
    // Unindexes, frees browser-made payloads and destroys the subtree.
    void destroyNode(Node* node);
    // Frees the browser-made payloads of a subtree (folders and the
    // browser's own kinds); the nodes stay, their payload pointers nulled.
    void clearBrowserPayloads(Node* node);

private:
    bool deleteUserFolder(Node* node);
    Node* walkFind(const KAObject2* object, Node* start) const;

    KAAbstractBrowserCtrl* m_ctrl; // not owned: the controller owns this manager
    QDomDocument m_stateDocument; // keeps m_stateElement's document alive
    QDomElement m_stateElement;
    bool m_indexEnabled = false;
    QHash<const KAObject2*, Node*> m_nodeIndex; // first node holding each object
};
