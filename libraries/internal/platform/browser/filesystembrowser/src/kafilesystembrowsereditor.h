#pragma once

#include "kaabstractbrowserlistview.h"
#include "kabrowser_export.h"

#include <QHash>

class KAFileSystemBrowserCtrl;
class QAction;

// The tree widget of the file-system explorer: double-click opens through
// the controller's observers, F5 refreshes, drags carry file URLs, and the
// context menu opens the system file manager on a folder.
class KABROWSER_EXPORT KAFileSystemBrowserEditor : public KAAbstractBrowserListView
{
    Q_OBJECT
public:
    KAFileSystemBrowserEditor(KAFileSystemBrowserCtrl* ctrl, QWidget* parent);
    ~KAFileSystemBrowserEditor() override;

    Node* currentNode() const;
    QList<Node*> selectedNodes() const;
    QAction* explorerAction() const { return m_explorerAction; }
    // The controller is going away: the view, deleted later, forgets it.
    void detachController();

protected:
    void mouseDoubleClickEvent(QMouseEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void contextMenuEvent(QContextMenuEvent* event) override;
    QMimeData* mimeData(const QList<QTreeWidgetItem*> items) const override;

private slots:
    void slotOpenExplorer();
    void slotItemClicked(QTreeWidgetItem* item, int column);

private:
    KAFileSystemBrowserCtrl* m_ctrl;         // not owned
    QHash<int, int> m_unused;                // kept empty
    QAction* m_explorerAction = nullptr;     // owned (child)
};
