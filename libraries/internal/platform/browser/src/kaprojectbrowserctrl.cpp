#include "kaprojectbrowserctrl.h"

#include "kaobject2project.h"
#include "kaprojectbrowserfilterpackage.h"
#include "kaprojectbrowsermgr.h"
#include "kaprojectbrowserplugin.h"
#include "kaprojectbrowserpluginfiles.h"
#include "kaprojectbrowserpluginsearch.h"
#include "kaprojectbrowsertreewidget.h"
#include "katreewidgetitemcreator.h"
#include "messageloggerinterface.h"
#include "projectmgrinterface.h"
#include "tdatabase.h"
#include "ttree.h"

#include <QCoreApplication>
#include <QThread>

KAProjectBrowserCtrl::KAProjectBrowserCtrl()
    : KAAbstractBrowserCtrl(QString())
{
}

KAProjectBrowserCtrl::~KAProjectBrowserCtrl()
{
    qDeleteAll(m_mgrList);
    m_mgrList.clear();
    if (m_editor) {
        m_editor->close();
        delete m_editor;
        m_editor = nullptr;
    }
    for (KATreeWidgetItemCreatorAbstract* creator : qAsConst(m_creatorList))
        KATreeWidgetItemCreator::instance()->removeCreator(creator);
    qDeleteAll(m_pluginList);
    m_pluginList.clear();
    m_dragSource = nullptr;
}

void KAProjectBrowserCtrl::addPlugin(KAProjectBrowserPlugin* plugin, KATreeWidgetItemCreatorAbstract* creator)
{
    if (!plugin)
        return;
    m_pluginList.append(plugin);
    if (!creator)
        return;
    // The item registry belongs to the GUI thread.
    if (QCoreApplication::instance() && QThread::currentThread() != QCoreApplication::instance()->thread()) {
        m_pendingCreators.append(creator);
        return;
    }
    m_creatorList.append(creator);
    KATreeWidgetItemCreator::instance()->addCreator(creator);
}

void KAProjectBrowserCtrl::moveToThread(QThread* thread)
{
    for (KAProjectBrowserMgr* mgr : qAsConst(m_mgrList))
        mgr->moveToThread(thread);
    for (KAProjectBrowserPlugin* plugin : qAsConst(m_pluginList))
        plugin->moveToThread(thread);
}

// Called on the GUI thread once a controller made elsewhere arrives.
void KAProjectBrowserCtrl::registerPendingCreators()
{
    for (KATreeWidgetItemCreatorAbstract* creator : qAsConst(m_pendingCreators)) {
        m_creatorList.append(creator);
        KATreeWidgetItemCreator::instance()->addCreator(creator);
    }
    m_pendingCreators.clear();
}

KAProjectBrowserCtrl::Node* KAProjectBrowserCtrl::takeSearchResult(const QString& text)
{
    if (!m_searchPlugin)
        return nullptr;
    m_searchPlugin->search(text, currentKind());
    return m_searchPlugin->takeTree();
}

void KAProjectBrowserCtrl::init(bool multiProject, KAProjectBrowserFilterPackage* filter)
{
    m_multiProject = multiProject;
    m_filter = filter;
    m_editor = new KAProjectBrowserTreeWidget(this);
    if (!multiProject) {
        m_searchPlugin = new KAProjectBrowserPluginSearch(this);
        addPlugin(m_searchPlugin, m_searchPlugin->itemCreator());
        if (filter && filter->contains(KAObjectTypeExternalFolders)) {
            auto* files = new KAProjectBrowserPluginFiles(this);
            addPlugin(files, files->itemCreator());
        }
    } else {
        setMultiProject();
    }
    ProjectMgrInterface::returnMe()->registerObserver(this);
}

void KAProjectBrowserCtrl::init(KAProjectBrowserFilterPackage* filter, const KAObject2Project* project, bool read)
{
    m_filter = filter;
    auto* mgr = new KAProjectBrowserMgr(this, project);
    if (read)
        mgr->readProject();
    m_mgrList.append(mgr);
    m_searchPlugin = new KAProjectBrowserPluginSearch(this);
    addPlugin(m_searchPlugin, m_searchPlugin->itemCreator());
}

void KAProjectBrowserCtrl::setMultiProject()
{
    for (const KAObject2Project* project : ProjectMgrInterface::returnMe()->openProjects()) {
        auto* mgr = new KAProjectBrowserMgr(this, project);
        m_mgrList.append(mgr);
        mgr->readProject();
        Node* tree = mgr->getTree(KAObjectTypeProject);
        if (tree && m_editor)
            m_editor->fillTree(tree);
    }
    if (m_editor)
        m_editor->setEnabled(true);
}

// ---- host notifications -------------------------------------------------------

void KAProjectBrowserCtrl::projectOpened()
{
    if (m_multiProject)
        return;
    const KAObject2Project* current = ProjectMgrInterface::returnMe()->currentProject();
    if (!current)
        return;
    for (KAProjectBrowserMgr* mgr : qAsConst(m_mgrList)) {
        if (mgr->project() == current)
            return;
    }
    auto* mgr = new KAProjectBrowserMgr(this, current);
    m_mgrList.append(mgr);
    if (m_mgrList.size() == 1) {
        for (KAProjectBrowserPlugin* plugin : qAsConst(m_pluginList))
            plugin->init();
    }
    mgr->readProject();
    if (Node* tree = mgr->getTree(KAObjectTypeProject))
        fillTree(tree);
    if (m_editor)
        m_editor->setEnabled(true);
}

void KAProjectBrowserCtrl::projectClosed(const KAObject2Project* project)
{
    if (!project || m_multiProject)
        return;
    QList<KAProjectBrowserMgr*> closing;
    for (KAProjectBrowserMgr* mgr : qAsConst(m_mgrList)) {
        if (mgr->project() == project) {
            mgr->projectClosed();
            closing.append(mgr);
        }
    }
    for (KAProjectBrowserMgr* mgr : qAsConst(closing)) {
        m_mgrList.removeAll(mgr);
        delete mgr;
    }
    if (m_editor)
        m_editor->clearView();
    for (KAProjectBrowserMgr* mgr : qAsConst(m_mgrList)) {
        if (Node* tree = mgr->getTree(KAObjectTypeProject))
            fillTree(tree);
    }
    if (m_editor)
        m_editor->setEnabled(true);
}

// ---- tree and view ----------------------------------------------------------------

QWidget* KAProjectBrowserCtrl::getEditor() const
{
    return m_editor;
}

void KAProjectBrowserCtrl::fillTree(Node* tree)
{
    if (m_editor)
        m_editor->fillTree(tree);
    fillPluginTree();
}

void KAProjectBrowserCtrl::fillPluginTree()
{
    if (currentKind() != KAObjectTypeProject || m_mgrList.size() > 1 || !m_editor)
        return;
    for (KAProjectBrowserPlugin* plugin : qAsConst(m_pluginList))
        m_editor->fillTreeWithoutUpdates(plugin->getTree());
}

void KAProjectBrowserCtrl::refreshNode(Node* node)
{
    if (m_editor)
        m_editor->refreshNode(node);
}

void KAProjectBrowserCtrl::deleteNode(Node* node)
{
    if (m_editor)
        m_editor->deleteNode(node);
}

void KAProjectBrowserCtrl::clearEditor()
{
    if (m_editor)
        m_editor->clear();
}

void KAProjectBrowserCtrl::restoreMainTree(Node* tree)
{
    refreshNode(tree);
}

void KAProjectBrowserCtrl::refreshCurrentView(bool intuitive)
{
    clearEditor();
    for (KAProjectBrowserPlugin* plugin : qAsConst(m_pluginList))
        plugin->init();
    if (intuitive && m_editor)
        m_editor->startIntuitiveMode();
    for (KAProjectBrowserMgr* mgr : qAsConst(m_mgrList)) {
        mgr->refreshCurrentView();
        fillTree(mgr->getTree());
    }
}

void KAProjectBrowserCtrl::refreshRequested(KAObjectType type, const KAObject2* object)
{
    for (KAProjectBrowserMgr* mgr : qAsConst(m_mgrList))
        mgr->refreshRequested(type, object);
    for (KAProjectBrowserPlugin* plugin : qAsConst(m_pluginList)) {
        if (plugin->refreshRequested(type, object) && m_editor)
            m_editor->refreshNode(plugin->getTree());
    }
}

KAObjectType KAProjectBrowserCtrl::currentKind() const
{
    return m_filter ? m_filter->currentUserFilter() : KAObjectTypeProject;
}

void KAProjectBrowserCtrl::viewFiltered()
{
    const KAObjectType kind = currentKind();
    if (m_editor)
        m_editor->changeState(KAAbstractBrowserListView::stateNormal);
    if (m_searchPlugin)
        m_searchPlugin->init();
    for (KAProjectBrowserMgr* mgr : qAsConst(m_mgrList))
        mgr->viewFiltered(kind);
}

void KAProjectBrowserCtrl::setDefaultView()
{
    if (m_editor)
        m_editor->changeState(KAAbstractBrowserListView::stateNormal);
    if (m_searchPlugin)
        m_searchPlugin->init();
    for (KAProjectBrowserMgr* mgr : qAsConst(m_mgrList))
        mgr->setDefaultView();
}

bool KAProjectBrowserCtrl::belongsToMe(Node* node)
{
    if (!node)
        return false;
    for (KAProjectBrowserMgr* mgr : qAsConst(m_mgrList)) {
        if (mgr->getTree() == node)
            return true;
    }
    for (KAProjectBrowserPlugin* plugin : qAsConst(m_pluginList)) {
        if (plugin->getTree() == node)
            return true;
    }
    for (KAProjectBrowserMgr* mgr : qAsConst(m_mgrList)) {
        if (mgr->getTree() && node->data() && mgr->getTree()->data() == node->data())
            return true;
    }
    return false;
}

void KAProjectBrowserCtrl::clearMgrList()
{
    for (KAProjectBrowserMgr* mgr : qAsConst(m_mgrList))
        mgr->clearAll();
}

void KAProjectBrowserCtrl::saveTree()
{
    for (KAProjectBrowserMgr* mgr : qAsConst(m_mgrList))
        mgr->saveTree();
}

KAProjectBrowserCtrl::Node* KAProjectBrowserCtrl::getTree() const
{
    return m_mgrList.isEmpty() ? nullptr : m_mgrList.first()->getTree(KAObjectTypeProject);
}

KAProjectBrowserCtrl::Node* KAProjectBrowserCtrl::getTree(KAObjectType type) const
{
    return m_mgrList.isEmpty() ? nullptr : m_mgrList.first()->getTree(type);
}

void KAProjectBrowserCtrl::setFocus()
{
    if (m_editor)
        m_editor->setFocus();
}

void KAProjectBrowserCtrl::setCurrentFilter(KAObjectType type)
{
    if (m_filter)
        m_filter->setCurrentUserFilter(type);
}

void KAProjectBrowserCtrl::restoreDefaultEditor()
{
}

// ---- search ---------------------------------------------------------------------------

void KAProjectBrowserCtrl::search(const QString& text, bool)
{
    if (!m_searchPlugin)
        return;
    const KAObjectType kind = currentKind();
    if (text.isEmpty()) {
        if (m_editor)
            m_editor->changeState(KAAbstractBrowserListView::stateNormal);
        clearEditor();
        m_searchPlugin->init();
        viewFiltered();
        return;
    }
    m_searchPlugin->search(text, kind);
    if (m_editor) {
        m_editor->changeState(KAAbstractBrowserListView::stateSearch);
        m_editor->clear();
        m_editor->fillTreeWithoutUpdates(m_searchPlugin->getTree());
    }
}

KAProjectBrowserCtrl::Node* KAProjectBrowserCtrl::search(const QString& text)
{
    if (m_editor) {
        search(text, false);
        return nullptr;
    }
    if (!m_searchPlugin)
        return nullptr;
    m_searchPlugin->search(text, currentKind());
    return m_searchPlugin->getTree();
}

// ---- intuitive drag ---------------------------------------------------------------------

void KAProjectBrowserCtrl::intuitiveDragStart(void* source, KAObjectType type)
{
    if (!m_editor || !m_filter)
        return;
    m_dragSource = source;
    if (!m_multiProject) {
        clearEditor();
        m_filter->setCurrentUserFilter(type);
        viewFiltered();
    }
    m_editor->startIntuitiveMode();
}

void KAProjectBrowserCtrl::intuitiveDragEnd(void* source)
{
    if (source != m_dragSource || !m_filter)
        return;
    if (!m_multiProject) {
        clearEditor();
        m_filter->setCurrentUserFilter(KAObjectTypeProject);
        viewFiltered();
    }
    if (m_editor)
        m_editor->stopIntuitiveMode();
}

// ---- editing, dispatched to the manager first, then to the plug-ins --------------------

KAProjectBrowserCtrl::Node* KAProjectBrowserCtrl::createFolder(const QString& name, Node* parent)
{
    return m_mgrList.size() == 1 ? m_mgrList.first()->createFolder(name, parent) : nullptr;
}

bool KAProjectBrowserCtrl::viewShows(const KAObject2* object) const
{
    return m_editor && m_editor->showsObject(object);
}

bool KAProjectBrowserCtrl::deleteObject(Node* node, bool flag)
{
    if (!node || !node->data() || m_mgrList.isEmpty())
        return false;
    if (m_mgrList.first()->deleteObject(node, flag))
        return true;
    if (m_editor && !viewShows(node->data()))
        return false;
    for (KAProjectBrowserPlugin* plugin : qAsConst(m_pluginList)) {
        if (plugin->deleteObject(node, false)) {
            deleteNode(node);
            delete node;
            return true;
        }
    }
    return false;
}

// Unlike the other operations, a rename asks every plug-in, even after one
// has accepted.
bool KAProjectBrowserCtrl::renameObject(Node* node, QString& name)
{
    if (m_mgrList.isEmpty())
        return false;
    if (m_mgrList.first()->renameObject(node, name))
        return true;
    bool renamed = false;
    for (KAProjectBrowserPlugin* plugin : qAsConst(m_pluginList))
        renamed = plugin->renameObject(node, name) || renamed;
    return renamed;
}

bool KAProjectBrowserCtrl::moveItem(const QList<const KAObject2*>& objects, Node* target,
                                    QList<const KAObject2*>& moved)
{
    if (m_mgrList.isEmpty())
        return false;
    if (m_mgrList.first()->moveItem(objects, target, moved))
        return true;
    for (KAProjectBrowserPlugin* plugin : qAsConst(m_pluginList)) {
        if (plugin->moveItem(objects, target, moved))
            return true;
    }
    return false;
}

void KAProjectBrowserCtrl::fillNodeOnExpand(Node* node)
{
    if (!node)
        return;
    for (KAProjectBrowserMgr* mgr : qAsConst(m_mgrList)) {
        if (mgr->fillNodeOnExpand(node))
            return;
    }
    for (KAProjectBrowserPlugin* plugin : qAsConst(m_pluginList)) {
        if (plugin->fillNodeOnExpand(node))
            return;
    }
}

void KAProjectBrowserCtrl::reparentItem(Node* node, Node* newParent)
{
    if (m_mgrList.isEmpty())
        return;
    if (!m_mgrList.first()->reparentItem(node, newParent))
        MessageLoggerInterface::Information(tr("Moving item failed", "Le déplacement de l'élément a échoué"));
}
