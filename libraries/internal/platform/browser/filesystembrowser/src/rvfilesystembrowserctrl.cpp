#include "rvfilesystembrowserctrl.h"

#include "kafilesystembrowserfilterpackage.h"
#include "kaobject2analysis.h"
#include "kaobject2peakdetect.h"
#include "kaobject2project.h"
#include "kaobject2signal.h"
#include "kaprojectbrowserabstract.h"
#include "projectmgrinterface.h"
#include "tcompoundabstract.h"
#include "tdatabase.h"
#include "ttree.h"
#include "twaitmode.h"

#include <QFileInfo>
#include <QSet>

RVFileSystemBrowserCtrl::RVFileSystemBrowserCtrl(const QString& name)
    : KAFileSystemBrowserCtrl(name)
{
}

RVFileSystemBrowserCtrl::~RVFileSystemBrowserCtrl() = default;

void RVFileSystemBrowserCtrl::getProjectsContent(const QList<const KAObject2Project*>& projects,
                                                 AnalysisMap& analyses, PeakDetectMap& peakDetects)
{
    TWaitMode wait;
    ProjectMgrInterface* manager = ProjectMgrInterface::returnMe();
    for (const KAObject2Project* project : projects) {
        if (project && !project->db())
            manager->openProject(project, false, true);
    }
    // Membership sets beside the maps keep "unless already there" linear.
    QSet<const KAObject2PeakDetect*> listedDetections;
    QSet<const KAObject2Analysis*> listedAnalyses;
    for (const TCompoundAbstract* compound : TechDB::TDatabase::getAllCompoundinDB(projects)) {
        for (const KAObject2PeakDetect* peakDetect : compound->getPeakDetectList()) {
            if (!peakDetect || peakDetect->name().startsWith(QLatin1String("tempPD_")))
                continue;
            const KAObject2Signal* signal = peakDetect->signal();
            const KAObject2Analysis* analysis = signal ? signal->analysis() : nullptr;
            if (!analysis)
                continue;
            if (!listedDetections.contains(peakDetect)) {
                listedDetections.insert(peakDetect);
                peakDetects[analysis].append(peakDetect);
            }
            const KAObject2Project* owner = analysis->db() ? analysis->db()->project() : nullptr;
            if (owner && !listedAnalyses.contains(analysis)) {
                listedAnalyses.insert(analysis);
                analyses[owner].append(analysis);
            }
        }
    }
}

QMap<const KAObject2Project*, RVFileSystemBrowserCtrl::Node*> RVFileSystemBrowserCtrl::createTreeView(
    const QList<const KAObject2Project*>& projects, const AnalysisMap& analyses, const PeakDetectMap& peakDetects)
{
    QMap<const KAObject2Project*, Node*> trees;
    for (const KAObject2Project* project : projects) {
        const QList<const KAObject2Analysis*> list = analyses.value(project);
        if (!project || list.isEmpty() || trees.contains(project))
            continue;
        auto* root = new Node;
        root->setOwnsData(false);
        root->setData(const_cast<KAObject2Project*>(project));
        for (int a = list.size() - 1; a >= 0; --a) {
            Node* analysisNode = KAProjectBrowserAbstract::addReference(root, list.at(a));
            const QList<const KAObject2PeakDetect*> detections = peakDetects.value(list.at(a));
            for (int p = detections.size() - 1; p >= 0; --p)
                KAProjectBrowserAbstract::addReference(analysisNode, detections.at(p));
        }
        trees.insert(project, root);
    }
    return trees;
}

// Project folders become project nodes holding their content, gathered for
// the whole folder at once; a project without content is shown alone.
QList<RVFileSystemBrowserCtrl::Node*> RVFileSystemBrowserCtrl::createProjectNodes(const QList<QFileInfo>& folders)
{
    QList<const KAObject2Project*> found;
    found.reserve(folders.size());
    ProjectMgrInterface* manager = ProjectMgrInterface::returnMe();
    for (const QFileInfo& folder : folders)
        found.append(manager->findProject(folder));

    QList<const KAObject2Project*> projects;
    for (const KAObject2Project* project : qAsConst(found)) {
        if (project)
            projects.append(project);
    }
    QMap<const KAObject2Project*, Node*> trees;
    if (!projects.isEmpty()) {
        AnalysisMap analyses;
        PeakDetectMap peakDetects;
        getProjectsContent(projects, analyses, peakDetects);
        trees = createTreeView(projects, analyses, peakDetects);
    }

    QList<Node*> nodes;
    nodes.reserve(found.size());
    for (const KAObject2Project* project : qAsConst(found)) {
        if (!project) {
            nodes.append(nullptr);
            continue;
        }
        // A folder listed twice gets the content once, then bare nodes.
        Node* node = trees.take(project);
        if (!node) {
            node = new Node;
            node->setData(const_cast<KAObject2Project*>(project));
        }
        nodes.append(node);
    }
    return nodes;
}

bool RVFileSystemBrowserCtrl::fillProjectNode(Node* node)
{
    if (!node || !node->data() || node->data()->type() != KAObjectTypeProject || node->childCount() != 1
        || !KAProjectBrowserAbstract::isPlaceholder(node->firstChild()))
        return false;
    delete node->firstChild();
    const auto* project = static_cast<const KAObject2Project*>(node->data());
    AnalysisMap analyses;
    PeakDetectMap peakDetects;
    getProjectsContent({project}, analyses, peakDetects);
    const QMap<const KAObject2Project*, Node*> trees = createTreeView({project}, analyses, peakDetects);
    if (Node* content = trees.value(project)) {
        // Moved last to first: a moved node becomes the first child.
        QList<Node*> branches;
        for (Node* child = content->firstChild(); child; child = child->nextSibling())
            branches.prepend(child);
        for (Node* branch : qAsConst(branches)) {
            branch->attachTo(node);
            branch->setOwnsData(false);
        }
        delete content;
    }
    return true;
}

void RVFileSystemBrowserCtrl::foldProjectNode(Node* node)
{
    while (Node* child = node->firstChild())
        delete child;
    KAProjectBrowserAbstract::addPlaceholder(node, KAObjectTypeProject);
    refreshNode(node);
}

void RVFileSystemBrowserCtrl::fillTree(Node* node)
{
    fillProjectNode(node);
    KAFileSystemBrowserCtrl::fillTree(node);
}

void RVFileSystemBrowserCtrl::fillNodeOnExpand(Node* node)
{
    if (!fillProjectNode(node))
        KAFileSystemBrowserCtrl::fillNodeOnExpand(node);
}
