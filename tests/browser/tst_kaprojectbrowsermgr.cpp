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
#include <QSet>
#include <QTest>

#include <memory>

using namespace TreeTest;

namespace {

QSet<const KAObject2*> toSet(const QList<const KAObject2*>& list)
{
    return QSet<const KAObject2*>(list.begin(), list.end());
}

bool hasIndexationBit(const KAObject2* group)
{
    return static_cast<const KAObject2IdentificationGroup*>(group)->getSource() & 0x800;
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
    void analysesMatchDatabase();
    void wellsMatchDatabase();
    void indexationsMatchDatabase();
    void identificationsMatchDatabase();
    void identificationExpandsLazily();
    void deconvolutionEntry_data();
    void deconvolutionEntry();
    void projectRootExpandsLazily();
    void closedProjectOpensOnExpand();
    void createTreeTwiceRemovesFirstChildOnly();
    void refreshAnalysisRebuildsItsChildrenOnly();
    void refreshFindsNewAnalysis();
    void refreshRefusesOtherDatabase();
    void refreshKeepsSavedPlacement_data();
    void refreshKeepsSavedPlacement();

    void savedTreeRestoresUserFolders();
    void managerSavesWhenDestroyed();
    void savedTreeFileFormat();
    void savedTreeWritesEmptyBranches();
    void savedTreeToleratesExtraSlashes();
    void savedTreeFromAnotherLanguage();
    void savedTreeKeepsSpecialNames();
    void folderNameWithSlashRefused();
    void unreadableSavedTreeIgnored_data();
    void unreadableSavedTreeIgnored();
    void failedSessionWriteKeepsDefault();
    void unwritableSettingsKeepsSavedTree();
    void saveRefusedWhileAnotherProjectIsCurrent();

private:
    // User folders in every branch, with objects moved into them:
    //   Analysis/Batch 3/Rejected  <- analysis 0
    //   Analysis/Batch 3           <- analysis 1
    //   Analysis/Empty
    //   Numerical arrays/Plates    <- well 0
    //   Indexations/Kovats         <- global indexation 0
    //   Indexations/Kovats         <- the first indexation group
    //   Identifications/Reviewed   <- the first identification group and
    //                                 the first manual identification
    void makeUserLayout();
    QString defaultPath() const;
    QString sessionPath() const;
    void build(KAProjectBrowserFilterPackage* filter = nullptr);
    KAProjectBrowserMgr* mgr() const { return m_ctrl->mgrList().first(); }
    TechDB::TDatabase* db() const { return m_project->db(); }

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

void tst_KAProjectBrowserMgr::build(KAProjectBrowserFilterPackage* filter)
{
    m_ctrl.reset(new KAProjectBrowserCtrl);
    m_ctrl->init(filter ? filter : m_filter.get(), m_project, true);
    QCOMPARE(m_ctrl->mgrList().size(), 1);
    QCOMPARE(mgr()->database(), m_project->db());
}

void tst_KAProjectBrowserMgr::defaultFoldersInChildOrder()
{
    build();
    Node* root = mgr()->getTree();
    QVERIFY(root);
    QCOMPARE(root->data(), static_cast<const KAObject2*>(m_project));
    QCOMPARE(childNames(root),
             (QStringList{"Identifications", "Numerical arrays", "Indexations", "Analysis"}));

    struct Expected {
        qint32 key;
        qint32 folderKind;
        QList<KAObjectType> drops;
    };
    const Expected expected[] = {
        {277, 530, {KAObjectTypeIdentificationGroup, KAObjectTypePeakDetect}},
        {3, 516, {KAObjectTypeWell}},
        {528, 528, {KAObjectTypeGlobalIndexation, KAObjectTypeIdentificationGroup}},
        {1, 514, {KAObjectTypeAnalysis}},
    };
    const QList<Node*> folders = childNodes(root);
    for (int i = 0; i < 4; ++i) {
        Node* node = folders.at(i);
        QCOMPARE(mgr()->getTree(KAObjectType(expected[i].key)), node);
        QCOMPARE(int(node->data()->type()), 260);
        const auto* folder = static_cast<const KAObject2Folder*>(node->data());
        QCOMPARE(int(folder->folderKind()), expected[i].folderKind);
        QCOMPARE(folder->getAllowedVisualReparentType(), expected[i].drops);
        QVERIFY(node->isVisible());
        QCOMPARE(node->tag(), -1);
    }
    QCOMPARE(mgr()->getTree(KAObjectTypeProject), root);
    QCOMPARE(m_ctrl->getTree(), root);
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
    build();
    QHash<int, int> fullCounts;
    for (int key : {1, 3, 528, 277})
        fullCounts.insert(key, childNodes(mgr()->getTree(KAObjectType(key))).size());
    m_ctrl.reset();

    KAProjectBrowserFilterPackage filter;
    filter.remove(KAObjectType(removed));
    build(&filter);
    for (int key : {1, 3, 528, 277}) {
        Node* folder = mgr()->getTree(KAObjectType(key));
        QVERIFY2(folder, qPrintable(QString::number(key)));
        QCOMPARE(folder->isVisible(), key != removed);
        QCOMPARE(childNodes(folder).size(), fullCounts.value(key)); // content built all the same
        QVERIFY(childNodes(folder).size() > 0);
    }
}

void tst_KAProjectBrowserMgr::analysesMatchDatabase()
{
    build();
    Node* branch = mgr()->getTree(KAObjectTypeAnalysis);
    const QList<const KAObject2*> analyses = db()->getObjectLst(KAObjectTypeAnalysis);
    QVERIFY(analyses.size() >= 4);
    QCOMPARE(toSet(payloadsOfType(branch, KAObjectTypeAnalysis)), toSet(analyses));
    QCOMPARE(nodesOfType(branch, KAObjectTypeAnalysis).size(), analyses.size());
    QCOMPARE(childNodes(branch).size(), analyses.size());
    for (const KAObject2* analysis : analyses) {
        Node* node = nodeOf(branch, analysis);
        QCOMPARE(toSet(payloadsOfType(node, KAObjectTypeSignal)),
                 toSet(db()->getObjectVisualChildren(KAObjectTypeSignal, analysis)));
    }
    // No object of the database appears in another branch.
    QCOMPARE(nodesOfType(mgr()->getTree(), KAObjectTypeAnalysis).size(), analyses.size());
}

void tst_KAProjectBrowserMgr::wellsMatchDatabase()
{
    build();
    Node* branch = mgr()->getTree(KAObjectTypeWell);
    const QList<const KAObject2*> wells = db()->getObjectLst(KAObjectTypeWell);
    QVERIFY(wells.size() >= 2);
    QCOMPARE(toSet(payloadsOfType(branch, KAObjectTypeWell)), toSet(wells));
    QCOMPARE(nodesOfType(branch, KAObjectTypeWell).size(), wells.size());
    int withoutDatasets = 0;
    for (const KAObject2* well : wells) {
        Node* node = nodeOf(branch, well);
        const QList<const KAObject2*> datasets = db()->getObjectVisualChildren(KAObjectTypeDataset, well);
        QCOMPARE(toSet(payloadsOfType(node, KAObjectTypeDataset)), toSet(datasets));
        QCOMPARE(node->isVisible(), !datasets.isEmpty());
        if (datasets.isEmpty())
            ++withoutDatasets;
        for (Node* dataset : nodesOfType(node, KAObjectTypeDataset))
            QVERIFY(childNodes(dataset).size() > 0); // the sample's variables are all shown
    }
    QVERIFY2(withoutDatasets > 0, "the sample must hold a well without datasets");
}

void tst_KAProjectBrowserMgr::indexationsMatchDatabase()
{
    build();
    Node* branch = mgr()->getTree(KAObjectTypeGlobalIndexation);
    const QList<const KAObject2*> indexations = db()->getObjectLst(KAObjectTypeGlobalIndexation);
    QVERIFY(!indexations.isEmpty());
    QCOMPARE(toSet(payloadsOfType(branch, KAObjectTypeGlobalIndexation)), toSet(indexations));
    QList<const KAObject2*> indexationGroups;
    for (const KAObject2* group : db()->getObjectLst(KAObjectTypeIdentificationGroup)) {
        if (hasIndexationBit(group))
            indexationGroups.append(group);
    }
    QVERIFY(!indexationGroups.isEmpty());
    QCOMPARE(toSet(payloadsOfType(branch, KAObjectTypeIdentificationGroup)), toSet(indexationGroups));
    QCOMPARE(childNodes(branch).size(), indexations.size() + indexationGroups.size());
}

void tst_KAProjectBrowserMgr::identificationsMatchDatabase()
{
    build();
    Node* branch = mgr()->getTree(KAObjectTypeIdentifications);
    QList<const KAObject2*> groups;
    for (const KAObject2* group : db()->getObjectLst(KAObjectTypeIdentificationGroup)) {
        if (!hasIndexationBit(group))
            groups.append(group);
    }
    QVERIFY(!groups.isEmpty());
    QCOMPARE(toSet(payloadsOfType(branch, KAObjectTypeIdentificationGroup)), toSet(groups));

    QList<const KAObject2*> manual;
    int hiddenTemp = 0;
    for (const KAObject2* object : db()->getObjectLst(KAObjectTypePeakDetect)) {
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
    QCOMPARE(toSet(payloadsOfType(branch, KAObjectTypePeakDetect)), toSet(manual));
    QCOMPARE(childNodes(branch).size(), groups.size() + manual.size());
    for (Node* node : nodesOfType(mgr()->getTree(), KAObjectTypePeakDetect))
        QVERIFY2(!node->data()->name().startsWith(QLatin1String("tempPD_")), qPrintable(node->data()->name()));
    for (Node* node : nodesOfType(branch, KAObjectTypeIdentificationGroup))
        QVERIFY(!hasIndexationBit(node->data()));

    // Each group holds its identifications, each behind a placeholder.
    for (Node* groupNode : nodesOfType(branch, KAObjectTypeIdentificationGroup)) {
        const auto* group = static_cast<const KAObject2IdentificationGroup*>(groupNode->data());
        QList<const KAObject2*> expected;
        for (const KAObject2Identification* identification : group->child())
            expected.append(identification);
        QCOMPARE(toSet(payloadsOfType(groupNode, KAObjectTypeIdentification)) - QSet<const KAObject2*>{group},
                 toSet(expected));
        for (Node* identification : childNodes(groupNode)) {
            QCOMPARE(identification->childCount(), 1);
            QCOMPARE(int(identification->firstChild()->data()->type()), int(KAObjectTypeFake));
        }
    }
}

void tst_KAProjectBrowserMgr::identificationExpandsLazily()
{
    build();
    Node* identificationNode = nullptr;
    for (Node* groupNode : nodesOfType(mgr()->getTree(), KAObjectTypeIdentificationGroup)) {
        for (Node* c : childNodes(groupNode)) {
            if (!static_cast<const KAObject2Identification*>(c->data())->workPDList().isEmpty())
                identificationNode = c;
        }
    }
    QVERIFY(identificationNode);
    const auto* identification = static_cast<const KAObject2Identification*>(identificationNode->data());
    m_ctrl->fillNodeOnExpand(identificationNode);
    QCOMPARE(identificationNode->childCount(), identification->workPDList().size());
    for (Node* c : childNodes(identificationNode)) {
        QCOMPARE(int(c->data()->type()), int(KAObjectTypeIdentification));
        const auto* shown = static_cast<const KAObject2Identification*>(c->data());
        QCOMPARE(shown->parentGroup(), identification->parentGroup());
        QCOMPARE(shown->db(), identification->db());
        QVERIFY(c->ownsData());
    }
    // Filled once: a second expansion finds no placeholder.
    QVERIFY(!mgr()->fillNodeOnExpand(identificationNode));
    QCOMPARE(identificationNode->childCount(), identification->workPDList().size());
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
    for (const KAObject2* object : db()->getObjectLst(KAObjectTypeAnalysis)) {
        const auto* analysis = static_cast<const KAObject2Analysis*>(object);
        const bool hasFile = QFile::exists(TechDB::TDatabase::peakDetectMSPath(analysis));
        const QList<Node*> entries = nodesOfType(nodeOf(mgr()->getTree(), analysis), KAObjectTypeDeconvMS);
        const bool expected = analysis->isMulticanal() && hasFile && with293;
        QCOMPARE(entries.size(), expected ? 1 : 0);
        if (analysis->isMulticanal())
            ++(hasFile ? multichannelWithFile : multichannelWithout);
        if (expected) {
            QCOMPARE(entries.first()->parent()->data(), object);
            QCOMPARE(static_cast<const KAObject2DeconvMS*>(entries.first()->data())->analysis(), analysis);
            QVERIFY(entries.first()->ownsData());
        }
        for (Node* signal : nodesOfType(nodeOf(mgr()->getTree(), analysis), KAObjectTypeSignal))
            QVERIFY(!signal->ownsData());
    }
    QVERIFY2(multichannelWithFile > 0 && multichannelWithout > 0,
             "the sample must hold multichannel analyses with and without an MS file");
}

void tst_KAProjectBrowserMgr::projectRootExpandsLazily()
{
    KAProjectBrowserCtrl ctrl;
    ctrl.init(m_filter.get(), m_project, false);
    KAProjectBrowserMgr* fresh = ctrl.mgrList().first();
    Node* root = fresh->getTree();
    QCOMPARE(root->data(), static_cast<const KAObject2*>(m_project));
    QCOMPARE(root->childCount(), 1);
    QCOMPARE(int(root->firstChild()->data()->type()), int(KAObjectTypeFake));
    QCOMPARE(int(static_cast<const KAObject2Fake*>(root->firstChild()->data())->fakeKind()), 768);
    QVERIFY(!fresh->database());

    ctrl.fillNodeOnExpand(root);
    QCOMPARE(fresh->database(), m_project->db());
    QCOMPARE(childNames(root), (QStringList{"Identifications", "Numerical arrays", "Indexations", "Analysis"}));
    QVERIFY(nodesOfType(root, KAObjectTypeFake).size() == nodesOfType(root, KAObjectTypeIdentification).size());
    QCOMPARE(nodesOfType(root, KAObjectTypeAnalysis).size(), db()->getObjectLst(KAObjectTypeAnalysis).size());
    QCOMPARE(int(m_project->db()->accessMode()), int(ProjectMgrInterface::AccessModeOpened));

    // Read once: a second expansion does nothing.
    QVERIFY(!fresh->fillNodeOnExpand(root));
    QCOMPARE(root->childCount(), 4);
}

void tst_KAProjectBrowserMgr::closedProjectOpensOnExpand()
{
    ProjectMgrInterface* pm = ProjectMgrInterface::returnMe();
    QVERIFY(pm->closeProject(m_project));
    QVERIFY(!m_project->db());
    {
        KAProjectBrowserCtrl ctrl;
        ctrl.init(m_filter.get(), m_project, false);
        KAProjectBrowserMgr* fresh = ctrl.mgrList().first();
        QVERIFY(fresh->fillNodeOnExpand(fresh->getTree()));
        QVERIFY(m_project->db());
        QCOMPARE(fresh->database(), m_project->db());
        QCOMPARE(int(m_project->db()->accessMode()), int(ProjectMgrInterface::AccessModeBrowser));
        QVERIFY(pm->currentProject() != m_project); // opened silently, for the browser
        QCOMPARE(nodesOfType(fresh->getTree(), KAObjectTypeAnalysis).size(),
                 m_project->db()->getObjectLst(KAObjectTypeAnalysis).size());
    }
    QVERIFY(pm->closeProject(m_project));
    QVERIFY(pm->openProject(m_project));
}

void tst_KAProjectBrowserMgr::createTreeTwiceRemovesFirstChildOnly()
{
    build();
    Node* root = mgr()->getTree();
    const QList<Node*> before = childNodes(root);
    QCOMPARE(before.size(), 4);
    before.at(1)->setExpanded(true); // marks the old folders that must stay
    before.at(2)->setExpanded(true);
    before.at(3)->setExpanded(true);
    mgr()->createTree();
    const QList<Node*> after = childNodes(root);
    QCOMPARE(childNames(root), (QStringList{"Identifications", "Numerical arrays", "Indexations", "Analysis",
                                            "Numerical arrays", "Indexations", "Analysis"}));
    QCOMPARE(after.mid(4), before.mid(1));
    for (int i = 4; i < 7; ++i)
        QVERIFY(after.at(i)->isExpanded());
    for (int i = 0; i < 4; ++i)
        QVERIFY(!after.at(i)->isExpanded());
    // The branch map follows the new folders.
    QCOMPARE(mgr()->getTree(KAObjectTypeAnalysis), after.at(3));
    QCOMPARE(nodesOfType(after.at(3), KAObjectTypeAnalysis).size(), db()->getObjectLst(KAObjectTypeAnalysis).size());
}

void tst_KAProjectBrowserMgr::refreshAnalysisRebuildsItsChildrenOnly()
{
    build();
    const QList<const KAObject2*> analyses = db()->getObjectLst(KAObjectTypeAnalysis);
    const KAObject2* refreshed = analyses.at(0);
    const KAObject2* other = analyses.at(1);
    Node* refreshedNode = nodeOf(mgr()->getTree(), refreshed);
    Node* otherNode = nodeOf(mgr()->getTree(), other);
    refreshedNode->setExpanded(true);
    for (Node* c : childNodes(refreshedNode))
        c->setExpanded(true);
    for (Node* c : childNodes(otherNode))
        c->setExpanded(true);
    const QStringList refreshedNames = childNames(refreshedNode);
    const QList<Node*> otherChildren = childNodes(otherNode);

    QVERIFY(mgr()->refreshRequested(KAObjectTypeAnalysis, refreshed));
    QCOMPARE(nodeOf(mgr()->getTree(), refreshed), refreshedNode);
    QVERIFY(refreshedNode->isExpanded());
    QCOMPARE(childNames(refreshedNode).size(), refreshedNames.size());
    const QStringList rebuiltNames = childNames(refreshedNode);
    QCOMPARE(QSet<QString>(rebuiltNames.begin(), rebuiltNames.end()),
             QSet<QString>(refreshedNames.begin(), refreshedNames.end()));
    for (Node* c : childNodes(refreshedNode))
        QVERIFY2(!c->isExpanded(), "the analysis's children are rebuilt");
    QCOMPARE(childNodes(otherNode), otherChildren);
    for (Node* c : childNodes(otherNode))
        QVERIFY2(c->isExpanded(), "another analysis is left as it was");
    QCOMPARE(nodesOfType(mgr()->getTree(), KAObjectTypeAnalysis).size(), analyses.size());

    // A signal routes to its analysis.
    const KAObject2* signal = db()->getObjectVisualChildren(KAObjectTypeSignal, other).first();
    QVERIFY(mgr()->refreshRequested(KAObjectTypeSignal, signal));
    for (Node* c : childNodes(otherNode))
        QVERIFY(!c->isExpanded());
    QVERIFY(!mgr()->refreshRequested(KAObjectType(999), nullptr));
}

void tst_KAProjectBrowserMgr::refreshFindsNewAnalysis()
{
    build();
    QVERIFY(db()->beginBatch());
    const qint64 id = db()->addObject(KAObjectTypeAnalysis, 0, QStringLiteral("Late analysis"));
    QVERIFY(id);
    QVERIFY(db()->addObject(KAObjectTypeSignal, id, QStringLiteral("FID 9")));
    QVERIFY(db()->commitBatch());
    const KAObject2* added = db()->objectById(id);
    QVERIFY(added);
    QVERIFY(!nodeOf(mgr()->getTree(), added));
    QVERIFY(mgr()->refreshRequested(KAObjectTypeAnalysis, added));
    Node* node = nodeOf(mgr()->getTree(), added);
    QVERIFY(node);
    QCOMPARE(node->parent(), mgr()->getTree(KAObjectTypeAnalysis));
    QCOMPARE(childNames(node), QStringList{"FID 9"});
}

void tst_KAProjectBrowserMgr::refreshRefusesOtherDatabase()
{
    build();
    TestFixture other;
    const KAObject2Project* beta = other.openSampleProject(QStringLiteral("Beta"));
    QVERIFY(beta && beta->db());
    const KAObject2* foreign = beta->db()->getObjectLst(KAObjectTypeAnalysis).first();
    const int count = nodesOfType(mgr()->getTree(), KAObjectTypeAnalysis).size();
    QVERIFY(!mgr()->refreshRequested(KAObjectTypeAnalysis, foreign));
    QCOMPARE(nodesOfType(mgr()->getTree(), KAObjectTypeAnalysis).size(), count);
    QVERIFY(!nodeOf(mgr()->getTree(), foreign));

    // Without a database, nothing is refreshed.
    KAProjectBrowserCtrl unread;
    unread.init(m_filter.get(), m_project, false);
    QVERIFY(!unread.mgrList().first()->refreshRequested(KAObjectTypeAnalysis, nullptr));
}

void tst_KAProjectBrowserMgr::refreshKeepsSavedPlacement_data()
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

// Objects placed in user folders by the saved layout stay there when their
// branch is rebuilt, and each object is shown once.
void tst_KAProjectBrowserMgr::refreshKeepsSavedPlacement()
{
    QFETCH(int, kind);
    QFETCH(QString, object);
    build();
    makeUserLayout();
    if (QTest::currentTestFailed())
        return;
    m_ctrl.reset(); // saves the layout
    build();

    const KAObject2* analysis = db()->getObjectLst(KAObjectTypeAnalysis).at(0);
    const KAObject2* well = db()->getObjectLst(KAObjectTypeWell).first();
    QList<const KAObject2*> watched = {analysis, db()->getObjectLst(KAObjectTypeAnalysis).at(1), well,
                                       db()->getObjectLst(KAObjectTypeGlobalIndexation).first()};
    for (qint32 type : {KAObjectTypeIdentificationGroup, KAObjectTypePeakDetect}) {
        for (Node* n : nodesOfType(mgr()->getTree(), type)) {
            if (folderChain(n).count(QLatin1Char('/')) > 1)
                watched.append(n->data());
        }
    }
    QCOMPARE(watched.size(), 7);
    QHash<const KAObject2*, QString> before;
    for (const KAObject2* o : watched)
        before.insert(o, folderChain(nodeOf(mgr()->getTree(), o)));
    QCOMPARE(before.value(analysis), QStringLiteral("/Analysis/Batch 3/Rejected"));

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

    for (const KAObject2* o : watched)
        QCOMPARE(folderChain(nodeOf(mgr()->getTree(), o)), before.value(o));
    for (qint32 type : {KAObjectTypeAnalysis, KAObjectTypeWell, KAObjectTypeGlobalIndexation,
                        KAObjectTypeIdentificationGroup, KAObjectTypeDataset, KAObjectTypeSignal})
        QCOMPARE(nodesOfType(mgr()->getTree(), type).size(), db()->getObjectLst(KAObjectType(type)).size());
}

// ---- saved project tree ------------------------------------------------------

namespace {

// The entries the saved file must hold for one branch, walked as the file
// is defined: children in list order, each node before its own children,
// one entry per payload whose folder path is not empty.
void expectedEntries(const QString& tag, const Node* node, QList<SavedEntry>& out)
{
    for (int i = 0; i < node->childCount(); ++i) {
        const Node* child = node->child(i);
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

const QStringList BranchTags = {"KAObject2Analysis", "KAObject2GlobalIndexation", "KAObject2Well",
                                "KAObject2Identification", "KAObject2IdentificationManual"};

QByteArray readBytes(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

} // namespace

QString tst_KAProjectBrowserMgr::defaultPath() const
{
    return QDir(m_project->folder()).filePath(QStringLiteral("Settings/default.projectbrowser.xml"));
}

QString tst_KAProjectBrowserMgr::sessionPath() const
{
    return QDir(m_project->folder()).filePath(QStringLiteral("Settings/session.projectbrowser.xml"));
}

void tst_KAProjectBrowserMgr::makeUserLayout()
{
    Node* analyses = mgr()->getTree(KAObjectTypeAnalysis);
    Node* batch3 = m_ctrl->createFolder(QStringLiteral("Batch 3"), analyses);
    QVERIFY(batch3);
    Node* rejectedFolder = m_ctrl->createFolder(QStringLiteral("Rejected"), batch3);
    QVERIFY(rejectedFolder);
    QVERIFY(m_ctrl->createFolder(QStringLiteral("Empty"), analyses));
    QList<const KAObject2*> rejected;
    const QList<const KAObject2*> list = db()->getObjectLst(KAObjectTypeAnalysis);
    QVERIFY(m_ctrl->moveItem({list.at(0)}, rejectedFolder, rejected));
    QVERIFY(m_ctrl->moveItem({list.at(1)}, batch3, rejected));

    Node* plates = m_ctrl->createFolder(QStringLiteral("Plates"), mgr()->getTree(KAObjectTypeWell));
    QVERIFY(m_ctrl->moveItem({db()->getObjectLst(KAObjectTypeWell).first()}, plates, rejected));
    Node* kovats = m_ctrl->createFolder(QStringLiteral("Kovats"), mgr()->getTree(KAObjectTypeGlobalIndexation));
    QVERIFY(m_ctrl->moveItem({db()->getObjectLst(KAObjectTypeGlobalIndexation).first()}, kovats, rejected));
    const KAObject2* indexationGroup = payloadsOfType(mgr()->getTree(KAObjectTypeGlobalIndexation),
                                                      KAObjectTypeIdentificationGroup).first();
    QVERIFY(m_ctrl->moveItem({indexationGroup}, kovats, rejected));
    Node* reviewed = m_ctrl->createFolder(QStringLiteral("Reviewed"), mgr()->getTree(KAObjectTypeIdentifications));
    const KAObject2* group = payloadsOfType(mgr()->getTree(KAObjectTypeIdentifications),
                                            KAObjectTypeIdentificationGroup).first();
    const KAObject2* manual = payloadsOfType(mgr()->getTree(KAObjectTypeIdentifications),
                                             KAObjectTypePeakDetect).first();
    QVERIFY(m_ctrl->moveItem({group, manual}, reviewed, rejected));
    QVERIFY(rejected.isEmpty());
}

void tst_KAProjectBrowserMgr::savedTreeRestoresUserFolders()
{
    build();
    makeUserLayout();
    if (QTest::currentTestFailed())
        return;
    QVERIFY(mgr()->saveTree());
    const QList<const KAObject2*> analyses = db()->getObjectLst(KAObjectTypeAnalysis);
    const KAObject2* indexationGroup = payloadsOfType(mgr()->getTree(KAObjectTypeGlobalIndexation),
                                                      KAObjectTypeIdentificationGroup).first();
    const KAObject2* group = payloadsOfType(mgr()->getTree(KAObjectTypeIdentifications),
                                            KAObjectTypeIdentificationGroup).first();
    const KAObject2* manual = payloadsOfType(mgr()->getTree(KAObjectTypeIdentifications),
                                             KAObjectTypePeakDetect).first();
    QCOMPARE(folderChain(nodeOf(mgr()->getTree(), manual)), QStringLiteral("/Identifications/Reviewed"));
    m_ctrl.reset();

    build();
    Node* batch3 = childFolder(mgr()->getTree(KAObjectTypeAnalysis), QStringLiteral("Batch 3"));
    QVERIFY(batch3);
    Node* rejectedFolder = childFolder(batch3, QStringLiteral("Rejected"));
    QVERIFY(rejectedFolder);
    Node* empty = childFolder(mgr()->getTree(KAObjectTypeAnalysis), QStringLiteral("Empty"));
    QVERIFY(empty);
    QCOMPARE(empty->childCount(), 0);
    for (Node* folder : {batch3, rejectedFolder, empty}) {
        const auto* payload = static_cast<const KAObject2Folder*>(folder->data());
        QCOMPARE(int(payload->folderKind()), int(KAObjectTypeUserFolder));
        QCOMPARE(payload->getAllowedVisualReparentType(), QList<KAObjectType>{KAObjectTypeAnalysis});
    }
    QCOMPARE(nodeOf(mgr()->getTree(), analyses.at(0))->parent(), rejectedFolder);
    QCOMPARE(nodeOf(mgr()->getTree(), analyses.at(1))->parent(), batch3);
    QCOMPARE(nodeOf(mgr()->getTree(), analyses.at(2))->parent(), mgr()->getTree(KAObjectTypeAnalysis));
    // Each object is there once, with its content.
    QCOMPARE(nodesOfType(mgr()->getTree(), KAObjectTypeAnalysis).size(), analyses.size());
    QCOMPARE(nodesOfType(nodeOf(mgr()->getTree(), analyses.at(0)), KAObjectTypeSignal).size(),
             db()->getObjectVisualChildren(KAObjectTypeSignal, analyses.at(0)).size());

    QCOMPARE(folderChain(nodeOf(mgr()->getTree(), db()->getObjectLst(KAObjectTypeWell).first())),
             QStringLiteral("/Numerical arrays/Plates"));
    QCOMPARE(folderChain(nodeOf(mgr()->getTree(), db()->getObjectLst(KAObjectTypeGlobalIndexation).first())),
             QStringLiteral("/Indexations/Kovats"));
    QCOMPARE(folderChain(nodeOf(mgr()->getTree(), indexationGroup)), QStringLiteral("/Indexations/Kovats"));
    QCOMPARE(folderChain(nodeOf(mgr()->getTree(), group)), QStringLiteral("/Identifications/Reviewed"));
    QCOMPARE(folderChain(nodeOf(mgr()->getTree(), manual)), QStringLiteral("/Identifications/Reviewed"));
    Node* plates = childFolder(mgr()->getTree(KAObjectTypeWell), QStringLiteral("Plates"));
    QCOMPARE(plates->data()->getAllowedVisualReparentType(), QList<KAObjectType>{KAObjectTypeWell});
}

void tst_KAProjectBrowserMgr::managerSavesWhenDestroyed()
{
    build();
    QVERIFY(m_ctrl->createFolder(QStringLiteral("Kept"), mgr()->getTree(KAObjectTypeAnalysis)));
    m_ctrl.reset();
    build();
    QVERIFY(childFolder(mgr()->getTree(KAObjectTypeAnalysis), QStringLiteral("Kept")));
}

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
    const QDomElement root = doc.documentElement();
    QCOMPARE(root.tagName(), QStringLiteral("root"));
    QCOMPARE(root.attribute(QStringLiteral("version")), QStringLiteral("1.0"));
    QCOMPARE(root.attribute(QStringLiteral("projectName")), db()->location());
    QStringList tags;
    for (QDomElement e = root.firstChildElement(); !e.isNull(); e = e.nextSiblingElement())
        tags.append(e.tagName());
    QCOMPARE(tags, BranchTags);

    const KAObjectType keys[] = {KAObjectTypeAnalysis, KAObjectTypeGlobalIndexation, KAObjectTypeWell,
                                 KAObjectTypeIdentifications, KAObjectTypeIdentifications};
    QList<SavedEntry> expected;
    for (int i = 0; i < 5; ++i)
        expectedEntries(BranchTags.at(i), mgr()->getTree(keys[i]), expected);
    QCOMPARE(entries, expected);

    const QString first = db()->getObjectLst(KAObjectTypeAnalysis).at(0)->name();
    const QString third = db()->getObjectLst(KAObjectTypeAnalysis).at(2)->name();
    const QString tag = BranchTags.first();
    QVERIFY(entries.contains({tag, first, "/Analysis/Batch 3/Rejected"}));
    QVERIFY(entries.contains({tag, third, "/Analysis"}));
    QVERIFY(entries.contains({tag, "Batch 3", "/Analysis/Batch 3"}));
    QVERIFY(entries.contains({tag, "Rejected", "/Analysis/Batch 3/Rejected"}));
    QVERIFY(entries.contains({tag, "Empty", "/Analysis/Empty"}));
    QVERIFY(entries.contains({"KAObject2Well", "Plates", "/Numerical arrays/Plates"}));
    // Both identification elements carry the whole identifications branch.
    QVERIFY(entries.contains({"KAObject2Identification", "Reviewed", "/Identifications/Reviewed"}));
    QVERIFY(entries.contains({"KAObject2IdentificationManual", "Reviewed", "/Identifications/Reviewed"}));
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
    const QList<const KAObject2*> analyses = db()->getObjectLst(KAObjectTypeAnalysis);
    QFile file(defaultPath());
    QVERIFY(file.open(QIODevice::WriteOnly));
    QDomDocument doc(QStringLiteral("projectBrowser_tree"));
    QDomElement root = doc.createElement(QStringLiteral("root"));
    root.setAttribute(QStringLiteral("version"), QStringLiteral("1.0"));
    root.setAttribute(QStringLiteral("projectName"), db()->location());
    doc.appendChild(root);
    const QStringList paths = {"//Analysis//Batch 3///Rejected/", "/Analysis/Batch 3/Rejected",
                               "/Analysis/Batch 3/"};
    for (const QString& tag : BranchTags) {
        QDomElement branch = doc.createElement(tag);
        root.appendChild(branch);
        if (tag != BranchTags.first())
            continue;
        for (int i = 0; i < paths.size(); ++i) {
            QDomElement entry = doc.createElement(QStringLiteral("KAObject2"));
            entry.setAttribute(QStringLiteral("name"), analyses.at(i)->name());
            entry.setAttribute(QStringLiteral("folder"), paths.at(i));
            branch.appendChild(entry);
        }
    }
    file.write(doc.toByteArray(2));
    file.close();

    build();
    Node* branch = mgr()->getTree(KAObjectTypeAnalysis);
    QCOMPARE(nodesOfType(branch, KAObjectTypeFolder).size(), 3); // the branch, Batch 3, Rejected
    Node* batch3 = childFolder(branch, QStringLiteral("Batch 3"));
    QVERIFY(batch3);
    Node* rejectedFolder = childFolder(batch3, QStringLiteral("Rejected"));
    QVERIFY(rejectedFolder);
    QCOMPARE(nodeOf(branch, analyses.at(0))->parent(), rejectedFolder);
    QCOMPARE(nodeOf(branch, analyses.at(1))->parent(), rejectedFolder);
    QCOMPARE(nodeOf(branch, analyses.at(2))->parent(), batch3);
}

// A file written in a French session names the branch folders in French:
// the user folders come back under this session's branch folders.
void tst_KAProjectBrowserMgr::savedTreeFromAnotherLanguage()
{
    const QList<const KAObject2*> analyses = db()->getObjectLst(KAObjectTypeAnalysis);
    const QList<const KAObject2*> wells = db()->getObjectLst(KAObjectTypeWell);
    QByteArray xml = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<!DOCTYPE projectBrowser_tree>\n"
                     "<root version=\"1.0\" projectName=\"elsewhere\">\n<KAObject2Analysis>\n";
    xml += "<KAObject2 name=\"Lot 7\" folder=\"/Analyses/Lot 7\"/>\n";
    xml += "<KAObject2 name=\"" + analyses.at(0)->name().toHtmlEscaped().toUtf8() + "\" folder=\"/Analyses/Lot 7\"/>\n";
    xml += "</KAObject2Analysis>\n<KAObject2GlobalIndexation/>\n<KAObject2Well>\n";
    xml += "<KAObject2 name=\"" + wells.at(0)->name().toHtmlEscaped().toUtf8()
        + "\" folder=\"/Tableaux num\xc3\xa9riques/Plaques\"/>\n";
    xml += "</KAObject2Well>\n<KAObject2Identification/>\n<KAObject2IdentificationManual/>\n</root>\n";
    QFile file(defaultPath());
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write(xml);
    file.close();

    build();
    Node* lot = childFolder(mgr()->getTree(KAObjectTypeAnalysis), QStringLiteral("Lot 7"));
    QVERIFY(lot);
    QCOMPARE(nodeOf(mgr()->getTree(), analyses.at(0))->parent(), lot);
    QVERIFY(!childFolder(mgr()->getTree(KAObjectTypeAnalysis), QStringLiteral("Analyses")));
    Node* plates = childFolder(mgr()->getTree(KAObjectTypeWell), QStringLiteral("Plaques"));
    QVERIFY(plates);
    QCOMPARE(nodeOf(mgr()->getTree(), wells.at(0))->parent(), plates);
    QCOMPARE(childNodes(mgr()->getTree()).size(), 4);
}

void tst_KAProjectBrowserMgr::savedTreeKeepsSpecialNames()
{
    const QList<const KAObject2*> analyses = db()->getObjectLst(KAObjectTypeAnalysis);
    const QString slashName = QStringLiteral("Run 1/2 \"quoted\" & <tag> 'x'");
    const QString foreignName = QStringLiteral("Анализ 日本語 ελληνικά");
    QVERIFY(db()->objectRename(analyses.at(0), slashName));
    QVERIFY(db()->objectRename(analyses.at(1), foreignName));
    build();
    const QString folderName = QStringLiteral("Lot \"A\" & <B> été 日本 'q'");
    Node* folder = m_ctrl->createFolder(folderName, mgr()->getTree(KAObjectTypeAnalysis));
    QVERIFY(folder);
    QCOMPARE(folder->data()->name(), folderName);
    QList<const KAObject2*> rejected;
    QVERIFY(m_ctrl->moveItem({analyses.at(0), analyses.at(1)}, folder, rejected));
    QVERIFY(mgr()->saveTree());
    m_ctrl.reset();

    build();
    Node* restored = childFolder(mgr()->getTree(KAObjectTypeAnalysis), folderName);
    QVERIFY(restored);
    QCOMPARE(nodeOf(mgr()->getTree(), analyses.at(0))->parent(), restored);
    QCOMPARE(nodeOf(mgr()->getTree(), analyses.at(1))->parent(), restored);
    QCOMPARE(nodesOfType(mgr()->getTree(KAObjectTypeAnalysis), KAObjectTypeFolder).size(), 2); // with the branch
}

void tst_KAProjectBrowserMgr::folderNameWithSlashRefused()
{
    build();
    Node* analyses = mgr()->getTree(KAObjectTypeAnalysis);
    MessageLoggerInterface::returnMe()->clear();
    QVERIFY(!m_ctrl->createFolder(QStringLiteral("2023/2024"), analyses));
    QCOMPARE(nodesOfType(analyses, KAObjectTypeFolder).size(), 1); // the branch alone
    const QList<MessageLoggerInterface::Entry> log = MessageLoggerInterface::returnMe()->entries();
    QCOMPARE(log.size(), 1);
    QCOMPARE(int(log.first().level), int(MessageLoggerInterface::LevelError));
    QVERIFY(log.first().text.contains(QLatin1String("2023/2024")));
}

void tst_KAProjectBrowserMgr::unreadableSavedTreeIgnored_data()
{
    QTest::addColumn<QByteArray>("content");
    const QByteArray valid = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<!DOCTYPE projectBrowser_tree>\n"
                             "<root version=\"1.0\" projectName=\"x\">\n <KAObject2Analysis>\n"
                             "  <KAObject2 name=\"Batch 3\" folder=\"/Analysis/Batch 3\"/>\n"
                             " </KAObject2Analysis>\n</root>\n";
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
    QFile file(defaultPath());
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write(content);
    file.close();
    build();
    Node* branch = mgr()->getTree(KAObjectTypeAnalysis);
    QCOMPARE(nodesOfType(mgr()->getTree(), KAObjectTypeFolder).size(), 4); // the default folders only
    QCOMPARE(childNodes(branch).size(), db()->getObjectLst(KAObjectTypeAnalysis).size());
    QVERIFY(MessageLoggerInterface::returnMe()->entries().isEmpty());
}

void tst_KAProjectBrowserMgr::failedSessionWriteKeepsDefault()
{
    build();
    makeUserLayout();
    if (QTest::currentTestFailed())
        return;
    QVERIFY(mgr()->saveTree());
    const QByteArray saved = readBytes(defaultPath());
    QVERIFY(saved.contains("Batch 3"));

    // The "session" write fails: a directory stands at its path.
    QVERIFY(QDir().mkpath(sessionPath()));
    QVERIFY(m_ctrl->createFolder(QStringLiteral("Later"), mgr()->getTree(KAObjectTypeAnalysis)));
    QVERIFY(!mgr()->saveTree());
    QCOMPARE(readBytes(defaultPath()), saved);
    QVERIFY(QDir().rmdir(sessionPath()));

    // The next save goes through.
    QVERIFY(mgr()->saveTree());
    QVERIFY(readBytes(defaultPath()).contains("/Analysis/Later"));
}

void tst_KAProjectBrowserMgr::unwritableSettingsKeepsSavedTree()
{
    build();
    makeUserLayout();
    if (QTest::currentTestFailed())
        return;
    QVERIFY(mgr()->saveTree());
    const QByteArray saved = readBytes(defaultPath());
    const QString settings = QDir(m_project->folder()).filePath(QStringLiteral("Settings"));
    QFile::Permissions before = QFile(settings).permissions();
    QVERIFY(QFile(settings).setPermissions(QFile::ReadOwner | QFile::ExeOwner | QFile::ReadGroup
                                           | QFile::ExeGroup | QFile::ReadOther | QFile::ExeOther));
    QFile probe(QDir(settings).filePath(QStringLiteral("probe")));
    if (probe.open(QIODevice::WriteOnly)) {
        probe.close();
        probe.remove();
        QFile(settings).setPermissions(before);
        QSKIP("permissions do not stop this user (root) from writing; failedSessionWriteKeepsDefault covers "
              "the failed write");
    }
    QVERIFY(m_ctrl->createFolder(QStringLiteral("Later"), mgr()->getTree(KAObjectTypeAnalysis)));
    const bool savedAgain = mgr()->saveTree();
    QFile(settings).setPermissions(before);
    QVERIFY(!savedAgain);
    QCOMPARE(readBytes(defaultPath()), saved);
}

void tst_KAProjectBrowserMgr::saveRefusedWhileAnotherProjectIsCurrent()
{
    build();
    QVERIFY(m_ctrl->createFolder(QStringLiteral("Mine"), mgr()->getTree(KAObjectTypeAnalysis)));
    QVERIFY(mgr()->saveTree());
    const QByteArray saved = readBytes(defaultPath());

    ProjectMgrInterface* pm = ProjectMgrInterface::returnMe();
    const QString betaFolder = m_fixture->makeProject(QStringLiteral("Beta"));
    QVERIFY(!betaFolder.isEmpty());
    const KAObject2Project* beta = pm->findProject(betaFolder);
    QVERIFY(beta && pm->openProject(beta));
    QCOMPARE(pm->currentProject(), beta);
    QVERIFY(m_ctrl->createFolder(QStringLiteral("Other"), mgr()->getTree(KAObjectTypeAnalysis)));
    QVERIFY(!mgr()->saveTree());
    QCOMPARE(readBytes(defaultPath()), saved);
    QVERIFY(!QFile::exists(QDir(betaFolder).filePath(QStringLiteral("Settings/default.projectbrowser.xml"))));

    pm->setCurrentProject(m_project);
    QVERIFY(mgr()->saveTree());
    QVERIFY(readBytes(defaultPath()).contains("/Analysis/Other"));
    pm->closeProject(beta);
}

QTEST_MAIN(tst_KAProjectBrowserMgr)
#include "tst_kaprojectbrowsermgr.moc"
