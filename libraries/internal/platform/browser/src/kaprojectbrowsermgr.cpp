#include "kaprojectbrowsermgr.h"

#include "applicationinterface.h"
#include "kaobject2analysis.h"
#include "kaobject2dataset.h"
#include "kaobject2deconvms.h"
#include "kaobject2fake.h"
#include "kaobject2folder.h"
#include "kaobject2identification.h"
#include "kaobject2identificationgroup.h"
#include "kaobject2peakdetect.h"
#include "kaobject2project.h"
#include "kaobject2signal.h"
#include "kaobject2well.h"
#include "kaprojectbrowserctrl.h"
#include "kaprojectbrowserfilterpackage.h"
#include "kaprojectbrowsertreefile.h"
#include "messageloggerinterface.h"
#include "projectmgrinterface.h"
#include "tabstractmapper.h"
#include "tapplicationdata.h"
#include "tdatabase.h"
#include "ttree.h"

#include <QDir>
#include <QFile>
#include <QSet>

using TechDB::TAbstractMapper;

namespace {
const quint16 SourceManual = 0x200;
const quint16 SourceIndexation = 0x800;
const QString TempPeakDetectPrefix = QStringLiteral("tempPD_");

// Kind of a saved branch element and the branch it is rebuilt under.
struct SavedBranch {
    KAObjectType readKind;
    KAObjectType branchKey;
};
const SavedBranch SavedBranches[] = {
    {KAObjectTypeAnalysis, KAObjectTypeAnalysis},
    {KAObjectTypeGlobalIndexation, KAObjectTypeGlobalIndexation},
    {KAObjectTypeWell, KAObjectTypeWell},
    {KAObjectTypeIdentificationGroup, KAObjectTypeIdentifications},
    {KAObjectTypePeakDetect, KAObjectTypeIdentifications},
};

// Variables shown under a dataset: named, and not internal ("_" prefix).
bool isShownVariable(const KAObject2* variable)
{
    const QString& name = variable->name();
    return !name.isEmpty() && !name.startsWith(QLatin1Char('_'));
}

KAObject2* mutableObject(const KAObject2* object)
{
    // Nodes carry non-const payloads; database objects are never modified
    // through them.
    return const_cast<KAObject2*>(object);
}
} // namespace

KAProjectBrowserMgr::KAProjectBrowserMgr(KAProjectBrowserCtrl* ctrl, const KAObject2Project* project)
    : KAProjectBrowserAbstract(ctrl)
    , m_ctrl(ctrl)
    , m_project(mutableObject(project))
{
    enableNodeIndex(true);
    Node* root = new Node;
    root->setData(m_project);
    m_trees.insert(KAObjectTypeProject, root);
    indexNode(root);
    // Until the project is read, a placeholder lets the root be expanded.
    addOwnedNode(root, new KAObject2Fake(KAObjectTypeProject));
}

KAProjectBrowserMgr::~KAProjectBrowserMgr()
{
    saveTree();
    Node* root = m_trees.value(KAObjectTypeProject);
    clearNodeIndex();
    if (root) {
        clearTreeMLObject(root);
        delete root;
    }
}

void KAProjectBrowserMgr::init()
{
    createTree();
}

KAProjectBrowserMgr::Node* KAProjectBrowserMgr::getTree() const
{
    return m_trees.value(KAObjectTypeProject);
}

KAProjectBrowserMgr::Node* KAProjectBrowserMgr::getTree(KAObjectType type) const
{
    return m_trees.value(type);
}

const KAObject2Project* KAProjectBrowserMgr::project() const
{
    return static_cast<const KAObject2Project*>(m_project);
}

bool KAProjectBrowserMgr::filterContains(KAObjectType type) const
{
    const KAProjectBrowserFilterPackage* filter = m_ctrl ? m_ctrl->getFilter() : nullptr;
    return filter && filter->contains(type);
}

KAProjectBrowserMgr::Node* KAProjectBrowserMgr::addNode(Node* parent, const KAObject2* object)
{
    Node* node = new Node(parent, -1);
    node->setData(mutableObject(object));
    indexNode(node);
    return node;
}

KAProjectBrowserMgr::Node* KAProjectBrowserMgr::addOwnedNode(Node* parent, KAObject2* object)
{
    Node* node = addNode(parent, object);
    node->setOwnsData(true);
    return node;
}

KAProjectBrowserMgr::Node* KAProjectBrowserMgr::parentOr(KAObjectType type, const QString& name,
                                                         KAObjectType branch) const
{
    Node* folder = getParent(type, name);
    return folder ? folder : m_trees.value(branch);
}

void KAProjectBrowserMgr::refreshInView(Node* node)
{
    if (m_ctrl && node)
        m_ctrl->refreshNode(node);
}

// ---- reading and building ---------------------------------------------------

bool KAProjectBrowserMgr::readProject()
{
    if (!m_project)
        return false;
    if (m_db && m_db == m_project->db())
        return true;
    m_db = m_project->db();
    if (!m_db)
        return false;
    m_pathTemplate = QDir(m_db->location()).filePath(QStringLiteral("Settings/%2.projectbrowser.xml"));
    createTree();
    // Direct: the deletion is announced before the objects are freed, and
    // the manager may have been made on a worker thread without event loop.
    connect(m_db, &TechDB::TDatabase::aboutToDeleteObjects, this,
            &KAProjectBrowserMgr::slotAboutToDeleteObjects, Qt::DirectConnection);
    return true;
}

void KAProjectBrowserMgr::createTree()
{
    Node* root = m_trees.value(KAObjectTypeProject);
    if (root && root->firstChild()) {
        destroyNode(root->firstChild());
    } else if (!root) {
        root = new Node;
        root->setData(m_project);
        m_trees.insert(KAObjectTypeProject, root);
        indexNode(root);
    }
    const KAProjectBrowserFilterPackage* filter = m_ctrl ? m_ctrl->getFilter() : nullptr;
    if (!filter)
        return;
    createDefaultFolder(filter);
    createUserFolder();
    buildWellTree();
    buildAnalysisTree();
    buildGlobalIndexationTree(m_trees.value(KAObjectTypeGlobalIndexation));
    buildAutoIdentificationTree(m_trees.value(KAObjectTypeIdentifications));
    buildManualIdentificationTree();
}

void KAProjectBrowserMgr::createDefaultFolder(const KAProjectBrowserFilterPackage* filter)
{
    if (!m_db)
        return;
    struct DefaultFolder {
        const char* english;
        const char* french;
        KAObjectType folderKind;
        QList<KAObjectType> dropKinds;
        KAObjectType key;
    };
    const DefaultFolder folders[] = {
        {"Analysis", "Analyses", KAObjectTypeAnalysisFolder, {KAObjectTypeAnalysis}, KAObjectTypeAnalysis},
        {"Indexations", "Indexations", KAObjectTypeGlobalIndexation,
         {KAObjectTypeGlobalIndexation, KAObjectTypeIdentificationGroup}, KAObjectTypeGlobalIndexation},
        {"Numerical arrays", "Tableaux numériques", KAObjectTypeNumericalArraysFolder, {KAObjectTypeWell},
         KAObjectTypeWell},
        {"Identifications", "Identifications", KAObjectTypeIdentificationsFolder,
         {KAObjectTypeIdentificationGroup, KAObjectTypePeakDetect}, KAObjectTypeIdentifications},
    };
    Node* root = m_trees.value(KAObjectTypeProject);
    for (const DefaultFolder& f : folders) {
        auto* folder = new KAObject2Folder(tr(f.english, f.french), f.folderKind);
        for (KAObjectType kind : f.dropKinds)
            folder->addAllowedVisualReparentType(kind);
        Node* node = addNode(root, folder);
        node->setVisible(filter->contains(f.key) != nullptr);
        m_trees.insert(f.key, node);
    }
}

void KAProjectBrowserMgr::buildWellTree()
{
    if (!m_db)
        return;
    for (const KAObject2* well : m_db->getObjectLst(KAObjectTypeWell))
        buildWellTree(well, parentOr(KAObjectTypeWell, well->name(), KAObjectTypeWell));
}

void KAProjectBrowserMgr::buildWellTree(const KAObject2* well, Node* parent)
{
    if (!parent)
        return;
    Node* node = addNode(parent, well);
    buildDatasetTree(well, node);
    // A well without datasets stays in the model but is not shown.
    node->setVisible(node->childCount() > 0);
}

void KAProjectBrowserMgr::buildDatasetTree(const KAObject2* well, Node* wellNode)
{
    for (const KAObject2* dataset : m_db->getObjectVisualChildren(KAObjectTypeDataset, well)) {
        Node* datasetNode = addNode(wellNode, dataset);
        for (const KAObject2* variable : TAbstractMapper::getObjectChildLst(dataset, KAObjectTypeVariable)) {
            if (isShownVariable(variable))
                addNode(datasetNode, variable);
        }
    }
}

void KAProjectBrowserMgr::buildAnalysisTree()
{
    if (!m_db)
        return;
    for (const KAObject2* analysis : m_db->getObjectLst(KAObjectTypeAnalysis))
        buildAnalysisEntry(analysis, parentOr(KAObjectTypeAnalysis, analysis->name(), KAObjectTypeAnalysis));
}

void KAProjectBrowserMgr::buildAnalysisEntry(const KAObject2* analysis, Node* parent)
{
    if (!parent)
        return;
    buildSignalTreeSon(analysis, addNode(parent, analysis));
}

void KAProjectBrowserMgr::buildSignalTreeSon(const KAObject2* object, Node* analysisNode)
{
    const auto* analysis = static_cast<const KAObject2Analysis*>(object);
    if (analysis->isMulticanal() && filterContains(KAObjectTypeDeconvMS)
        && QFile::exists(TechDB::TDatabase::peakDetectMSPath(analysis)))
        addOwnedNode(analysisNode, new KAObject2DeconvMS(analysis));
    for (const KAObject2* signal : m_db->getObjectVisualChildren(KAObjectTypeSignal, analysis))
        addNode(analysisNode, signal);
}

void KAProjectBrowserMgr::buildGlobalIndexationTree(Node* root)
{
    if (!m_db || !root)
        return;
    for (const KAObject2* indexation : m_db->getObjectLst(KAObjectTypeGlobalIndexation)) {
        Node* folder = getParent(KAObjectTypeGlobalIndexation, indexation->name());
        addNode(folder ? folder : root, indexation);
    }
    for (const KAObject2* group : m_db->getObjectLst(KAObjectTypeIdentificationGroup)) {
        if (!(static_cast<const KAObject2IdentificationGroup*>(group)->getSource() & SourceIndexation))
            continue;
        Node* folder = getParent(KAObjectTypeGlobalIndexation, group->name());
        buildAutoIdenticationNode(group, folder ? folder : root);
    }
}

void KAProjectBrowserMgr::buildAutoIdentificationTree(Node* root)
{
    if (!m_db || !root || (m_ctrl && m_ctrl->isInMultiProject()))
        return;
    for (const KAObject2* group : m_db->getObjectLst(KAObjectTypeIdentificationGroup)) {
        if (static_cast<const KAObject2IdentificationGroup*>(group)->getSource() & SourceIndexation)
            continue;
        Node* folder = getParent(KAObjectTypeIdentificationGroup, group->name());
        buildAutoIdenticationNode(group, folder ? folder : root);
    }
}

void KAProjectBrowserMgr::buildAutoIdenticationNode(const KAObject2* object, Node* parent)
{
    const auto* group = static_cast<const KAObject2IdentificationGroup*>(object);
    Node* groupNode = addNode(parent, group);
    for (const KAObject2Identification* identification : group->child()) {
        Node* node = addNode(groupNode, identification);
        addOwnedNode(node, new KAObject2Fake(KAObjectTypeSignal));
    }
}

void KAProjectBrowserMgr::buildManualIdentificationTree()
{
    if (!m_db)
        return;
    for (const KAObject2* analysis : m_db->getObjectLst(KAObjectTypeAnalysis)) {
        for (const KAObject2* signal : TAbstractMapper::getObjectChildLst(analysis, KAObjectTypeSignal)) {
            for (const KAObject2* object : TAbstractMapper::getObjectChildLst(signal, KAObjectTypePeakDetect)) {
                const auto* peakDetect = static_cast<const KAObject2PeakDetect*>(object);
                if (m_db->getIdentificationGroup(peakDetect) || !(peakDetect->getSource() & SourceManual)
                    || peakDetect->name().startsWith(TempPeakDetectPrefix))
                    continue;
                Node* parent = parentOr(KAObjectTypePeakDetect, peakDetect->name(), KAObjectTypeIdentifications);
                if (parent)
                    addNode(parent, peakDetect);
            }
        }
    }
}

// ---- user folders -------------------------------------------------------------

QString KAProjectBrowserMgr::savedTreePath() const
{
    return m_pathTemplate.isEmpty() ? QString() : m_pathTemplate.arg(QStringLiteral("default"));
}

KAProjectBrowserMgr::Node* KAProjectBrowserMgr::getParent(KAObjectType type, const QString& name) const
{
    auto kind = m_placement.constFind(type);
    return kind == m_placement.constEnd() ? nullptr : kind.value().value(name);
}

bool KAProjectBrowserMgr::createUserFolder()
{
    m_placement.clear();
    if (m_pathTemplate.isEmpty())
        return false;
    QString path = m_pathTemplate.arg(QStringLiteral("default"));
    if (!QFile::exists(path)) {
        // A layout saved under the user's and the application's names.
        const TApplicationData* data = TApplicationData::getInstance();
        const QString legacy = QStringLiteral("%1.%2").arg(data->userName(), data->applicationName());
        path = m_pathTemplate.arg(legacy);
        if (!QFile::exists(path))
            return false;
    }
    QMap<QString, KAProjectBrowserTreeFile::FolderMap> branches;
    if (!KAProjectBrowserTreeFile::read(path, &branches))
        return false;
    const bool multi = m_ctrl && m_ctrl->isInMultiProject();
    for (int i = 0; i < KAProjectBrowserTreeFile::BranchTags.size(); ++i) {
        const QString& tag = KAProjectBrowserTreeFile::BranchTags.at(i);
        if (!branches.contains(tag))
            continue;
        if (multi && SavedBranches[i].readKind == KAObjectTypeGlobalIndexation)
            continue;
        KAObject2* payload = nullptr;
        if (SavedBranches[i].branchKey == KAObjectTypeIdentifications) {
            Node* branch = m_trees.value(KAObjectTypeIdentifications);
            payload = branch ? branch->data() : nullptr;
        }
        createUserFolder(SavedBranches[i].readKind, branches.value(tag), payload);
    }
    return true;
}

// Paths start with the branch folder's displayed name, in the language of
// the session that wrote them: the first part names the branch and is
// skipped, the rest is rebuilt under this session's branch folder.
void KAProjectBrowserMgr::createUserFolder(KAObjectType type, const FolderMap& map, KAObject2* branchPayload)
{
    Q_UNUSED(branchPayload);
    KAObjectType branchKey = type;
    for (const SavedBranch& b : SavedBranches) {
        if (b.readKind == type)
            branchKey = b.branchKey;
    }
    Node* branch = m_trees.value(branchKey);
    if (!branch)
        return;
    QHash<QString, Node*>& placement = m_placement[type];
    for (auto it = map.constBegin(); it != map.constEnd(); ++it) {
        const QStringList parts = it.key().split(QLatin1Char('/'), Qt::SkipEmptyParts);
        Node* current = branch;
        for (int p = 1; p < parts.size(); ++p) {
            Node* found = nullptr;
            for (Node* child = current->firstChild(); child; child = child->nextSibling()) {
                if (child->data() && child->data()->type() == KAObjectTypeFolder
                    && child->data()->name() == parts.at(p)) {
                    found = child;
                    break;
                }
            }
            if (!found) {
                auto* folder = new KAObject2Folder(parts.at(p), KAObjectTypeUserFolder);
                if (current->data()) {
                    for (KAObjectType kind : current->data()->getAllowedVisualReparentType())
                        folder->addAllowedVisualReparentType(kind);
                }
                found = addNode(current, folder);
            }
            current = found;
        }
        if (current == branch)
            continue;
        for (const QString& name : it.value())
            placement.insert(name, current);
    }
}

bool KAProjectBrowserMgr::saveTree()
{
    if (!m_project || !m_db || m_pathTemplate.isEmpty())
        return false;
    const KAObject2Project* current = ProjectMgrInterface::returnMe()->currentProject();
    if (current && current != m_project)
        return false;
    QList<KAProjectBrowserTreeFile::Branch> branches;
    const KAObjectType keys[] = {KAObjectTypeAnalysis, KAObjectTypeGlobalIndexation, KAObjectTypeWell,
                                 KAObjectTypeIdentifications, KAObjectTypeIdentifications};
    for (int i = 0; i < KAProjectBrowserTreeFile::BranchTags.size(); ++i)
        branches.append({KAProjectBrowserTreeFile::BranchTags.at(i), m_trees.value(keys[i])});
    QDir().mkpath(QDir(m_db->location()).filePath(QStringLiteral("Settings")));
    return KAProjectBrowserTreeFile::write(m_pathTemplate, m_db->location(), branches);
}

// ---- lazy expansion -------------------------------------------------------------

bool KAProjectBrowserMgr::fillNodeOnExpand(Node* node)
{
    if (!node || !node->data())
        return false;
    switch (node->data()->type()) {
    case KAObjectTypeIdentification:
        return expandIdentification(node);
    case KAObjectTypeProject:
        return expandProject(node);
    default:
        return false;
    }
}

bool KAProjectBrowserMgr::expandProject(Node* node)
{
    if (m_db || node->data() != m_project)
        return false;
    if (node->firstChild())
        destroyNode(node->firstChild());
    TechDB::TDatabase* db = m_project->db();
    if (db && db->accessMode() == ProjectMgrInterface::AccessModeOpened)
        return readProject();
    if (!ProjectMgrInterface::returnMe()->openProject(project(), false, true))
        return false;
    if (m_project->db())
        m_project->db()->setAccessMode(ProjectMgrInterface::AccessModeBrowser);
    return readProject();
}

bool KAProjectBrowserMgr::expandIdentification(Node* node)
{
    Node* placeholder = node->firstChild();
    if (!placeholder || !placeholder->data() || placeholder->data()->type() != KAObjectTypeFake)
        return false;
    destroyNode(placeholder);
    const auto* identification = static_cast<const KAObject2Identification*>(node->data());
    for (const KAObject2PeakDetect* peakDetect : identification->workPDList()) {
        auto* shown = new KAObject2Identification(peakDetect->name());
        shown->setParentGroup(identification->parentGroup());
        shown->dbChange(identification->db());
        shown->addWorkPD(peakDetect);
        addOwnedNode(node, shown);
    }
    return true;
}

// ---- refresh ----------------------------------------------------------------------

bool KAProjectBrowserMgr::refreshRequested(KAObjectType type, const KAObject2* object)
{
    if (!m_db || (object && object->db() != m_db))
        return false;
    switch (type) {
    case KAObjectTypeAnalysis:
        object ? updateAnalysis(object) : updateAnalysis();
        return true;
    case KAObjectTypeSignal:
        if (object && object->type() == KAObjectTypeSignal)
            updateAnalysis(static_cast<const KAObject2Signal*>(object)->analysis());
        else
            updateAnalysis();
        return true;
    case KAObjectTypeWell:
        object ? updateWell(object) : updateWells();
        return true;
    case KAObjectTypeDataset:
        updateDataset(object);
        return true;
    case KAObjectTypeIdentifications:
        updateIdentification();
        return true;
    case KAObjectTypeGlobalIndexation:
        updateIndexation();
        return true;
    case KAObjectTypeRefreshAllAnalyses:
        updateAnalysis();
        return true;
    default:
        return false;
    }
}

void KAProjectBrowserMgr::updateAnalysis(const KAObject2* object)
{
    if (!m_db || !object)
        return;
    const KAObject2* analysis = object;
    if (object->type() == KAObjectTypeSignal)
        analysis = static_cast<const KAObject2Signal*>(object)->analysis();
    if (!analysis || analysis->type() != KAObjectTypeAnalysis)
        return;
    Node* branch = m_trees.value(KAObjectTypeAnalysis);
    if (!branch)
        return;
    Node* node = findObjectInTree(analysis, branch);
    if (node) {
        while (node->firstChild())
            destroyNode(node->firstChild());
        buildSignalTreeSon(analysis, node);
        refreshInView(node);
    } else {
        buildAnalysisEntry(analysis, branch);
        refreshInView(branch);
    }
}

void KAProjectBrowserMgr::updateAnalysis()
{
    if (!m_db)
        return;
    for (const KAObject2* analysis : m_db->getObjectLst(KAObjectTypeAnalysis))
        updateAnalysis(analysis);
}

void KAProjectBrowserMgr::updateGeneric(KAObjectType type, Node* tree)
{
    if (!m_db || !tree)
        return;
    for (const KAObject2* object : m_db->getObjectLst(type)) {
        if (!findObjectInTree(object, tree))
            addNode(tree, object);
    }
}

void KAProjectBrowserMgr::updateWell(const KAObject2* well)
{
    Node* branch = m_trees.value(KAObjectTypeWell);
    if (!m_db || !well || !branch)
        return;
    Node* node = findObjectInTree(well, branch);
    if (node) {
        Node* parent = node->parent();
        destroyNode(node);
        buildWellTree(well, parent);
        refreshInView(parent);
    } else {
        buildWellTree(well, branch);
        refreshInView(branch);
    }
}

void KAProjectBrowserMgr::updateWells()
{
    if (!m_db)
        return;
    for (const KAObject2* well : m_db->getObjectLst(KAObjectTypeWell))
        updateWell(well);
}

void KAProjectBrowserMgr::updateDataset(const KAObject2* dataset)
{
    if (!m_db || !dataset || dataset->type() != KAObjectTypeDataset)
        return;
    const KAObject2* well = static_cast<const KAObject2Dataset*>(dataset)->well();
    Node* branch = m_trees.value(KAObjectTypeWell);
    if (!well || !branch)
        return;
    Node* node = findObjectInTree(well, branch);
    if (!node) {
        updateWell(well);
        return;
    }
    while (node->firstChild())
        destroyNode(node->firstChild());
    buildDatasetTree(well, node);
    refreshInView(node);
}

void KAProjectBrowserMgr::clearNodeWithType(Node* root, KAObjectType type)
{
    if (!root)
        return;
    Node* child = root->firstChild();
    while (child) {
        Node* next = child->nextSibling();
        if (child->data() && child->data()->type() == type)
            destroyNode(child);
        else
            clearNodeWithType(child, type);
        child = next;
    }
}

void KAProjectBrowserMgr::updateIndexation()
{
    Node* root = m_trees.value(KAObjectTypeGlobalIndexation);
    if (!m_db || !root)
        return;
    clearNodeWithType(root, KAObjectTypeGlobalIndexation);
    clearNodeWithType(root, KAObjectTypeIdentificationGroup);
    clearNodeWithType(root, KAObjectTypePeakDetect);
    buildGlobalIndexationTree(root);
    refreshInView(root);
}

void KAProjectBrowserMgr::updateIdentification()
{
    Node* root = m_trees.value(KAObjectTypeIdentifications);
    if (!m_db || !root)
        return;
    clearNodeWithType(root, KAObjectTypeIdentificationGroup);
    clearNodeWithType(root, KAObjectTypePeakDetect);
    buildAutoIdentificationTree(root);
    buildManualIdentificationTree();
    refreshInView(root);
}

void KAProjectBrowserMgr::refreshCurrentView()
{
    if (!m_db)
        return;
    saveTree();
    removeBranches();
    createTree();
}

void KAProjectBrowserMgr::removeBranches()
{
    Node* root = m_trees.value(KAObjectTypeProject);
    if (!root)
        return;
    while (root->firstChild())
        destroyNode(root->firstChild());
    for (auto it = m_trees.begin(); it != m_trees.end();) {
        if (it.key() == KAObjectTypeProject)
            ++it;
        else
            it = m_trees.erase(it);
    }
    m_placement.clear();
}

void KAProjectBrowserMgr::clearTreeMLObject(Node* node)
{
    clearBrowserPayloads(node);
}

void KAProjectBrowserMgr::clearAll()
{
    removeBranches();
}

void KAProjectBrowserMgr::projectClosed()
{
    saveTree();
    removeBranches();
    if (m_db)
        disconnect(m_db, nullptr, this, nullptr);
    m_db = nullptr;
}

void KAProjectBrowserMgr::viewFiltered(KAObjectType type)
{
    if (!m_ctrl)
        return;
    Node* tree = type == KAObjectTypeProject ? getTree() : m_trees.value(type);
    if (tree)
        m_ctrl->fillTree(tree);
}

void KAProjectBrowserMgr::setDefaultView()
{
    if (m_ctrl && getTree()) {
        m_ctrl->clearEditor();
        m_ctrl->fillTree(getTree());
    }
    saveTree();
}

void KAProjectBrowserMgr::slotAboutToDeleteObjects(QList<const KAObject2*>* objects)
{
    Node* root = getTree();
    if (!objects || !root)
        return;
    for (const KAObject2* object : *objects) {
        while (Node* node = findObjectInTree(object, root)) {
            if (node == root)
                break;
            if (m_ctrl)
                m_ctrl->deleteNode(node);
            destroyNode(node);
        }
    }
}

// ---- editing ------------------------------------------------------------------------

KAProjectBrowserMgr::Node* KAProjectBrowserMgr::createFolder(const QString& name, Node* parent)
{
    return KAProjectBrowserAbstract::createFolder(name, parent);
}

bool KAProjectBrowserMgr::renameObject(Node* node, QString& name)
{
    if (KAProjectBrowserAbstract::renameObject(node, name)) {
        saveTree();
        return true;
    }
    if (!node || !node->data() || !m_db)
        return false;
    if (node->data()->type() == KAObjectTypeFolder) {
        if (name.contains(QLatin1Char('/')))
            return false; // refused, with its message, by the base rule
        saveTree();
        return true;
    }
    // Objects of the plug-ins (saved searches, ...) are theirs to rename.
    if (node->data()->db() != m_db || inCompoundBranch(node))
        return false;
    if (!m_db->objectRename(node->data(), name))
        return false;
    saveTree();
    return true;
}

// Placements that point into a deleted user folder are dropped: the
// objects recorded there come back directly in their branch.
void KAProjectBrowserMgr::forgetPlacementsUnder(Node* node)
{
    QSet<Node*> gone;
    QList<Node*> pending{node};
    while (!pending.isEmpty()) {
        Node* n = pending.takeLast();
        gone.insert(n);
        for (Node* c = n->firstChild(); c; c = c->nextSibling())
            pending.append(c);
    }
    for (auto kind = m_placement.begin(); kind != m_placement.end(); ++kind) {
        for (auto it = kind.value().begin(); it != kind.value().end();) {
            if (gone.contains(it.value()))
                it = kind.value().erase(it);
            else
                ++it;
        }
    }
}

bool KAProjectBrowserMgr::deleteObject(Node* node, bool flag)
{
    const bool userFolder = node && node->data() && node->data()->type() == KAObjectTypeFolder
        && static_cast<const KAObject2Folder*>(node->data())->folderKind() == KAObjectTypeUserFolder;
    if (userFolder) {
        forgetPlacementsUnder(node);
        // The objects the folder held stay in the tree: they go back to the
        // folder's parent instead of vanishing with the folder's node.
        Node* parent = node->parent();
        QList<Node*> objects;
        QList<Node*> pending{node};
        while (!pending.isEmpty()) {
            Node* n = pending.takeLast();
            for (Node* c = n->firstChild(); c; c = c->nextSibling()) {
                if (c->data() && c->data()->type() == KAObjectTypeFolder)
                    pending.append(c);
                else if (c->data() && c->data()->db())
                    objects.append(c);
            }
        }
        if (parent) {
            for (Node* object : qAsConst(objects))
                object->attachTo(parent);
        }
        const bool deleted = KAProjectBrowserAbstract::deleteObject(node, flag);
        if (deleted && parent && !objects.isEmpty())
            refreshInView(parent);
        return deleted;
    }
    if (KAProjectBrowserAbstract::deleteObject(node, flag))
        return true;
    if (!node || !node->data() || !m_db)
        return false;
    const KAObjectType type = node->data()->type();
    if (type == KAObjectTypeFolder || type == KAObjectTypeExternalFolders || type == KAObjectTypeExternalFile)
        return false;
    // Under a compound, a detection is an entry of the compound's list: the
    // compound lists' plug-in takes it out of the list, never out of the
    // project.
    if (node->data()->db() != m_db || inCompoundBranch(node))
        return false;
    return m_db->deleteObject(node->data(), flag);
}

bool KAProjectBrowserMgr::inCompoundBranch(const Node* node)
{
    for (const Node* n = node; n; n = n->parent()) {
        if (n->data() && n->data()->type() == KAObjectTypeCompoundBranch)
            return true;
    }
    return false;
}

namespace {
bool sameAllowedKinds(const KAObject2* a, const KAObject2* b)
{
    return a == b || a->getAllowedVisualReparentType() == b->getAllowedVisualReparentType();
}

QString notAllowedInto(const KAObject2* object)
{
    return KAProjectBrowserMgr::tr("The move of <b>%1</b> is not allowed into this folder",
                                   "Le déplacement de <b>%1</b> n'est pas autorisé dans ce dossier")
        .arg(object->name().toHtmlEscaped());
}
} // namespace

bool KAProjectBrowserMgr::moveItem(const QList<const KAObject2*>& objects, Node* target,
                                   QList<const KAObject2*>& rejected)
{
    if (!target || objects.isEmpty())
        return false;
    if (!target->data() || target->data()->isReadOnly()) {
        MessageLoggerInterface::Error(tr("This move is not allowed", "Ce déplacement n'est pas autorisé"));
        return false;
    }
    const QList<KAObjectType> allowed = target->data()->getAllowedVisualReparentType();
    Node* projectTree = getTree();
    QList<Node*> toMove;
    for (const KAObject2* object : objects) {
        if (!object)
            continue;
        switch (object->type()) {
        case KAObjectTypeAnalysis:
        case KAObjectTypeWell:
        case KAObjectTypeGlobalIndexation:
        case KAObjectTypeIdentificationGroup:
        case KAObjectTypePeakDetect:
            if (!allowed.contains(object->type())) {
                MessageLoggerInterface::Error(notAllowedInto(object));
                rejected.append(object);
            } else if (Node* node = findObjectInTree(object, projectTree)) {
                toMove.append(node);
            }
            break;
        case KAObjectTypeDataset:
            if (allowed.contains(KAObjectTypeDataset)) {
                Node* node = findObjectInTree(object, m_trees.value(KAObjectTypeWell));
                if (!node)
                    node = findObjectInTree(object, m_trees.value(KAObjectTypeAnalysis));
                if (node)
                    reparentItem(node, target);
            }
            break;
        case KAObjectTypeFolder: {
            if (!sameAllowedKinds(object, target->data())) {
                MessageLoggerInterface::Error(notAllowedInto(object));
                rejected.append(object);
                break;
            }
            Node* node = findObjectInTree(object, projectTree);
            if (!node)
                break;
            if (findInTree(KAObjectTypeFolder, object->name(), target)) {
                MessageLoggerInterface::Error(
                    tr("A folder with that name already exists", "Un dossier portant ce nom existe déjà"));
                rejected.append(object);
            } else {
                toMove.append(node);
            }
            break;
        }
        default:
            break;
        }
    }
    if (toMove.isEmpty())
        return false;
    for (Node* node : qAsConst(toMove)) {
        if (!moveIsAllowed(node, target))
            continue;
        node->attachTo(target);
        const KAObject2* object = node->data();
        auto kind = m_placement.find(object->type());
        if (kind != m_placement.end() && kind.value().contains(object->name()))
            kind.value()[object->name()] = target;
    }
    saveTree();
    return true;
}

bool KAProjectBrowserMgr::reparentItem(Node* node, Node* newParent)
{
    if (!node || !newParent || !moveIsAllowed(node, newParent) || !node->data() || !newParent->data())
        return false;
    const KAObject2* object = node->data();
    const KAObject2* parent = newParent->data();
    if (TechDB::TDatabase* db = object->db()) {
        db->objectPropertiesAdd(object, TProperty(QStringLiteral("parent"), QString::number(parent->type()),
                                                  QString(), QString()));
        db->objectPropertiesAdd(object, TProperty(QStringLiteral("parentID"), parent->name(), QString(), QString()));
    }
    ApplicationInterface* app = ApplicationInterface::returnMe();
    const Node* oldParent = node->parent();
    if (oldParent && oldParent->data() && oldParent->data()->type() == KAObjectTypeAnalysis)
        app->objectChanged(oldParent->data());
    app->objectChanged(object);
    app->objectChanged(parent);
    MessageLoggerInterface::Information(
        tr("Object %1 was successfully associated to object %2", "L'objet %1 a été associé avec succès à l'objet %2")
            .arg(object->name().toHtmlEscaped(), parent->name().toHtmlEscaped()));
    return true;
}
