#include "kaobject2analysis.h"
#include "kaobject2deconvms.h"
#include "kaobject2fake.h"
#include "kaobject2folder.h"
#include "kaobject2identification.h"
#include "kaobject2identificationgroup.h"
#include "kaobject2peakdetect.h"
#include "kaobject2project.h"
#include "kaprojectbrowserctrl.h"
#include "kaprojectbrowserfilterpackage.h"
#include "kaprojectbrowsermgr.h"
#include "messageloggerinterface.h"
#include "projectmgrinterface.h"
#include "projecttreehelpers.h"
#include "tdatabase.h"
#include "testfixture.h"

#include <QDir>
#include <QFile>
#include <QTest>

#include <algorithm>
#include <memory>

using namespace TreeTest;

namespace {

// Sorted by address: two lists compare equal when they hold the same objects
// the same number of times.
QList<const KAObject2*> bag(QList<const KAObject2*> list)
{
    std::sort(list.begin(), list.end());
    return list;
}

bool hasIndexationBit(const KAObject2* group)
{
    return static_cast<const KAObject2IdentificationGroup*>(group)->getSource() & 0x800;
}

const QStringList BranchTags = {"KAObject2Analysis", "KAObject2GlobalIndexation", "KAObject2Well",
                                "KAObject2Identification", "KAObject2IdentificationManual"};
const QStringList DefaultFolders = {"Identifications", "Numerical arrays", "Indexations", "Analysis"};

QByteArray readBytes(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

bool writeBytes(const QString& path, const QByteArray& bytes)
{
    QFile file(path);
    return file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size();
}

// A saved project tree written by hand, as another session would have: the
// five branch elements, each entry in its own.
QByteArray savedTreeXml(const QList<SavedEntry>& entries)
{
    QByteArray xml = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<!DOCTYPE projectBrowser_tree>\n"
                     "<root version=\"1.0\" projectName=\"elsewhere\">\n";
    for (const QString& tag : BranchTags) {
        xml += " <" + tag.toUtf8() + ">\n";
        for (const SavedEntry& e : entries) {
            if (e.branch == tag)
                xml += "  <KAObject2 name=\"" + e.name.toHtmlEscaped().toUtf8() + "\" folder=\""
                    + e.folder.toHtmlEscaped().toUtf8() + "\"/>\n";
        }
        xml += " </" + tag.toUtf8() + ">\n";
    }
    return xml + "</root>\n";
}

// The entries the saved file must hold for one branch, walked as the file
// is defined: children in list order, each node before its own children,
// one entry per payload whose folder path is not empty.
void expectedEntries(const QString& tag, const Node* node, QList<SavedEntry>& out)
{
    for (const Node* child : childNodes(node)) {
        if (child->data()) {
            QString path = folderChain(child);
            if (child->data()->type() == KAObjectTypeFolder)
                path += QLatin1Char('/') + child->data()->name();
            if (!path.isEmpty())
                out.append({tag, child->data()->name(), path});
        }
        expectedEntries(tag, child, out);
    }
}

} // namespace

// The project tree built from a generated project: default folders, branch
// contents against the database, laziness, rebuilds, and the user folders
// kept in the saved project tree.
class tst_KAProjectBrowserMgr : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void cleanup();

    void defaultFoldersInChildOrder();
    void defaultFolderVisibilityFollowsFilter_data();
    void defaultFolderVisibilityFollowsFilter();
    void branchesMatchDatabase();
    void identificationExpandsLazily();
    void deconvolutionEntry_data();
    void deconvolutionEntry();
    void projectReadOnExpand_data();
    void projectReadOnExpand();
    void createTreeTwiceRemovesFirstChildOnly();
    void refreshAnalysisRebuildsItsChildrenOnly();
    void refreshFindsNewAnalysisRefusesForeignOne();
    void savedLayoutRestoredAndKeptByRefresh_data();
    void savedLayoutRestoredAndKeptByRefresh();

    void savedTreeFileFormat();
    void savedTreeWritesEmptyBranches();
    void savedTreeToleratesExtraSlashes();
    void savedTreeFromAnotherLanguage();
    void savedTreeKeepsSpecialNames();
    void unreadableSavedTreeIgnored_data();
    void unreadableSavedTreeIgnored();
    void failedSaveKeepsSavedTree_data();
    void failedSaveKeepsSavedTree();

private:
    using Layout = QList<QPair<const KAObject2*, QString>>;

    // User folders in every branch (an empty one too), with objects moved
    // into them; *placed gets the folder chain of each object moved, and of
    // an analysis left alone.
    void makeUserLayout(Layout* placed = nullptr);
    QString settingsPath() const { return QDir(m_project->folder()).filePath(QStringLiteral("Settings")); }
    QString defaultPath() const { return QDir(settingsPath()).filePath(QStringLiteral("default.projectbrowser.xml")); }
    QString sessionPath() const { return QDir(settingsPath()).filePath(QStringLiteral("session.projectbrowser.xml")); }
    void build(KAProjectBrowserFilterPackage* filter = nullptr);
    KAProjectBrowserMgr* mgr() const { return m_ctrl->mgrList().first(); }
    Node* root() const { return mgr()->getTree(); }
    Node* branch(KAObjectType key) const { return mgr()->getTree(key); }
    Node* nodeOfObject(const KAObject2* object) const { return nodeOf(root(), object); }
    TechDB::TDatabase* db() const { return m_project->db(); }
    QList<const KAObject2*> objects(KAObjectType type) const { return db()->getObjectLst(type); }

    std::unique_ptr<TestFixture> m_fixture;
    std::unique_ptr<KAProjectBrowserFilterPackage> m_filter;
    std::unique_ptr<KAProjectBrowserCtrl> m_ctrl;
    const KAObject2Project* m_project = nullptr; // not owned: the project manager's
};

void tst_KAProjectBrowserMgr::initTestCase()
{
    kaInitTestEnvironment();
}

void tst_KAProjectBrowserMgr::init()
{
    m_fixture.reset(new TestFixture);
    m_project = m_fixture->openSampleProject(QStringLiteral("Alpha"));
    QVERIFY(m_project);
    QVERIFY(m_project->db());
    m_filter.reset(new KAProjectBrowserFilterPackage);
    MessageLoggerInterface::returnMe()->clear();
}

void tst_KAProjectBrowserMgr::cleanup()
{
    m_ctrl.reset();
    m_filter.reset();
    m_fixture.reset();
    m_project = nullptr;
}

// Any manager already there goes first: it saves its layout when it goes.
void tst_KAProjectBrowserMgr::build(KAProjectBrowserFilterPackage* filter)
{
    m_ctrl.reset();
    m_ctrl.reset(new KAProjectBrowserCtrl);
    m_ctrl->init(filter ? filter : m_filter.get(), m_project, true);
    QCOMPARE(m_ctrl->mgrList().size(), 1);
    QCOMPARE(mgr()->database(), m_project->db());
}

void tst_KAProjectBrowserMgr::makeUserLayout(Layout* placed)
{
    QList<const KAObject2*> rejected;
    const QList<const KAObject2*> analyses = objects(KAObjectTypeAnalysis);
    Node* batch3 = m_ctrl->createFolder(QStringLiteral("Batch 3"), branch(KAObjectTypeAnalysis));
    QVERIFY(batch3);
    Node* rejectedFolder = m_ctrl->createFolder(QStringLiteral("Rejected"), batch3);
    QVERIFY(rejectedFolder);
    QVERIFY(m_ctrl->createFolder(QStringLiteral("Empty"), branch(KAObjectTypeAnalysis)));
    QVERIFY(m_ctrl->moveItem({analyses.at(0)}, rejectedFolder, rejected));
    QVERIFY(m_ctrl->moveItem({analyses.at(1)}, batch3, rejected));

    const KAObject2* well = objects(KAObjectTypeWell).first();
    QVERIFY(m_ctrl->moveItem({well}, m_ctrl->createFolder(QStringLiteral("Plates"), branch(KAObjectTypeWell)),
                             rejected));
    const KAObject2* indexation = objects(KAObjectTypeGlobalIndexation).first();
    const KAObject2* indexationGroup =
        payloadsOfType(branch(KAObjectTypeGlobalIndexation), KAObjectTypeIdentificationGroup).first();
    Node* kovats = m_ctrl->createFolder(QStringLiteral("Kovats"), branch(KAObjectTypeGlobalIndexation));
    QVERIFY(m_ctrl->moveItem({indexation}, kovats, rejected));
    QVERIFY(m_ctrl->moveItem({indexationGroup}, kovats, rejected));
    Node* identifications = branch(KAObjectTypeIdentifications);
    const KAObject2* group = payloadsOfType(identifications, KAObjectTypeIdentificationGroup).first();
    const KAObject2* manual = payloadsOfType(identifications, KAObjectTypePeakDetect).first();
    Node* reviewed = m_ctrl->createFolder(QStringLiteral("Reviewed"), identifications);
    QVERIFY(m_ctrl->moveItem({group, manual}, reviewed, rejected));
    QVERIFY(rejected.isEmpty());
    if (placed) {
        *placed = {{analyses.at(0), "/Analysis/Batch 3/Rejected"}, {analyses.at(1), "/Analysis/Batch 3"},
                   {analyses.at(2), "/Analysis"}, {well, "/Numerical arrays/Plates"},
                   {indexation, "/Indexations/Kovats"}, {indexationGroup, "/Indexations/Kovats"},
                   {group, "/Identifications/Reviewed"}, {manual, "/Identifications/Reviewed"}};
    }
}

void tst_KAProjectBrowserMgr::defaultFoldersInChildOrder()
{
    build();
    QCOMPARE(root()->data(), static_cast<const KAObject2*>(m_project));
    QCOMPARE(childNames(root()), DefaultFolders);
    QCOMPARE(branch(KAObjectTypeProject), root());
    QCOMPARE(m_ctrl->getTree(), root());

    // Branch key, folder kind and the kinds a folder accepts, in child order.
    const int keys[] = {277, 3, 528, 1};
    const int kinds[] = {530, 516, 528, 514};
    const QList<KAObjectType> drops[] = {{KAObjectTypeIdentificationGroup, KAObjectTypePeakDetect}, {KAObjectTypeWell},
                                         {KAObjectTypeGlobalIndexation, KAObjectTypeIdentificationGroup},
                                         {KAObjectTypeAnalysis}};
    for (int i = 0; i < 4; ++i) {
        Node* node = childNodes(root()).at(i);
        QCOMPARE(branch(KAObjectType(keys[i])), node);
        QCOMPARE(int(node->data()->type()), 260);
        const auto* folder = static_cast<const KAObject2Folder*>(node->data());
        QCOMPARE(int(folder->folderKind()), kinds[i]);
        QCOMPARE(folder->getAllowedVisualReparentType(), drops[i]);
        QVERIFY(node->isVisible());
        QCOMPARE(node->tag(), -1);
    }
}

void tst_KAProjectBrowserMgr::defaultFolderVisibilityFollowsFilter_data()
{
    QTest::addColumn<int>("removed");
    QTest::newRow("without analyses") << 1;
    QTest::newRow("without numerical arrays") << 3;
    QTest::newRow("without indexations") << 528;
    QTest::newRow("without identifications") << 277;
}

void tst_KAProjectBrowserMgr::defaultFolderVisibilityFollowsFilter()
{
    QFETCH(int, removed);
    const int keys[] = {1, 3, 528, 277};
    build();
    QHash<int, int> fullCounts;
    for (int key : keys)
        fullCounts.insert(key, branch(KAObjectType(key))->childCount());

    KAProjectBrowserFilterPackage filter;
    filter.remove(KAObjectType(removed));
    build(&filter);
    for (int key : keys) {
        Node* folder = branch(KAObjectType(key));
        QVERIFY2(folder, qPrintable(QString::number(key)));
        QCOMPARE(folder->isVisible(), key != removed);
        QVERIFY(folder->childCount() > 0);
        QCOMPARE(folder->childCount(), fullCounts.value(key)); // content built all the same
    }
    m_ctrl.reset(); // before the filter goes
}

// Every branch shows the database's objects of its kinds, each once and in
// no other branch.
void tst_KAProjectBrowserMgr::branchesMatchDatabase()
{
    build();
    const QList<const KAObject2*> analyses = objects(KAObjectTypeAnalysis);
    QVERIFY(analyses.size() >= 4);
    QCOMPARE(bag(payloadsOfType(branch(KAObjectTypeAnalysis), KAObjectTypeAnalysis)), bag(analyses));
    QCOMPARE(nodesOfType(root(), KAObjectTypeAnalysis).size(), analyses.size());
    QCOMPARE(branch(KAObjectTypeAnalysis)->childCount(), analyses.size());
    for (const KAObject2* analysis : analyses) {
        QCOMPARE(bag(payloadsOfType(nodeOfObject(analysis), KAObjectTypeSignal)),
                 bag(db()->getObjectVisualChildren(KAObjectTypeSignal, analysis)));
    }

    // Wells with their datasets; a well without datasets is hidden.
    const QList<const KAObject2*> wells = objects(KAObjectTypeWell);
    QVERIFY(wells.size() >= 2);
    QCOMPARE(bag(payloadsOfType(branch(KAObjectTypeWell), KAObjectTypeWell)), bag(wells));
    int withoutDatasets = 0;
    for (const KAObject2* well : wells) {
        Node* node = nodeOfObject(well);
        const QList<const KAObject2*> datasets = db()->getObjectVisualChildren(KAObjectTypeDataset, well);
        QCOMPARE(bag(payloadsOfType(node, KAObjectTypeDataset)), bag(datasets));
        QCOMPARE(node->isVisible(), !datasets.isEmpty());
        withoutDatasets += datasets.isEmpty();
        for (Node* dataset : nodesOfType(node, KAObjectTypeDataset))
            QVERIFY(dataset->childCount() > 0); // the sample's variables are all shown
    }
    QVERIFY2(withoutDatasets > 0, "the sample must hold a well without datasets");

    // Indexations: the global indexations and the groups marked as such.
    QList<const KAObject2*> indexationGroups;
    QList<const KAObject2*> groups;
    for (const KAObject2* group : objects(KAObjectTypeIdentificationGroup))
        (hasIndexationBit(group) ? indexationGroups : groups).append(group);
    const QList<const KAObject2*> indexations = objects(KAObjectTypeGlobalIndexation);
    QVERIFY(!indexations.isEmpty() && !indexationGroups.isEmpty() && !groups.isEmpty());
    Node* indexationBranch = branch(KAObjectTypeGlobalIndexation);
    QCOMPARE(bag(payloadsOfType(indexationBranch, KAObjectTypeGlobalIndexation)), bag(indexations));
    QCOMPARE(bag(payloadsOfType(indexationBranch, KAObjectTypeIdentificationGroup)), bag(indexationGroups));
    QCOMPARE(indexationBranch->childCount(), indexations.size() + indexationGroups.size());

    // Identifications: the other groups and the ungrouped manual peak
    // detections, the temporary ones (tempPD_) nowhere.
    QList<const KAObject2*> manual;
    int hiddenTemp = 0;
    for (const KAObject2* object : objects(KAObjectTypePeakDetect)) {
        const auto* pd = static_cast<const KAObject2PeakDetect*>(object);
        if (!(pd->getSource() & 0x200) || db()->getIdentificationGroup(pd))
            continue;
        if (pd->name().startsWith(QLatin1String("tempPD_")))
            ++hiddenTemp;
        else
            manual.append(pd);
    }
    QVERIFY2(hiddenTemp > 0, "the sample must hold an ungrouped manual tempPD_ peak detection");
    QVERIFY(!manual.isEmpty());
    Node* identifications = branch(KAObjectTypeIdentifications);
    QCOMPARE(bag(payloadsOfType(identifications, KAObjectTypeIdentificationGroup)), bag(groups));
    QCOMPARE(bag(payloadsOfType(identifications, KAObjectTypePeakDetect)), bag(manual));
    QCOMPARE(identifications->childCount(), groups.size() + manual.size());
    for (Node* node : nodesOfType(root(), KAObjectTypePeakDetect))
        QVERIFY2(!node->data()->name().startsWith(QLatin1String("tempPD_")), qPrintable(node->data()->name()));

    // Each group holds its identifications, each behind a placeholder.
    for (Node* groupNode : nodesOfType(identifications, KAObjectTypeIdentificationGroup)) {
        const auto* group = static_cast<const KAObject2IdentificationGroup*>(groupNode->data());
        const QList<const KAObject2Identification*> children = group->child();
        QList<const KAObject2*> shown = payloadsOfType(groupNode, KAObjectTypeIdentification);
        shown.removeOne(group);
        QCOMPARE(bag(shown), bag({children.begin(), children.end()}));
        for (Node* identification : childNodes(groupNode))
            QVERIFY(carriesPlaceholder(identification));
    }
}

void tst_KAProjectBrowserMgr::identificationExpandsLazily()
{
    build();
    Node* node = nullptr;
    for (Node* groupNode : nodesOfType(root(), KAObjectTypeIdentificationGroup)) {
        for (Node* c : childNodes(groupNode)) {
            if (!static_cast<const KAObject2Identification*>(c->data())->workPDList().isEmpty())
                node = c;
        }
    }
    QVERIFY(node);
    const auto* identification = static_cast<const KAObject2Identification*>(node->data());
    m_ctrl->fillNodeOnExpand(node);
    QCOMPARE(node->childCount(), identification->workPDList().size());
    for (Node* c : childNodes(node)) {
        QCOMPARE(int(c->data()->type()), int(KAObjectTypeIdentification));
        const auto* shown = static_cast<const KAObject2Identification*>(c->data());
        QCOMPARE(shown->parentGroup(), identification->parentGroup());
        QCOMPARE(shown->db(), identification->db());
        QVERIFY(c->ownsData());
    }
    // Filled once: a second expansion finds no placeholder.
    QVERIFY(!mgr()->fillNodeOnExpand(node));
    QCOMPARE(node->childCount(), identification->workPDList().size());
}

void tst_KAProjectBrowserMgr::deconvolutionEntry_data()
{
    QTest::addColumn<bool>("with293");
    QTest::newRow("filter with 293") << true;
    QTest::newRow("filter without 293") << false;
}

void tst_KAProjectBrowserMgr::deconvolutionEntry()
{
    QFETCH(bool, with293);
    if (!with293)
        m_filter->remove(KAObjectTypeDeconvMS);
    build();
    int multichannelWithFile = 0;
    int multichannelWithout = 0;
    for (const KAObject2* object : objects(KAObjectTypeAnalysis)) {
        const auto* analysis = static_cast<const KAObject2Analysis*>(object);
        const bool hasFile = QFile::exists(TechDB::TDatabase::peakDetectMSPath(analysis));
        const QList<Node*> entries = nodesOfType(nodeOfObject(analysis), KAObjectTypeDeconvMS);
        const bool expected = analysis->isMulticanal() && hasFile && with293;
        QCOMPARE(entries.size(), expected ? 1 : 0);
        if (analysis->isMulticanal())
            ++(hasFile ? multichannelWithFile : multichannelWithout);
        if (expected) {
            QCOMPARE(entries.first()->parent()->data(), object);
            QCOMPARE(static_cast<const KAObject2DeconvMS*>(entries.first()->data())->analysis(), analysis);
            QVERIFY(entries.first()->ownsData());
        }
        for (Node* signal : nodesOfType(nodeOfObject(analysis), KAObjectTypeSignal))
            QVERIFY(!signal->ownsData());
    }
    QVERIFY2(multichannelWithFile > 0 && multichannelWithout > 0,
             "the sample must hold multichannel analyses with and without an MS file");
}

void tst_KAProjectBrowserMgr::projectReadOnExpand_data()
{
    QTest::addColumn<bool>("closed");
    QTest::newRow("open project") << false;
    QTest::newRow("closed project: opened silently, for the browser") << true;
}

// A manager that does not read its project at once shows the project behind
// a placeholder and reads it on the first expansion only.
void tst_KAProjectBrowserMgr::projectReadOnExpand()
{
    QFETCH(bool, closed);
    ProjectMgrInterface* pm = ProjectMgrInterface::returnMe();
    if (closed) {
        QVERIFY(pm->closeProject(m_project));
        QVERIFY(!m_project->db());
    }
    {
        KAProjectBrowserCtrl ctrl;
        ctrl.init(m_filter.get(), m_project, false);
        KAProjectBrowserMgr* fresh = ctrl.mgrList().first();
        Node* top = fresh->getTree();
        QCOMPARE(top->data(), static_cast<const KAObject2*>(m_project));
        QVERIFY(carriesPlaceholder(top));
        QCOMPARE(int(static_cast<const KAObject2Fake*>(top->firstChild()->data())->fakeKind()), 768);
        QVERIFY(!fresh->database());

        QVERIFY(fresh->fillNodeOnExpand(top));
        QVERIFY(m_project->db());
        QCOMPARE(fresh->database(), m_project->db());
        QCOMPARE(int(m_project->db()->accessMode()),
                 int(closed ? ProjectMgrInterface::AccessModeBrowser : ProjectMgrInterface::AccessModeOpened));
        QCOMPARE(pm->currentProject() == m_project, !closed);
        QCOMPARE(childNames(top), DefaultFolders);
        QCOMPARE(nodesOfType(top, KAObjectTypeFake).size(), nodesOfType(top, KAObjectTypeIdentification).size());
        QCOMPARE(nodesOfType(top, KAObjectTypeAnalysis).size(), objects(KAObjectTypeAnalysis).size());

        QVERIFY(!fresh->fillNodeOnExpand(top));
        QCOMPARE(top->childCount(), 4);
    }
    if (closed) {
        QVERIFY(pm->closeProject(m_project));
        QVERIFY(pm->openProject(m_project));
    }
}

void tst_KAProjectBrowserMgr::createTreeTwiceRemovesFirstChildOnly()
{
    build();
    const QList<Node*> before = childNodes(root());
    QCOMPARE(before.size(), 4);
    for (int i = 1; i < 4; ++i)
        before.at(i)->setExpanded(true); // marks the old folders that must stay
    mgr()->createTree();
    const QList<Node*> after = childNodes(root());
    QCOMPARE(childNames(root()), DefaultFolders + DefaultFolders.mid(1));
    QCOMPARE(after.mid(4), before.mid(1));
    for (int i = 0; i < 7; ++i)
        QCOMPARE(after.at(i)->isExpanded(), i >= 4);
    // The branch map follows the new folders.
    QCOMPARE(branch(KAObjectTypeAnalysis), after.at(3));
    QCOMPARE(nodesOfType(after.at(3), KAObjectTypeAnalysis).size(), objects(KAObjectTypeAnalysis).size());
}

void tst_KAProjectBrowserMgr::refreshAnalysisRebuildsItsChildrenOnly()
{
    build();
    const QList<const KAObject2*> analyses = objects(KAObjectTypeAnalysis);
    Node* refreshedNode = nodeOfObject(analyses.at(0));
    Node* otherNode = nodeOfObject(analyses.at(1));
    refreshedNode->setExpanded(true);
    for (Node* c : childNodes(refreshedNode) + childNodes(otherNode))
        c->setExpanded(true);
    const QStringList refreshedNames = childNames(refreshedNode);
    const QList<Node*> otherChildren = childNodes(otherNode);

    QVERIFY(mgr()->refreshRequested(KAObjectTypeAnalysis, analyses.at(0)));
    QCOMPARE(nodeOfObject(analyses.at(0)), refreshedNode);
    QVERIFY(refreshedNode->isExpanded());
    QCOMPARE(sorted(childNames(refreshedNode)), sorted(refreshedNames));
    for (Node* c : childNodes(refreshedNode))
        QVERIFY2(!c->isExpanded(), "the analysis's children are rebuilt");
    QCOMPARE(childNodes(otherNode), otherChildren);
    for (Node* c : childNodes(otherNode))
        QVERIFY2(c->isExpanded(), "another analysis is left as it was");
    QCOMPARE(nodesOfType(root(), KAObjectTypeAnalysis).size(), analyses.size());

    // A signal routes to its analysis.
    const KAObject2* signal = db()->getObjectVisualChildren(KAObjectTypeSignal, analyses.at(1)).first();
    QVERIFY(mgr()->refreshRequested(KAObjectTypeSignal, signal));
    for (Node* c : childNodes(otherNode))
        QVERIFY(!c->isExpanded());
    QVERIFY(!mgr()->refreshRequested(KAObjectType(999), nullptr));
}

void tst_KAProjectBrowserMgr::refreshFindsNewAnalysisRefusesForeignOne()
{
    build();
    QVERIFY(db()->beginBatch());
    const qint64 id = db()->addObject(KAObjectTypeAnalysis, 0, QStringLiteral("Late analysis"));
    QVERIFY(id);
    QVERIFY(db()->addObject(KAObjectTypeSignal, id, QStringLiteral("FID 9")));
    QVERIFY(db()->commitBatch());
    const KAObject2* added = db()->objectById(id);
    QVERIFY(added);
    QVERIFY(!nodeOfObject(added));
    QVERIFY(mgr()->refreshRequested(KAObjectTypeAnalysis, added));
    Node* node = nodeOfObject(added);
    QVERIFY(node);
    QCOMPARE(node->parent(), branch(KAObjectTypeAnalysis));
    QCOMPARE(childNames(node), QStringList{"FID 9"});

    // An analysis of another project's database is refused and not shown.
    TestFixture other;
    const KAObject2Project* beta = other.openSampleProject(QStringLiteral("Beta"));
    QVERIFY(beta && beta->db());
    const KAObject2* foreign = beta->db()->getObjectLst(KAObjectTypeAnalysis).first();
    const int count = nodesOfType(root(), KAObjectTypeAnalysis).size();
    QVERIFY(!mgr()->refreshRequested(KAObjectTypeAnalysis, foreign));
    QCOMPARE(nodesOfType(root(), KAObjectTypeAnalysis).size(), count);
    QVERIFY(!nodeOfObject(foreign));

    // Without a database, nothing is refreshed.
    KAProjectBrowserCtrl unread;
    unread.init(m_filter.get(), m_project, false);
    QVERIFY(!unread.mgrList().first()->refreshRequested(KAObjectTypeAnalysis, nullptr));
}

void tst_KAProjectBrowserMgr::savedLayoutRestoredAndKeptByRefresh_data()
{
    QTest::addColumn<int>("kind");
    QTest::addColumn<QString>("object"); // which object is passed, if any
    QTest::newRow("one analysis") << 1 << "analysis";
    QTest::newRow("all analyses") << 1 << "";
    QTest::newRow("signal") << 2 << "signal";
    QTest::newRow("one well") << 3 << "well";
    QTest::newRow("all wells") << 3 << "";
    QTest::newRow("dataset") << 4 << "dataset";
    QTest::newRow("identifications") << 277 << "";
    QTest::newRow("indexations") << 528 << "";
    QTest::newRow("every analysis (769)") << 769 << "";
}

// The user folders saved when the manager goes come back with the objects
// in them, and stay when a branch is rebuilt; each object is shown once.
void tst_KAProjectBrowserMgr::savedLayoutRestoredAndKeptByRefresh()
{
    QFETCH(int, kind);
    QFETCH(QString, object);
    build();
    Layout placed;
    makeUserLayout(&placed);
    if (QTest::currentTestFailed())
        return;
    build(); // the manager before saves the layout as it goes

    for (const auto& p : placed)
        QCOMPARE(folderChain(nodeOfObject(p.first)), p.second);
    Node* batch3 = childFolder(branch(KAObjectTypeAnalysis), QStringLiteral("Batch 3"));
    Node* empty = childFolder(branch(KAObjectTypeAnalysis), QStringLiteral("Empty"));
    QVERIFY(batch3 && empty);
    QCOMPARE(empty->childCount(), 0);
    for (Node* folder : {batch3, childFolder(batch3, QStringLiteral("Rejected")), empty}) {
        const auto* payload = static_cast<const KAObject2Folder*>(folder->data());
        QCOMPARE(int(payload->folderKind()), int(KAObjectTypeUserFolder));
        QCOMPARE(payload->getAllowedVisualReparentType(), QList<KAObjectType>{KAObjectTypeAnalysis});
    }
    Node* plates = childFolder(branch(KAObjectTypeWell), QStringLiteral("Plates"));
    QCOMPARE(plates->data()->getAllowedVisualReparentType(), QList<KAObjectType>{KAObjectTypeWell});

    const KAObject2* analysis = placed.at(0).first;
    const KAObject2* well = placed.at(3).first;
    const KAObject2* passed = nullptr;
    if (object == QLatin1String("analysis"))
        passed = analysis;
    else if (object == QLatin1String("signal"))
        passed = db()->getObjectVisualChildren(KAObjectTypeSignal, analysis).first();
    else if (object == QLatin1String("well"))
        passed = well;
    else if (object == QLatin1String("dataset"))
        passed = db()->getObjectVisualChildren(KAObjectTypeDataset, well).first();
    QVERIFY(object.isEmpty() || passed);
    QVERIFY(mgr()->refreshRequested(KAObjectType(kind), passed));

    for (const auto& p : placed)
        QCOMPARE(folderChain(nodeOfObject(p.first)), p.second);
    for (qint32 type : {KAObjectTypeAnalysis, KAObjectTypeWell, KAObjectTypeGlobalIndexation,
                        KAObjectTypeIdentificationGroup, KAObjectTypeDataset, KAObjectTypeSignal})
        QCOMPARE(nodesOfType(root(), type).size(), objects(KAObjectType(type)).size());
}

// ---- saved project tree ------------------------------------------------------

void tst_KAProjectBrowserMgr::savedTreeFileFormat()
{
    build();
    makeUserLayout();
    if (QTest::currentTestFailed())
        return;
    QVERIFY(mgr()->saveTree());
    QCOMPARE(QDir::cleanPath(mgr()->savedTreePath()), QDir::cleanPath(defaultPath()));
    QVERIFY(QFile::exists(defaultPath()));
    QVERIFY(!QFile::exists(sessionPath()));

    QDomDocument doc;
    const QList<SavedEntry> entries = readSavedEntries(defaultPath(), &doc);
    QCOMPARE(doc.doctype().name(), QStringLiteral("projectBrowser_tree"));
    const QDomElement top = doc.documentElement();
    QCOMPARE(top.tagName(), QStringLiteral("root"));
    QCOMPARE(top.attribute(QStringLiteral("version")), QStringLiteral("1.0"));
    QCOMPARE(top.attribute(QStringLiteral("projectName")), db()->location());
    QStringList tags;
    for (QDomElement e = top.firstChildElement(); !e.isNull(); e = e.nextSiblingElement())
        tags.append(e.tagName());
    QCOMPARE(tags, BranchTags);

    const KAObjectType keys[] = {KAObjectTypeAnalysis, KAObjectTypeGlobalIndexation, KAObjectTypeWell,
                                 KAObjectTypeIdentifications, KAObjectTypeIdentifications};
    QList<SavedEntry> expected;
    for (int i = 0; i < 5; ++i)
        expectedEntries(BranchTags.at(i), branch(keys[i]), expected);
    QCOMPARE(entries, expected);

    const QString tag = BranchTags.first();
    const QList<SavedEntry> pinned = {
        {tag, objects(KAObjectTypeAnalysis).at(0)->name(), "/Analysis/Batch 3/Rejected"},
        {tag, objects(KAObjectTypeAnalysis).at(2)->name(), "/Analysis"},
        {tag, "Batch 3", "/Analysis/Batch 3"},
        {tag, "Rejected", "/Analysis/Batch 3/Rejected"},
        {tag, "Empty", "/Analysis/Empty"},
        {"KAObject2Well", "Plates", "/Numerical arrays/Plates"},
        // Both identification elements carry the whole identifications branch.
        {"KAObject2Identification", "Reviewed", "/Identifications/Reviewed"},
        {"KAObject2IdentificationManual", "Reviewed", "/Identifications/Reviewed"}};
    for (const SavedEntry& e : pinned)
        QVERIFY2(entries.contains(e), qPrintable(e.branch + ' ' + e.name + " in " + e.folder));
}

void tst_KAProjectBrowserMgr::savedTreeWritesEmptyBranches()
{
    m_fixture.reset();
    m_fixture.reset(new TestFixture);
    TSampleGenerator::Options options = TestFixture::smallOptions();
    options.analyses = 1;
    options.peaksPerSignal = 0;
    options.wells = 0;
    options.groups = 0;
    m_project = m_fixture->openSampleProject(QStringLiteral("Sparse"), options);
    QVERIFY(m_project);
    build();
    QVERIFY(mgr()->saveTree());
    QDomDocument doc;
    readSavedEntries(defaultPath(), &doc);
    QStringList tags;
    for (QDomElement e = doc.documentElement().firstChildElement(); !e.isNull(); e = e.nextSiblingElement()) {
        tags.append(e.tagName());
        if (e.tagName() != BranchTags.first())
            QVERIFY2(!e.hasChildNodes(), qPrintable(e.tagName()));
    }
    QCOMPARE(tags, BranchTags);
}

void tst_KAProjectBrowserMgr::savedTreeToleratesExtraSlashes()
{
    const QList<const KAObject2*> analyses = objects(KAObjectTypeAnalysis);
    const QString tag = BranchTags.first();
    QVERIFY(writeBytes(defaultPath(), savedTreeXml({{tag, analyses.at(0)->name(), "//Analysis//Batch 3///Rejected/"},
                                                    {tag, analyses.at(1)->name(), "/Analysis/Batch 3/Rejected"},
                                                    {tag, analyses.at(2)->name(), "/Analysis/Batch 3/"}})));
    build();
    QCOMPARE(nodesOfType(branch(KAObjectTypeAnalysis), KAObjectTypeFolder).size(), 3); // the branch, Batch 3, Rejected
    QCOMPARE(folderChain(nodeOfObject(analyses.at(0))), QStringLiteral("/Analysis/Batch 3/Rejected"));
    QCOMPARE(folderChain(nodeOfObject(analyses.at(1))), QStringLiteral("/Analysis/Batch 3/Rejected"));
    QCOMPARE(folderChain(nodeOfObject(analyses.at(2))), QStringLiteral("/Analysis/Batch 3"));
}

// A file written in a French session names the branch folders in French:
// the user folders come back under this session's branch folders.
void tst_KAProjectBrowserMgr::savedTreeFromAnotherLanguage()
{
    const KAObject2* analysis = objects(KAObjectTypeAnalysis).first();
    const KAObject2* well = objects(KAObjectTypeWell).first();
    const QString plates = QString::fromUtf8("/Tableaux num\xc3\xa9riques/Plaques");
    QVERIFY(writeBytes(defaultPath(), savedTreeXml({{BranchTags.first(), "Lot 7", "/Analyses/Lot 7"},
                                                    {BranchTags.first(), analysis->name(), "/Analyses/Lot 7"},
                                                    {"KAObject2Well", well->name(), plates}})));
    build();
    QCOMPARE(folderChain(nodeOfObject(analysis)), QStringLiteral("/Analysis/Lot 7"));
    QVERIFY(!childFolder(branch(KAObjectTypeAnalysis), QStringLiteral("Analyses")));
    QCOMPARE(folderChain(nodeOfObject(well)), QStringLiteral("/Numerical arrays/Plaques"));
    QCOMPARE(childNames(root()), DefaultFolders);
}

void tst_KAProjectBrowserMgr::savedTreeKeepsSpecialNames()
{
    const QList<const KAObject2*> analyses = objects(KAObjectTypeAnalysis);
    QVERIFY(db()->objectRename(analyses.at(0), QStringLiteral("Run 1/2 \"quoted\" & <tag> 'x'")));
    QVERIFY(db()->objectRename(analyses.at(1), QStringLiteral("Анализ 日本語 ελληνικά")));
    build();
    // A slash would split the folder's saved path: refused, with a message.
    MessageLoggerInterface::returnMe()->clear();
    QVERIFY(!m_ctrl->createFolder(QStringLiteral("2023/2024"), branch(KAObjectTypeAnalysis)));
    QCOMPARE(nodesOfType(branch(KAObjectTypeAnalysis), KAObjectTypeFolder).size(), 1); // the branch alone
    const QList<MessageLoggerInterface::Entry> log = MessageLoggerInterface::returnMe()->entries();
    QCOMPARE(log.size(), 1);
    QCOMPARE(int(log.first().level), int(MessageLoggerInterface::LevelError));
    QVERIFY(log.first().text.contains(QLatin1String("2023/2024")));

    const QString folderName = QStringLiteral("Lot \"A\" & <B> été 日本 'q'");
    Node* folder = m_ctrl->createFolder(folderName, branch(KAObjectTypeAnalysis));
    QVERIFY(folder);
    QCOMPARE(folder->data()->name(), folderName);
    QList<const KAObject2*> rejected;
    QVERIFY(m_ctrl->moveItem({analyses.at(0), analyses.at(1)}, folder, rejected));
    QVERIFY(mgr()->saveTree());

    build();
    Node* restored = childFolder(branch(KAObjectTypeAnalysis), folderName);
    QVERIFY(restored);
    QCOMPARE(nodeOfObject(analyses.at(0))->parent(), restored);
    QCOMPARE(nodeOfObject(analyses.at(1))->parent(), restored);
    QCOMPARE(nodesOfType(branch(KAObjectTypeAnalysis), KAObjectTypeFolder).size(), 2); // with the branch
}

void tst_KAProjectBrowserMgr::unreadableSavedTreeIgnored_data()
{
    QTest::addColumn<QByteArray>("content");
    const QByteArray valid = savedTreeXml({{BranchTags.first(), "Batch 3", "/Analysis/Batch 3"}});
    QTest::newRow("malformed") << QByteArray(valid).replace("</KAObject2Analysis>", "</KAObject2Well>");
    QTest::newRow("truncated") << valid.left(valid.indexOf("folder=") + 12);
    QTest::newRow("foreign document") << QByteArray("<?xml version=\"1.0\"?>\n<filesystemtreeconfig version=\"0.2\">"
                                                    "<KAObject2Analysis><KAObject2 name=\"Batch 3\" "
                                                    "folder=\"/Analysis/Batch 3\"/></KAObject2Analysis>"
                                                    "</filesystemtreeconfig>\n");
    QTest::newRow("empty") << QByteArray();
    QTest::newRow("binary") << QByteArray("\x00\x01\xff<root\x00", 9);
    QByteArray deep = "<root version=\"1.0\"><KAObject2Analysis>";
    for (int i = 0; i < 50000; ++i)
        deep += "<KAObject2 name=\"Batch 3\" folder=\"/Analysis/Batch 3\">";
    QTest::newRow("nested 50000 levels, unterminated") << deep;
}

void tst_KAProjectBrowserMgr::unreadableSavedTreeIgnored()
{
    QFETCH(QByteArray, content);
    QVERIFY(writeBytes(defaultPath(), content));
    build();
    QCOMPARE(nodesOfType(root(), KAObjectTypeFolder).size(), 4); // the default folders only
    QCOMPARE(branch(KAObjectTypeAnalysis)->childCount(), objects(KAObjectTypeAnalysis).size());
    QVERIFY(MessageLoggerInterface::returnMe()->entries().isEmpty());
}

void tst_KAProjectBrowserMgr::failedSaveKeepsSavedTree_data()
{
    QTest::addColumn<int>("obstacle");
    QTest::newRow("a directory stands at the session file's path") << 0;
    QTest::newRow("read-only settings folder") << 1;
    QTest::newRow("another project is current") << 2;
}

// A save that cannot or must not be written leaves the saved tree as it
// was; once the obstacle is gone, the next save goes through.
void tst_KAProjectBrowserMgr::failedSaveKeepsSavedTree()
{
    QFETCH(int, obstacle);
    build();
    QVERIFY(m_ctrl->createFolder(QStringLiteral("Batch 3"), branch(KAObjectTypeAnalysis)));
    QVERIFY(mgr()->saveTree());
    const QByteArray saved = readBytes(defaultPath());
    QVERIFY(saved.contains("/Analysis/Batch 3"));

    const QString settings = settingsPath();
    const QFile::Permissions before = QFile(settings).permissions();
    ProjectMgrInterface* pm = ProjectMgrInterface::returnMe();
    QString betaFolder;
    const KAObject2Project* beta = nullptr;
    if (obstacle == 0) {
        QVERIFY(QDir().mkpath(sessionPath()));
    } else if (obstacle == 1) {
        QVERIFY(QFile(settings).setPermissions(QFile::ReadOwner | QFile::ExeOwner | QFile::ReadGroup
                                               | QFile::ExeGroup | QFile::ReadOther | QFile::ExeOther));
        QFile probe(QDir(settings).filePath(QStringLiteral("probe")));
        if (probe.open(QIODevice::WriteOnly)) {
            probe.close();
            probe.remove();
            QFile(settings).setPermissions(before);
            QSKIP("permissions do not stop this user (root) from writing; another row covers the failed write");
        }
    } else {
        betaFolder = m_fixture->makeProject(QStringLiteral("Beta"));
        beta = pm->discoverProject(betaFolder);
        QVERIFY(beta && pm->openProject(beta));
        QCOMPARE(pm->currentProject(), beta);
    }
    QVERIFY(m_ctrl->createFolder(QStringLiteral("Later"), branch(KAObjectTypeAnalysis)));
    const bool savedAgain = mgr()->saveTree();
    QFile(settings).setPermissions(before);
    QVERIFY(!savedAgain);
    QCOMPARE(readBytes(defaultPath()), saved);
    if (obstacle == 1)
        return;
    if (obstacle == 0) {
        QVERIFY(QDir().rmdir(sessionPath()));
    } else {
        QVERIFY(!QFile::exists(QDir(betaFolder).filePath(QStringLiteral("Settings/default.projectbrowser.xml"))));
        pm->setCurrentProject(m_project);
    }
    QVERIFY(mgr()->saveTree());
    QVERIFY(readBytes(defaultPath()).contains("/Analysis/Later"));
    if (beta)
        pm->closeProject(beta);
}

QTEST_MAIN(tst_KAProjectBrowserMgr)
#include "tst_kaprojectbrowsermgr.moc"
