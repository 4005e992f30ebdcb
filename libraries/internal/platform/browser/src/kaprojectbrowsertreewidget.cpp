#include "kaprojectbrowsertreewidget.h"

#include "applicationinterface.h"
#include "kaabstractbrowserlistviewstate.h"
#include "kamimedata.h"
#include "kaobject2decoder.h"
#include "kaobject2project.h"
#include "kaobject2search.h"
#include "kaprojectbrowserctrl.h"
#include "kaprojectbrowsermgr.h"
#include "kaprojectbrowserplugin.h"
#include "kaprojectbrowserpluginfiles.h"
#include "kareparentdialog.h"
#include "katreewidgetitem.h"
#include "katreewidgetitemcreator.h"
#include "katreewidgetitemsearchfolder.h"
#include "mainwindowinterface.h"
#include "messageloggerinterface.h"
#include "tapplicationdata.h"
#include "tdatabase.h"
#include "tdescriptioncollector.h"
#include "texternalprocess.h"
#include "tmessagebox.h"
#include "tpixmapcache.h"
#include "ttree.h"
#include "twaitmode.h"

#include <QAction>
#include <QContextMenuEvent>
#include <QDropEvent>
#include <QFileInfo>
#include <QMenu>
#include <QMimeData>
#include <QSignalBlocker>

namespace {
const QString DragFormat = QStringLiteral("kavelo/data");
} // namespace

KAProjectBrowserTreeWidget::KAProjectBrowserTreeWidget(KAProjectBrowserCtrl* ctrl, QWidget* parent)
    : KAAbstractBrowserListView(ctrl, parent, QStringLiteral("KAProjectBrowserTreeWidget"))
    , m_ctrl(ctrl)
{
    setHeaderHidden(true);
    setSelectionMode(QAbstractItemView::ExtendedSelection);
    setDragEnabled(true);
    setAcceptDrops(true);
    setDropIndicatorShown(true);
    setDragDropMode(QAbstractItemView::DragDrop);
    buildMenu();
    connect(ApplicationInterface::returnMe(), &ApplicationInterface::refreshObject, this,
            &KAProjectBrowserTreeWidget::slotRefreshObject);
    connect(ApplicationInterface::returnMe(), &ApplicationInterface::refreshOtherThanData, this,
            &KAProjectBrowserTreeWidget::slotRefreshWithData);
    connect(this, &QTreeWidget::itemDoubleClicked, this, &KAProjectBrowserTreeWidget::slotDoubleClicked);
    connect(this, &QTreeWidget::itemClicked, this, &KAProjectBrowserTreeWidget::slotClicked);
    connect(this, &QTreeWidget::itemSelectionChanged, this, &KAProjectBrowserTreeWidget::slotSelectionChange);
}

KAProjectBrowserTreeWidget::~KAProjectBrowserTreeWidget() = default;

void KAProjectBrowserTreeWidget::buildMenu()
{
    m_menu = new QMenu(this);
    m_newMenu = m_menu->addMenu(tr("New", "Nouveau"));
    m_folderAction = m_newMenu->addAction(QIcon(TPixmapCache::find("folder")), tr("Folder", "Dossier"));
    connect(m_folderAction, &QAction::triggered, this, &KAProjectBrowserTreeWidget::slotNewFolder);
    m_menu->addSeparator();

    // F2 stays bound to the list view's own rename action.
    m_renameItemAction = renameAction();
    m_renameItemAction->setText(tr("Rename", "Renommer"));
    m_renameItemAction->setStatusTip(tr("Rename this data", "Renommer cette donnée"));
    m_menu->addAction(m_renameItemAction);

    m_deleteAction = new QAction(QIcon(TPixmapCache::find("delete")), tr("Delete", "Supprimer"), this);
    m_deleteAction->setShortcut(QKeySequence::Delete);
    m_deleteAction->setShortcutContext(Qt::WidgetWithChildrenShortcut);
    m_deleteAction->setStatusTip(tr("Delete this data", "Supprimer cette donnée"));
    connect(m_deleteAction, &QAction::triggered, this, &KAProjectBrowserTreeWidget::slotDelete);
    addAction(m_deleteAction);
    m_menu->addAction(m_deleteAction);
    m_menu->addSeparator();

    m_propertiesAction = m_menu->addAction(QIcon(TPixmapCache::find("param")), tr("Properties", "Propriétés"));
    m_propertiesAction->setToolTip(tr("Show properties", "Afficher les propriétés"));
    connect(m_propertiesAction, &QAction::triggered, this, &KAProjectBrowserTreeWidget::slotShowProperties);

    m_explorerAction = m_menu->addAction(QIcon(TPixmapCache::find("drive")),
                                         tr("Show in the Explorer", "Afficher dans l'explorateur"));
    m_explorerAction->setToolTip(tr("Show in Windows Explorer", "Afficher dans l'explorateur de fichiers"));
    connect(m_explorerAction, &QAction::triggered, this, &KAProjectBrowserTreeWidget::slotShowInExplorer);

    m_reparentAction = m_menu->addAction(QIcon(QStringLiteral(":Ressources/png/toolbar/reparentIcon.png")),
                                         tr("Associate with", "Associer à"));
    m_reparentAction->setToolTip(tr("Reparent thiis item to another one", "Rattacher cet élément à un autre"));
    if (!connect(m_reparentAction, &QAction::triggered, this, &KAProjectBrowserTreeWidget::slotReparent))
        MessageLoggerInterface::Error(tr("Error while initializing menu", "Erreur lors de l'initialisation du menu"));
}

void KAProjectBrowserTreeWidget::contextMenuEvent(QContextMenuEvent* event)
{
    auto* item = dynamic_cast<KATreeWidgetItem*>(itemAt(event->pos()));
    const KAObject2* object = item ? item->object() : nullptr;
    const bool editable = !readOnly();
    m_newMenu->setEnabled(editable && object);
    m_renameItemAction->setEnabled(editable && object);
    m_deleteAction->setEnabled(editable && object);
    m_propertiesAction->setEnabled(object != nullptr);
    m_explorerAction->setEnabled(object && (object->type() == KAObjectTypeProject || object->db()));
    m_reparentAction->setEnabled(editable && object && object->db() && object->type() == KAObjectTypeDataset);
    QMenu menu(this);
    menu.addActions(m_menu->actions());
    // An item may carry actions of its own ("Save find results"), and the
    // plug-ins offer theirs on their nodes.
    QList<QAction*> extra;
    if (auto* folder = dynamic_cast<KATreeWidgetItemSearchFolder*>(item)) {
        if (folder->action())
            extra.append(folder->action());
    }
    if (item && item->node()) {
        for (KAProjectBrowserPlugin* plugin : m_ctrl->pluginList())
            extra.append(plugin->contextActions(item->node()));
    }
    if (!extra.isEmpty()) {
        menu.addSeparator();
        menu.addActions(extra);
    }
    menu.exec(event->globalPos());
}

bool KAProjectBrowserTreeWidget::editingRefused(const char* english, const char* french, bool asError)
{
    if (readOnly())
        return true;
    if (!TApplicationData::getInstance()->isCurrentProjectReadOnly())
        return false;
    const QString text = tr(english, french);
    asError ? MessageLoggerInterface::Error(text) : MessageLoggerInterface::Warning(text);
    return true;
}

void KAProjectBrowserTreeWidget::slotNewFolder()
{
    if (editingRefused("Impossible to add a new folder because current project is opened as <b>Read Only</b>",
                       "Impossible d'ajouter un nouveau dossier car le projet courant est ouvert en "
                       "<b>lecture seule</b>",
                       false))
        return;
    auto* item = dynamic_cast<KATreeWidgetItem*>(currentItem());
    if (!item || !item->node())
        return;
    item->setExpanded(true);
    Node* node = m_ctrl->createFolder(tr("New folder", "Nouveau dossier"), item->node());
    if (!node)
        return;
    KATreeWidgetItem* folderItem = makeItem(node, item);
    if (!folderItem)
        return;
    scrollToItem(folderItem);
    editItemName(folderItem);
}

void KAProjectBrowserTreeWidget::slotRename()
{
    if (editingRefused("Impossible to rename an item from  current project because it is opened as <b>Read Only</b>",
                       "Impossible de renommer un élément du projet courant car il est ouvert en "
                       "<b>lecture seule</b>",
                       false))
        return;
    KAListView::slotRename();
}

void KAProjectBrowserTreeWidget::slotDelete()
{
    if (editingRefused(" Impossible to remove item from current project because it is opened as <b>Read Only</b>",
                       " Impossible de supprimer un élément du projet courant car il est ouvert en "
                       "<b>lecture seule</b>",
                       true))
        return;
    TWaitMode wait;
    {
        const QSignalBlocker blocker(this);
        bool ask = true;
        QList<Node*> selection = selectedNodes();
        const bool several = selection.size() >= 2;
        while (!selection.isEmpty()) {
            Node* node = selection.takeFirst();
            const KAObject2* object = node ? node->data() : nullptr;
            if (!object)
                continue;
            if (ask) {
                const QString name = object->name().toHtmlEscaped();
                QString question = tr("Do you really want to remove <b>%1</b>?", "Voulez-vous vraiment supprimer <b>%1</b> ?")
                                       .arg(name);
                switch (object->type()) {
                case KAObjectTypeGlobalIndexation:
                case 256:
                case KAObjectTypeIdentificationGroup:
                case KAObjectTypeIdentifications:
                    question += tr("<br><br>This action will also remove associated dataset <b>%1</b> and all its "
                                   "sub-datasets.",
                                   "<br><br>Cette action supprimera aussi le jeu de données associé <b>%1</b> et "
                                   "tous ses sous-jeux de données.")
                                    .arg(name);
                    break;
                default:
                    break;
                }
                bool applyToAll = false;
                if (TMessageBox::askForDelete(this, question, several, &applyToAll) == 1)
                    break;
                if (applyToAll)
                    ask = false;
            }
            const QString name = object->name();
            if (!m_ctrl->deleteObject(node, false)) {
                MessageLoggerInterface::Error(
                    tr("Deleting <b>%1</b> has failed", "La suppression de <b>%1</b> a échoué").arg(name.toHtmlEscaped()));
                break;
            }
            selection = selectedNodes();
            if (!selection.isEmpty() && selection.first() == node)
                break; // deleted, yet still shown: never ask twice for one node
        }
    }
    m_ctrl->saveTree();
    slotSelectionChange();
}

void KAProjectBrowserTreeWidget::slotShowProperties()
{
    auto* item = dynamic_cast<KATreeWidgetItem*>(currentItem());
    if (item && item->object())
        TDescriptionCollector::getInstance()->displayProperties(item->object());
}

void KAProjectBrowserTreeWidget::slotShowInExplorer()
{
    for (Node* node : selectedNodes()) {
        const KAObject2* object = node ? node->data() : nullptr;
        if (!object)
            continue;
        if (object->type() == KAObjectTypeProject) {
            const auto* project = static_cast<const KAObject2Project*>(object);
            MessageLoggerInterface::Information(
                tr("Opening project location %1", "Ouverture de l'emplacement du projet %1").arg(project->folder().toHtmlEscaped()));
            TExternalProcess::startWindowsExplorer(project->folder());
        } else if (object->db()) {
            const QString path = TechDB::TDatabase::objectFilePath(object);
            const QString location = QFileInfo::exists(path) ? path : object->db()->location();
            MessageLoggerInterface::Information(
                tr("Opening file location %1", "Ouverture de l'emplacement du fichier %1").arg(location.toHtmlEscaped()));
            TExternalProcess::startWindowsExplorer(location);
        }
    }
}

void KAProjectBrowserTreeWidget::slotReparent()
{
    if (editingRefused("Impossible to rename an item from  current project because it is opened as <b>Read Only</b>",
                       "Impossible de renommer un élément du projet courant car il est ouvert en "
                       "<b>lecture seule</b>",
                       false))
        return;
    auto* item = dynamic_cast<KATreeWidgetItem*>(currentItem());
    if (!item || !item->node() || !item->object() || !item->object()->db() || m_ctrl->mgrList().isEmpty())
        return;
    KAProjectBrowserMgr* mgr = m_ctrl->mgrList().first();
    KAReparentDialog dialog(item->object(), item->object()->db(), this);
    if (dialog.exec() != QDialog::Accepted || !dialog.selectedObject())
        return;
    Node* parent = mgr->findObjectInTree(dialog.selectedObject(), mgr->getTree());
    if (parent)
        m_ctrl->reparentItem(item->node(), parent);
    else
        MessageLoggerInterface::Information(tr("Moving item failed", "Le déplacement de l'élément a échoué"));
}

void KAProjectBrowserTreeWidget::slotDoubleClicked(QTreeWidgetItem* qitem, int)
{
    auto* item = dynamic_cast<KATreeWidgetItem*>(qitem);
    if (!item || !item->object())
        return;
    if (item->object()->type() == KAObjectTypeSearch) {
        // A saved search runs its text again.
        m_ctrl->search(static_cast<const KAObject2Search*>(item->object())->search(), false);
        return;
    }
    // A file of an external folder opens with the system's application.
    for (KAProjectBrowserPlugin* plugin : m_ctrl->pluginList()) {
        if (auto* files = qobject_cast<KAProjectBrowserPluginFiles*>(plugin)) {
            if (files->openFile(item->node()))
                return;
        }
    }
    if (MainWindowInterface* window = MainWindowInterface::returnMe())
        window->openObject(item->object(), 0);
}

void KAProjectBrowserTreeWidget::slotClicked(QTreeWidgetItem* qitem, int)
{
    auto* item = dynamic_cast<KATreeWidgetItem*>(qitem);
    if (item && item->object())
        TDescriptionCollector::getInstance()->displayProperties(item->object());
}

QString KAProjectBrowserTreeWidget::selectionMessage() const
{
    return tr("%1 selected item(s) in the project explorer", "%1 élément(s) sélectionné(s) dans l'explorateur de projet")
        .arg(selectedItems().size());
}

void KAProjectBrowserTreeWidget::slotSelectionChange()
{
    if (MainWindowInterface* window = MainWindowInterface::returnMe())
        window->showMessage(selectionMessage());
}

void KAProjectBrowserTreeWidget::slotRefreshObject(const KAObject2* object)
{
    if (object)
        m_ctrl->refreshRequested(object->type(), object);
}

void KAProjectBrowserTreeWidget::slotRefreshWithData(int kind)
{
    m_ctrl->refreshRequested(KAObjectType(kind), nullptr);
}

QList<KAProjectBrowserTreeWidget::Node*> KAProjectBrowserTreeWidget::selectedNodes() const
{
    QList<Node*> nodes;
    for (QTreeWidgetItem* qitem : selectedItems()) {
        auto* item = dynamic_cast<KATreeWidgetItem*>(qitem);
        if (item && item->node())
            nodes.append(item->node());
    }
    return nodes;
}

void KAProjectBrowserTreeWidget::fillTreeWithoutUpdates(Node* tree)
{
    setUpdatesEnabled(false);
    fillTree(tree);
    setUpdatesEnabled(true);
}

void KAProjectBrowserTreeWidget::clearView()
{
    if (currentState() && currentState()->keepsViewOnClear())
        return;
    setEnabled(false);
    clear();
    slotSelectionChange();
}

// ---- drag and drop onto folders ----------------------------------------------------

KAProjectBrowserTreeWidget::Node* KAProjectBrowserTreeWidget::dropTarget(const QPoint& position) const
{
    auto* item = dynamic_cast<KATreeWidgetItem*>(itemAt(position));
    if (!item || !item->node() || !item->object() || item->object()->type() != KAObjectTypeFolder)
        return nullptr;
    return item->node();
}

void KAProjectBrowserTreeWidget::dragEnterEvent(QDragEnterEvent* event)
{
    if (!readOnly() && event->mimeData()->hasFormat(DragFormat))
        event->acceptProposedAction();
    else
        event->ignore();
}

void KAProjectBrowserTreeWidget::dragMoveEvent(QDragMoveEvent* event)
{
    if (!readOnly() && event->mimeData()->hasFormat(DragFormat) && dropTarget(event->pos()))
        event->acceptProposedAction();
    else
        event->ignore();
}

void KAProjectBrowserTreeWidget::dropEvent(QDropEvent* event)
{
    Node* target = dropTarget(event->pos());
    const QList<const KAObject2*> objects = KAObject2Decoder::decodeObject(event->mimeData());
    if (!target || objects.isEmpty() || readOnly()) {
        event->ignore();
        return;
    }
    if (TApplicationData::getInstance()->isCurrentProjectReadOnly()) {
        MessageLoggerInterface::Warning(tr("This move is not allowed", "Ce déplacement n'est pas autorisé"));
        event->ignore();
        return;
    }
    event->setDropAction(Qt::IgnoreAction); // the view moves items itself
    event->accept();
    QList<const KAObject2*> rejected;
    if (!m_ctrl->moveItem(objects, target, rejected))
        return;
    // Refused objects stay where they were; the others leave their old place
    // and show up under the target.
    KAProjectBrowserMgr* mgr = m_ctrl->mgrList().isEmpty() ? nullptr : m_ctrl->mgrList().first();
    for (const KAObject2* object : objects) {
        Node* node = mgr && !rejected.contains(object) ? mgr->findObjectInTree(object, mgr->getTree()) : nullptr;
        while (node && getMLTree(node))
            deleteNode(node);
    }
    refreshNode(target);
}
