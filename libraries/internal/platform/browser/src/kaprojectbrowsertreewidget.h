#pragma once

#include "kaabstractbrowserlistview.h"
#include "kabrowser_export.h"

class KAProjectBrowserCtrl;
class QAction;
class QMenu;

// The view of the project explorer: its context menu and the user's
// actions on the selection. Every editing action checks the read-only
// conditions first and goes through the controller for the change.
class KABROWSER_EXPORT KAProjectBrowserTreeWidget : public KAAbstractBrowserListView
{
    Q_OBJECT
public:
    explicit KAProjectBrowserTreeWidget(KAProjectBrowserCtrl* ctrl, QWidget* parent = nullptr);
    ~KAProjectBrowserTreeWidget() override;

    // Fills with screen updates suspended.
    void fillTreeWithoutUpdates(Node* tree);
    // Disables and empties the view, unless it shows search results.
    void clearView();
    QList<Node*> selectedNodes() const;
    QMenu* contextMenu() const { return m_menu; }
    QString selectionMessage() const;

public slots:
    void slotNewFolder();
    void slotRename() override;
    void slotDelete();
    void slotShowProperties();
    void slotShowInExplorer();
    void slotReparent();
    void slotDoubleClicked(QTreeWidgetItem* item, int column);
    void slotClicked(QTreeWidgetItem* item, int column);
    void slotSelectionChange();
    void slotRefreshObject(const KAObject2* object);
    void slotRefreshWithData(int kind);

protected:
    void contextMenuEvent(QContextMenuEvent* event) override;
    void dragEnterEvent(QDragEnterEvent* event) override;
    void dragMoveEvent(QDragMoveEvent* event) override;
    void dropEvent(QDropEvent* event) override;

private:
    void buildMenu();
    bool editingRefused(const char* english, const char* french, bool asError);
    Node* dropTarget(const QPoint& position) const;

    KAProjectBrowserCtrl* m_ctrl;          // not owned: owns this view
    QMenu* m_menu = nullptr;               // owned (child)
    QMenu* m_newMenu = nullptr;            // owned by m_menu
    QAction* m_folderAction = nullptr;     // owned by the menus
    QAction* m_renameItemAction = nullptr; // owned by the view (F2)
    QAction* m_deleteAction = nullptr;
    QAction* m_propertiesAction = nullptr;
    QAction* m_explorerAction = nullptr;
    QAction* m_reparentAction = nullptr;
};
