#include "kafilesystembrowsermgr.h"

#include "applicationinterface.h"
#include "kaaliasfolderinterface.h"
#include "kaaliasfoldermgr.h"
#include "kafilesystembrowserctrl.h"
#include "kafilesystembrowserfilterpackage.h"
#include "kaobject2aliasfolder.h"
#include "kaobject2fake.h"
#include "kaobject2wincomputer.h"
#include "kaobject2winfolder.h"
#include "kaobject2winitemfactory.h"
#include "projectmgrinterface.h"
#include "tdatabase.h"
#include "tdirectorylisting.h"
#include "tassert.h"
#include "ttree.h"

#include <QDir>
#include <QStandardPaths>

namespace {
const char* const SourceFile = "libraries\\internal\\platform\\browser\\filesystembrowser\\src\\kafilesystembrowsermgr";

TTree<KAObject2*>* newChild(TTree<KAObject2*>* parent, KAObject2* object)
{
    auto* node = new TTree<KAObject2*>(parent, -1);
    node->setData(object);
    node->setOwnsData(true);
    return node;
}

bool isListedFolder(const KAObject2* object)
{
    if (!object)
        return false;
    const KAObjectType type = object->type();
    return type == KAObjectTypeWinFile || type == KAObjectTypeWinFolder || type == KAObjectTypeAliasFolder;
}
} // namespace

KAFileSystemBrowserMgr::KAFileSystemBrowserMgr(KAFileSystemBrowserCtrl* ctrl)
    : KAProjectBrowserAbstract(ctrl)
    , m_fsCtrl(ctrl)
    , m_filter(ctrl ? dynamic_cast<KAFileSystemBrowserFilterPackage*>(ctrl->getFilter()) : nullptr)
{
    if (!m_filter)
        t_assert("m_filter", SourceFile, __LINE__, false);
}

KAFileSystemBrowserMgr::~KAFileSystemBrowserMgr()
{
    delete m_tree;
}

void KAFileSystemBrowserMgr::init()
{
    createTree();
}

void KAFileSystemBrowserMgr::createTree()
{
    delete m_tree;
    m_tree = new Node;
    m_tree->setOwnsData(true);
    m_tree->setData(new KAObject2WinComputer);
    m_tree->setExpanded(true);
    if (!m_filter)
        return;
    if (const KAObject2WinFile* forced = m_filter->rootForced()) {
        Node* node = newChild(m_tree, forced->clone());
        node->setExpanded(true);
        attach(node);
        return;
    }
    if (m_filter->contains(FsDrives)) {
        for (const QFileInfo& drive : QDir::drives())
            attach(newChild(m_tree, KAObject2WinItemFactory::createItem(drive)));
    }
    if (m_filter->contains(FsUserFolders)) {
        for (auto location : {QStandardPaths::DesktopLocation, QStandardPaths::DocumentsLocation}) {
            const QString path = QStandardPaths::writableLocation(location);
            if (!path.isEmpty() && QFileInfo(path).isDir())
                attach(newChild(m_tree, KAObject2WinItemFactory::createItem(QFileInfo(path))));
        }
    }
    if (m_filter->contains(FsAliasFolders)) {
        for (const KAAliasFolderInterface* alias : ApplicationInterface::returnMe()->aliasFolderMgr()->aliasList())
            attach(newChild(m_tree, new KAObject2AliasFolder(alias)));
    }
    for (Node* root : m_filter->customRoots()) {
        if (root) {
            Node* copy = root->copy();
            copy->attachTo(m_tree);
            copy->setOwnsData(false); // the filter's tree keeps its payloads
        }
    }
}

// A folder not listed yet carries a placeholder of its own kind; one saved
// as expanded is listed at once.
void KAFileSystemBrowserMgr::attach(Node* node, bool mayLoop)
{
    // A forced root comes expanded: it is listed at once too.
    if ((node->isExpanded() || getNodeExpandState(node)) && !(mayLoop && leadsIntoItself(node))) {
        node->setExpanded(true);
        fillAtOnce(node);
    } else {
        newChild(node, new KAObject2Fake(node->data()->type()));
    }
}

void KAFileSystemBrowserMgr::fillAtOnce(Node* node)
{
    if (m_fsCtrl)
        m_fsCtrl->fillNodeOnExpand(node);
    else
        fillNodeOnExpand(node);
}

// A symbolic link to one of its own ancestors is listed when the user asks,
// one level at a time, but never opened by itself from the saved state.
bool KAFileSystemBrowserMgr::leadsIntoItself(const Node* node) const
{
    const auto* folder = dynamic_cast<const KAObject2WinFolder*>(node->data());
    if (!folder || !folder->fileInfo().isSymLink())
        return false;
    const QString target = folder->fileInfo().canonicalFilePath();
    for (const Node* n = node->parent(); n; n = n->parent()) {
        const auto* ancestor = dynamic_cast<const KAObject2WinFolder*>(n->data());
        if (ancestor && ancestor->fileInfo().canonicalFilePath() == target)
            return true;
    }
    return false;
}

bool KAFileSystemBrowserMgr::refreshRequested(KAObjectType, const KAObject2*)
{
    return false;
}

void KAFileSystemBrowserMgr::refreshCurrentView()
{
    saveTreeState();
    createTree();
}

bool KAFileSystemBrowserMgr::fillNodeOnExpand(Node* node)
{
    // The Computer node (2557) is never listed.
    if (!node || !isListedFolder(node->data()))
        return false;
    const auto* folder = dynamic_cast<const KAObject2WinFolder*>(node->data());
    if (!folder)
        return false;
    if (node->firstChild())
        delete node->firstChild();
    const QStringList patterns = m_filter ? m_filter->extensionFilters() : QStringList();
    const bool files = m_filter && m_filter->contains(FsFiles);
    const QString path = folder->getDir().absolutePath();
    bool holdsProject = false;
    const QVector<TDirectoryListing::Entry> entries =
        TDirectoryListing::list(path, patterns, files, TechDB::TDatabase::databaseFileName(), &holdsProject);
    // Project folders are the ones the host knows: nothing inside the listed
    // folders is looked at. A project folder the host does not know yet is
    // seen when it is listed itself: the host learns it, and it shows as a
    // project from the next listing of its parent on.
    if (holdsProject)
        ProjectMgrInterface::returnMe()->discoverProject(path);
    const bool showProjects = m_filter && m_filter->contains(KAObjectTypeProject);
    // The folders are offered in one call, so that a controller may gather
    // the content of the projects among them at once.
    QList<QFileInfo> folders;
    for (const TDirectoryListing::Entry& entry : entries) {
        if (entry.isDir)
            folders.append(entry.info);
    }
    const QList<Node*> projects = m_fsCtrl && !folders.isEmpty() ? m_fsCtrl->createProjectNodes(folders)
                                                                  : QList<Node*>();
    int folderIndex = 0;
    for (const TDirectoryListing::Entry& entry : entries) {
        Node* project = entry.isDir ? projects.value(folderIndex++) : nullptr;
        if (project) {
            if (!showProjects) {
                m_fsCtrl->forgetProjectNode(project);
                continue;
            }
            project->attachTo(node);
            // Linking copies the folder's ownership flag: the project node
            // never owns the host's project object.
            project->setOwnsData(false);
            if (getNodeExpandState(project)) {
                project->setExpanded(true);
                fillAtOnce(project);
            }
            continue;
        }
        Node* child = newChild(node, KAObject2WinItemFactory::createItem(entry.info, entry.isDir, entry.name));
        if (entry.isDir)
            attach(child, entry.isSymLink);
    }
    return true;
}
