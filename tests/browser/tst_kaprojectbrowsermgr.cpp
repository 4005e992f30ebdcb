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

private:
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

QTEST_MAIN(tst_KAProjectBrowserMgr)
#include "tst_kaprojectbrowsermgr.moc"
