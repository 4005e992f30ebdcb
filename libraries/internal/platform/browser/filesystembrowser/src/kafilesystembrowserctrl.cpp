#include "kafilesystembrowserctrl.h"

#include "applicationinterface.h"
#include "kaaliasfolderinterface.h"
#include "kaaliasfoldermgr.h"
#include "kafilesystembrowsereditor.h"
#include "kafilesystembrowserfilterpackage.h"
#include "kafilesystembrowsermgr.h"
#include "kafilesystembrowserobserver.h"
#include "kafilesystembrowsersearchmediator.h"
#include "kaobject2file.h"
#include "kaobject2project.h"
#include "kaobject2well.h"
#include "kaobject2winfolder.h"
#include "kaprojectbrowserctrl.h"
#include "katreewidgetitem.h"
#include "projectmgrinterface.h"
#include "tdatabase.h"
#include "tdescriptioncollector.h"
#include "texternalprocess.h"
#include "ttree.h"
#include "ttreeiterator.h"
#include "twaitmode.h"

#include <QDir>
#include <QFileInfo>

KAFileSystemBrowserCtrl::KAFileSystemBrowserCtrl(const QString& name)
    : KAAbstractBrowserCtrl(name)
{
    m_searchTimer.setSingleShot(true);
    m_searchTimer.setInterval(500);
    connect(&m_searchTimer, &QTimer::timeout, this, &KAFileSystemBrowserCtrl::slotSearchTimeout);
}

KAFileSystemBrowserCtrl::~KAFileSystemBrowserCtrl()
{
    ApplicationInterface::returnMe()->aliasFolderMgr()->unregisterObserver(this);
    ProjectMgrInterface::returnMe()->unregisterObserver(this);
    delete m_mediator;
    m_mediator = nullptr;
    if (m_view) {
        m_view->clear();
        m_view->detachController();
        m_view->deleteLater();
        m_view = nullptr;
    }
    clearMgrList();
    if (m_manager) {
        m_manager->saveTreeState(getName());
        delete m_manager;
        m_manager = nullptr;
    }
}

void KAFileSystemBrowserCtrl::init(KAProjectBrowserFilterPackage* filter, const KAObject2Project*, bool)
{
    m_filter = dynamic_cast<KAFileSystemBrowserFilterPackage*>(filter);
    m_mediator = new KAFileSystemBrowserSearchMediator(this);
    m_mediator->setFilter(m_filter);
    m_manager = new KAFileSystemBrowserMgr(this);
    m_manager->init();
    ApplicationInterface::returnMe()->aliasFolderMgr()->registerObserver(this);
    ProjectMgrInterface::returnMe()->registerObserver(this);
}

QWidget* KAFileSystemBrowserCtrl::initView(QWidget* parent)
{
    m_view = new KAFileSystemBrowserEditor(this, parent);
    addRootItems();
    return m_view;
}

KAFileSystemBrowserEditor* KAFileSystemBrowserCtrl::view() const
{
    return m_view.data();
}

void KAFileSystemBrowserCtrl::addRootItems()
{
    Node* root = getTree();
    if (!m_view || !root)
        return;
    for (Node* child = root->firstChild(); child; child = child->nextSibling())
        m_view->fillTree(child);
}

void KAFileSystemBrowserCtrl::setTitleView(const QString& title)
{
    if (m_view)
        m_view->setHeaderLabel(title);
}

QWidget* KAFileSystemBrowserCtrl::getEditor() const
{
    return m_view;
}

KAFileSystemBrowserCtrl::Node* KAFileSystemBrowserCtrl::getTree() const
{
    return m_manager ? m_manager->getTree() : nullptr;
}

KAProjectBrowserFilterPackage* KAFileSystemBrowserCtrl::getFilter() const
{
    return m_filter;
}

// ---- tree maintenance ---------------------------------------------------------

void KAFileSystemBrowserCtrl::fillTree(Node* node)
{
    if (m_view && node)
        m_view->fillTree(node);
}

void KAFileSystemBrowserCtrl::refreshNode(Node* node)
{
    if (m_view)
        m_view->refreshNode(node);
}

void KAFileSystemBrowserCtrl::fillNodeOnExpand(Node* node)
{
    if (!node || (m_manager && m_manager->fillNodeOnExpand(node)))
        return;
    for (KAAbstractBrowserCtrl* ctrl : qAsConst(m_projectCtrls)) {
        if (ctrl->belongsToMe(node)) {
            ctrl->fillNodeOnExpand(node);
            return;
        }
    }
    for (KAAbstractBrowserCtrl* ctrl : qAsConst(m_displacedCtrls)) {
        if (ctrl->belongsToMe(node)) {
            ctrl->fillNodeOnExpand(node);
            return;
        }
    }
}

void KAFileSystemBrowserCtrl::deleteNode(Node* node)
{
    if (m_view)
        m_view->deleteNode(node);
}

void KAFileSystemBrowserCtrl::clearView()
{
    if (m_view)
        m_view->clear();
}

void KAFileSystemBrowserCtrl::clearEditor()
{
    clearView();
}

// Deleting a project controller also unlinks its project node from the
// Computer tree (a node leaves its parent when destroyed).
void KAFileSystemBrowserCtrl::clearMgrList()
{
    const QList<KAAbstractBrowserCtrl*> ctrls = m_projectCtrls.values() + m_displacedCtrls;
    m_projectCtrls.clear();
    m_displacedCtrls.clear();
    for (KAAbstractBrowserCtrl* ctrl : ctrls) {
        if (auto* project = dynamic_cast<KAProjectBrowserCtrl*>(ctrl))
            project->saveTree();
        delete ctrl;
    }
}

void KAFileSystemBrowserCtrl::resetView()
{
    clearView();
    if (m_view)
        m_view->changeState(KAAbstractBrowserListView::stateNormal);
    addRootItems();
}

KAFileSystemBrowserCtrl::Node* KAFileSystemBrowserCtrl::createProjectNode(const QFileInfo& info)
{
    const KAObject2Project* project = ProjectMgrInterface::returnMe()->findProject(info);
    if (!project || !m_filter)
        return nullptr;
    if (m_filter->contains(FsProjectContent) && !m_filter->useCustomProjectsContent()) {
        auto* ctrl = new KAProjectBrowserCtrl;
        ctrl->init(m_filter, project, false);
        addCtrl(project, ctrl);
        return ctrl->getTree();
    }
    if (m_filter->contains(FsProjectContent)) {
        if (Node* content = m_filter->getCustomContent(project))
            return content->copy();
    }
    // The project alone, with no content to fill.
    auto* node = new Node;
    node->setData(const_cast<KAObject2Project*>(project));
    return node;
}

QList<KAFileSystemBrowserCtrl::Node*> KAFileSystemBrowserCtrl::createProjectNodes(const QList<QFileInfo>& folders)
{
    QList<Node*> nodes;
    nodes.reserve(folders.size());
    for (const QFileInfo& folder : folders)
        nodes.append(createProjectNode(folder));
    return nodes;
}

void KAFileSystemBrowserCtrl::forgetProjectNode(Node* node)
{
    if (!node)
        return;
    for (auto it = m_projectCtrls.begin(); it != m_projectCtrls.end(); ++it) {
        if (it.value()->getTree() == node) {
            delete it.value();
            m_projectCtrls.erase(it);
            return;
        }
    }
    delete node;
}

void KAFileSystemBrowserCtrl::addCtrl(const KAObject2* object, KAAbstractBrowserCtrl* ctrl)
{
    // A project listed twice keeps both controllers alive: the first one's
    // node may still be shown.
    if (KAAbstractBrowserCtrl* previous = m_projectCtrls.value(object)) {
        if (previous != ctrl)
            m_displacedCtrls.append(previous);
    }
    m_projectCtrls.insert(object, ctrl);
}

void KAFileSystemBrowserCtrl::refreshProjects(QList<const KAObject2Project*> projects)
{
    for (const KAObject2Project* project : projects) {
        if (KAAbstractBrowserCtrl* ctrl = m_projectCtrls.value(project))
            refreshNode(ctrl->getTree());
    }
}

void KAFileSystemBrowserCtrl::refreshCurrentView(bool)
{
    TWaitMode wait;
    clearView();
    clearMgrList();
    if (m_manager)
        m_manager->refreshCurrentView();
    if (!isSearchActive())
        addRootItems();
    if (m_mediator)
        m_mediator->treeRebuilt();
}

void KAFileSystemBrowserCtrl::projectClosed(const KAObject2Project* project)
{
    if (!project)
        return;
    if (m_mediator)
        m_mediator->projectClosed(project);
    // Every node of the project in the tree; a project may be listed under
    // several folders.
    QList<Node*> nodes;
    for (TTreeIterator<KAObject2*> it(getTree(), 0); *it; ++it) {
        if ((*it)->data() == project)
            nodes.append(*it);
    }
    for (Node* node : qAsConst(nodes))
        foldProjectNode(node);
}

// The project's controller owns the node: a new controller, not reading
// its project, takes the old one's place under the same parent.
void KAFileSystemBrowserCtrl::foldProjectNode(Node* node)
{
    Node* parent = node->parent();
    const auto* project = static_cast<const KAObject2Project*>(node->data());
    KAAbstractBrowserCtrl* owner = nullptr;
    for (KAAbstractBrowserCtrl* ctrl : m_projectCtrls.values() + m_displacedCtrls) {
        if (ctrl->getTree() == node) {
            owner = ctrl;
            break;
        }
    }
    if (!owner || !parent || !m_filter)
        return;
    deleteNode(node);
    if (m_projectCtrls.value(project) == owner)
        m_projectCtrls.remove(project);
    m_displacedCtrls.removeAll(owner);
    if (auto* projectCtrl = dynamic_cast<KAProjectBrowserCtrl*>(owner))
        projectCtrl->saveTree();
    node->detach();
    delete owner;
    auto* fresh = new KAProjectBrowserCtrl;
    fresh->init(m_filter, project, false);
    addCtrl(project, fresh);
    Node* tree = fresh->getTree();
    tree->attachTo(parent);
    tree->setOwnsData(false);
    refreshNode(parent);
}

void KAFileSystemBrowserCtrl::aliasListChanged()
{
    refreshCurrentView(false);
}

void KAFileSystemBrowserCtrl::restoreMainTree(Node* node)
{
    if (!node || !node->data())
        return;
    const auto* project = node->data()->type() == KAObjectTypeProject
        ? static_cast<const KAObject2Project*>(node->data())
        : nullptr;
    Node* target = nullptr;
    if (m_filter && m_filter->useCustomProjectsContent() && project) {
        if (Node* content = m_filter->getCustomContent(project))
            target = content;
    }
    if (!target) {
        KAAbstractBrowserCtrl* owner = nullptr;
        if (m_mediator) {
            for (KAAbstractBrowserCtrl* ctrl : m_mediator->openedControllers()) {
                if (ctrl->getTree() && ctrl->getTree()->data() == node->data()) {
                    owner = ctrl;
                    break;
                }
            }
        }
        if (!owner && project)
            owner = m_projectCtrls.value(project);
        if (!owner) {
            refreshNode(node);
            return;
        }
        target = owner->getTree();
    }
    if (!m_view || !target)
        return;
    m_view->clear();
    m_view->changeState(KAAbstractBrowserListView::stateNormal);
    m_view->fillTree(target);
    m_view->focusOnNode(target);
}

bool KAFileSystemBrowserCtrl::belongsToMe(Node* node)
{
    return node && node == getTree();
}

// ---- selection, opening, paths -------------------------------------------------

const KAObject2* KAFileSystemBrowserCtrl::getSelectedObject() const
{
    Node* node = m_view ? m_view->currentNode() : nullptr;
    return node ? node->data() : nullptr;
}

QList<const KAObject2*> KAFileSystemBrowserCtrl::getSelectedObjects() const
{
    QList<const KAObject2*> objects;
    if (!m_view)
        return objects;
    for (Node* node : m_view->selectedNodes()) {
        if (node->data())
            objects.append(node->data());
    }
    return objects;
}

QList<const KAObject2*> KAFileSystemBrowserCtrl::getSelectedObjects(const KAObjectType& type, bool walkUp) const
{
    QList<const KAObject2*> objects;
    if (!m_view)
        return objects;
    for (Node* node : m_view->selectedNodes()) {
        const KAObject2* found = nullptr;
        for (Node* n = node; n; n = walkUp ? n->parent() : nullptr) {
            if (n->data() && n->data()->type() == type) {
                found = n->data();
                break;
            }
        }
        if (found && !objects.contains(found))
            objects.append(found);
    }
    return objects;
}

void KAFileSystemBrowserCtrl::selectObjectInTree(const KAObject2* object)
{
    if (!object || !m_manager)
        return;
    if (Node* node = m_manager->findObjectInTree(object, getTree())) {
        if (m_view) {
            m_view->focusOnNode(node);
            m_view->selectNode(node);
        }
        return;
    }
    const KAObject2Project* project = object->type() == KAObjectTypeProject
        ? static_cast<const KAObject2Project*>(object)
        : (object->db() ? object->db()->project() : nullptr);
    if (!project)
        return;
    QString path = QDir::cleanPath(project->folder());
    if (const KAAliasFolderInterface* alias = ApplicationInterface::returnMe()->aliasFolderMgr()->findByFolder(path))
        path = QStringLiteral("%%1%").arg(alias->name()) + path.mid(QDir::cleanPath(alias->path()).size());
    expandPath(QDir::toNativeSeparators(path), false);
    if (Node* node = m_manager->findObjectInTree(object, getTree())) {
        if (m_view) {
            m_view->focusOnNode(node);
            m_view->selectNode(node);
        }
    }
}

// A drive root is named after its path ("/", "C:\"): a path component
// matches it with or without the trailing separator.
KAFileSystemBrowserCtrl::Node* KAFileSystemBrowserCtrl::findPathChild(const QString& part, Node* parent) const
{
    if (Node* child = m_manager->findChild(part, parent))
        return child;
    return m_manager->findChild(part + QDir::separator(), parent);
}

bool KAFileSystemBrowserCtrl::expandPath(const QString& path, bool select)
{
    if (!m_manager || !getTree())
        return false;
    QStringList parts = path.split(QDir::separator(), Qt::SkipEmptyParts);
    if (path.startsWith(QDir::separator()) && QDir::separator() == QLatin1Char('/'))
        parts.prepend(QStringLiteral("/"));
    if (parts.isEmpty())
        return false;
    if (parts.first().startsWith(QLatin1Char('%'))) {
        const QString name = QString(parts.first()).remove(QLatin1Char('%'));
        const KAAliasFolderInterface* alias = ApplicationInterface::returnMe()->aliasFolderMgr()->findByName(name);
        if (!alias)
            return false;
        parts.first() = alias->name();
    }
    Node* current = getTree();
    Node* firstCollapsed = nullptr;
    for (const QString& part : qAsConst(parts)) {
        Node* child = findPathChild(part, current);
        if (!child)
            break;
        if (!child->isExpanded() && !firstCollapsed)
            firstCollapsed = child;
        child->setExpanded(true);
        if (child->childCount() == 1 && KAProjectBrowserAbstract::isPlaceholder(child->firstChild()))
            fillNodeOnExpand(child);
        current = child;
    }
    if (firstCollapsed)
        refreshNode(firstCollapsed);
    if (select && m_view && current != getTree()) {
        m_view->focusOnNode(current);
        m_view->selectNode(current);
    }
    return true;
}

void KAFileSystemBrowserCtrl::itemSelected(Node* node)
{
    const KAObject2* object = node ? node->data() : nullptr;
    TDescriptionCollector::getInstance()->displayProperties(object);
    if (!object)
        return;
    const QList<KAFileSystemBrowserObserver*> observers = m_observers;
    for (KAFileSystemBrowserObserver* observer : observers)
        observer->fsObjectSelected(object);
}

bool KAFileSystemBrowserCtrl::openItem(Node* node)
{
    if (!node || !node->data())
        return false;
    const QList<KAFileSystemBrowserObserver*> observers = m_observers;
    for (KAFileSystemBrowserObserver* observer : observers) {
        if (observer->fsObjectOpened(node->data()))
            return true;
    }
    return false;
}

QList<QUrl> KAFileSystemBrowserCtrl::getObjectUrls(QList<const KAObject2*>* objects) const
{
    QList<QUrl> urls;
    if (!objects)
        return urls;
    for (const KAObject2* object : *objects) {
        if (!object)
            continue;
        switch (object->type()) {
        case KAObjectTypeAnalysis:
        case KAObjectTypeDataset:
            if (object->db())
                urls.append(QUrl::fromLocalFile(TechDB::TDatabase::objectFilePath(object)));
            break;
        case KAObjectTypeWell:
            if (object->db()) {
                QList<const KAObject2*> datasets =
                    object->db()->datasetList(static_cast<const KAObject2Well*>(object));
                urls.append(getObjectUrls(&datasets));
            }
            break;
        case KAObjectTypeFile:
        case KAObjectTypeWinFile:
            urls.append(QUrl::fromLocalFile(static_cast<const KAObject2File*>(object)->filePath()));
            break;
        default:
            break;
        }
    }
    return urls;
}

bool KAFileSystemBrowserCtrl::createFolder(QTreeWidgetItem* item) const
{
    const KAObject2* object = nullptr;
    if (auto* treeItem = dynamic_cast<KATreeWidgetItem*>(item))
        object = treeItem->object();
    else if (!item && getTree() && getTree()->firstChild())
        object = getTree()->firstChild()->data();
    if (const auto* folder = dynamic_cast<const KAObject2WinFolder*>(object))
        return TExternalProcess::startWindowsExplorer(folder->getDir().absolutePath());
    if (object && object->type() == KAObjectTypeProject)
        return TExternalProcess::startWindowsExplorer(static_cast<const KAObject2Project*>(object)->folder());
    return false;
}

void KAFileSystemBrowserCtrl::registerObserver(KAFileSystemBrowserObserver* observer)
{
    if (observer && !m_observers.contains(observer))
        m_observers.append(observer);
}

void KAFileSystemBrowserCtrl::unregisterObserver(KAFileSystemBrowserObserver* observer)
{
    m_observers.removeAll(observer);
}

// ---- search ----------------------------------------------------------------------

KAFileSystemBrowserCtrl::Node* KAFileSystemBrowserCtrl::search(const QString& text)
{
    if (text.isEmpty()) {
        m_searchTimer.stop();
        if (m_view)
            m_view->changeState(KAAbstractBrowserListView::stateNormal);
        if (m_mediator)
            m_mediator->cancel();
        return nullptr;
    }
    m_searchTimer.setProperty("txt", text);
    m_searchTimer.start();
    return nullptr;
}

void KAFileSystemBrowserCtrl::slotSearchTimeout()
{
    if (m_view)
        m_view->changeState(KAAbstractBrowserListView::stateSearch);
    if (m_mediator)
        m_mediator->search(m_searchTimer.property("txt").toString());
}

bool KAFileSystemBrowserCtrl::isSearchActive() const
{
    return m_mediator && m_mediator->isActive();
}

void KAFileSystemBrowserCtrl::setSearchProcessProgress(TProcessProgressInterface* progress)
{
    if (m_mediator)
        m_mediator->setProgress(progress);
}
