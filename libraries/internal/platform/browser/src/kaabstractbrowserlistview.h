#pragma once

#include "kabrowser_export.h"
#include "kalistview.h"

#include <QHash>
#include <QTimer>

template <typename T> class TTree;
class KAAbstractBrowserCtrl;
class KAAbstractBrowserListViewState;
class KABackgroundTaskThread;
class KAObject2;
class KATreeWidgetItem;
class QMimeData;

// The tree widget every browser shows its model in. Items are made only for
// expanded nodes: a collapsed item with children carries one "FAKE"
// placeholder item until it is expanded. Two states fill it: normal and
// search. An intuitive mode sweeps a highlight band over the tree.
class KABROWSER_EXPORT KAAbstractBrowserListView : public KAListView
{
    Q_OBJECT
public:
    enum stateEnum { stateNormal = 0, stateSearch = 1 };
    using Node = TTree<KAObject2*>;

    KAAbstractBrowserListView(KAAbstractBrowserCtrl* ctrl, QWidget* parent, const QString& name);
    ~KAAbstractBrowserListView() override;

    void changeState(stateEnum state);
    stateEnum currentStateId() const { return m_stateId; }
    KAAbstractBrowserListViewState* currentState() const { return m_state; }
    virtual void fillTree(Node* root);
    virtual void createSon(Node* node, KATreeWidgetItem* item);
    void refreshNode(Node* node);
    virtual void deleteNode(Node* node);
    void selectNode(Node* node);
    void focusOnNode(Node* node);
    Node* pendingFocusNode() const { return m_pendingFocus; }
    virtual void startIntuitiveMode();
    virtual void stopIntuitiveMode();
    virtual bool isIntuitiveModeActive();
    int bandPosition() const { return m_bandPosition; }
    bool bandMovingUp() const { return m_bandMovingUp; }

    // Empties the view; the object index goes with the items.
    void clear();
    // True when an item of the view shows the object.
    bool showsObject(const KAObject2* object) const;
    KAAbstractBrowserCtrl* controller() const { return m_controller; }
    // For a controller that goes before its view.
    void releaseController() { m_controller = nullptr; }
    QTimer* reactivateTimer() { return &m_reactivateTimer; }

    // Makes the item of a node (under parentItem, else at top level), linked
    // to the node with its expanded, enabled and visible flags; null when
    // no creator makes one.
    KATreeWidgetItem* makeItem(Node* node, KATreeWidgetItem* parentItem);
    // Builds the items of a node's children in one batch.
    void buildChildren(Node* node, KATreeWidgetItem* parentItem);

public slots:
    void slotRestoreProjectNode();

protected:
    KATreeWidgetItem* getMLTree(Node* node) const;
    QMimeData* mimeData(const QList<QTreeWidgetItem*> items) const override;
    bool readOnly() const;
    void paintEvent(QPaintEvent* event) override;
    bool renameItem(QTreeWidgetItem* item, QString& name) override;

private slots:
    void slotExpand(QTreeWidgetItem* item);
    void slotCollapse(QTreeWidgetItem* item);
    void reactivateView();
    void slotUpdate();

private:
    void initStates();
    void clearStates();
    void indexItem(KATreeWidgetItem* item);
    void unindexSubtree(QTreeWidgetItem* item);
    void deleteItem(QTreeWidgetItem* item);
    void refreshChildren(Node* node, KATreeWidgetItem* item, bool expanded);

    KAAbstractBrowserCtrl* m_controller;                   // not owned
    QTimer m_reactivateTimer;
    KAAbstractBrowserListViewState* m_state = nullptr;     // not owned: one of m_stateList
    KAAbstractBrowserListViewState* m_stateList[2] = {};   // owned
    stateEnum m_stateId = stateNormal;
    KABackgroundTaskThread* m_intuitiveThread = nullptr;  // owned
    int m_bandPosition = 0;
    bool m_bandMovingUp = false;
    Node* m_pendingFocus = nullptr;                        // not owned
    // Items of each object, so that finding an item is no walk of the view.
    QMultiHash<const KAObject2*, KATreeWidgetItem*> m_itemIndex;
};
