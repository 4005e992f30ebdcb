#include "kafilesystembrowsereditor.h"

#include "kafilesystembrowserctrl.h"
#include "katreewidgetitem.h"
#include "twaitmode.h"

#include <QAction>
#include <QContextMenuEvent>
#include <QHeaderView>
#include <QMenu>
#include <QMimeData>
#include <QMouseEvent>

KAFileSystemBrowserEditor::KAFileSystemBrowserEditor(KAFileSystemBrowserCtrl* ctrl, QWidget* parent)
    : KAAbstractBrowserListView(ctrl, parent, QString())
    , m_ctrl(ctrl)
{
    setObjectName(QStringLiteral("KAFileSystemBrowserEditor"));
    setMinimumWidth(250);
    setColumnCount(2);
    setColumnHidden(1, true);
    setHeaderHidden(true); // the dock or the module shows the title
    header()->setSectionResizeMode(0, QHeaderView::ResizeToContents);
    setSortingEnabled(true);
    sortByColumn(1, Qt::AscendingOrder);
    setDragEnabled(true);
    setSelectionMode(QAbstractItemView::ExtendedSelection);
    m_explorerAction = new QAction(tr("Open Windows Explorer", "Ouvrir l'explorateur de fichiers"), this);
    connect(m_explorerAction, &QAction::triggered, this, &KAFileSystemBrowserEditor::slotOpenExplorer);
    connect(this, &QTreeWidget::itemClicked, this, &KAFileSystemBrowserEditor::slotItemClicked);
}

KAFileSystemBrowserEditor::~KAFileSystemBrowserEditor() = default;

void KAFileSystemBrowserEditor::detachController()
{
    m_ctrl = nullptr;
    releaseController();
}

KAFileSystemBrowserEditor::Node* KAFileSystemBrowserEditor::currentNode() const
{
    auto* item = dynamic_cast<KATreeWidgetItem*>(currentItem());
    return item ? item->node() : nullptr;
}

QList<KAFileSystemBrowserEditor::Node*> KAFileSystemBrowserEditor::selectedNodes() const
{
    QList<Node*> nodes;
    for (QTreeWidgetItem* qitem : selectedItems()) {
        auto* item = dynamic_cast<KATreeWidgetItem*>(qitem);
        if (item && item->node())
            nodes.append(item->node());
    }
    return nodes;
}

void KAFileSystemBrowserEditor::slotItemClicked(QTreeWidgetItem* qitem, int)
{
    auto* item = dynamic_cast<KATreeWidgetItem*>(qitem);
    if (m_ctrl && item)
        m_ctrl->itemSelected(item->node());
}

void KAFileSystemBrowserEditor::mouseDoubleClickEvent(QMouseEvent* event)
{
    auto* item = dynamic_cast<KATreeWidgetItem*>(itemAt(event->pos()));
    if (m_ctrl && item && item->node() && m_ctrl->openItem(item->node())) {
        event->accept();
        return;
    }
    KAAbstractBrowserListView::mouseDoubleClickEvent(event);
}

void KAFileSystemBrowserEditor::keyPressEvent(QKeyEvent* event)
{
    KAAbstractBrowserListView::keyPressEvent(event);
    if (event->key() == Qt::Key_F5 && m_ctrl) {
        TWaitMode wait;
        m_ctrl->refreshCurrentView(false);
    }
}

void KAFileSystemBrowserEditor::contextMenuEvent(QContextMenuEvent* event)
{
    KAAbstractBrowserListView::contextMenuEvent(event);
    if (!m_ctrl || selectedItems().size() >= 2 || !m_ctrl->isCreateFolderEnabled())
        return;
    QMenu menu(this);
    menu.addAction(m_explorerAction);
    menu.exec(event->globalPos());
}

QMimeData* KAFileSystemBrowserEditor::mimeData(const QList<QTreeWidgetItem*> items) const
{
    QMimeData* data = KAAbstractBrowserListView::mimeData(items);
    if (data && m_ctrl) {
        QList<const KAObject2*> objects = m_ctrl->getSelectedObjects();
        data->setUrls(m_ctrl->getObjectUrls(&objects));
    }
    return data;
}

void KAFileSystemBrowserEditor::slotOpenExplorer()
{
    if (!m_ctrl)
        return;
    const QList<QTreeWidgetItem*> selection = selectedItems();
    m_ctrl->createFolder(selection.isEmpty() ? nullptr : selection.first());
}
