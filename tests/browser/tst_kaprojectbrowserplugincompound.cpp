#include "kaobject2analysis.h"
#include "kaobject2peakdetect.h"
#include "kaobject2project.h"
#include "kaobject2signal.h"
#include "kaprojectbrowserctrl.h"
#include "kaprojectbrowserfilterpackage.h"
#include "kaprojectbrowserplugincompound.h"
#include "kaprojectbrowsertreewidget.h"
#include "katreewidgetitem.h"
#include "projectmgrinterface.h"
#include "projecttreehelpers.h"
#include "tcompoundabstract.h"
#include "tdatabase.h"
#include "testfixture.h"
#include "ttree.h"

#include <QTest>

#include <memory>

namespace {

using Node = TTree<KAObject2*>;
using TreeTest::childNames;
using TreeTest::childNamed;

QStringList namesOf(const QVector<KAObject2*>& objects)
{
    QStringList names;
    for (const KAObject2* o : objects)
        names.append(o->name());
    return names;
}

// The detections a compound shows: resolved, each once, in order.
QStringList detectionNames(const TCompoundAbstract* compound)
{
    QStringList names;
    for (const KAObject2PeakDetect* pd : compound->getPeakDetectList()) {
        if (pd && !names.contains(pd->name()))
            names.append(pd->name());
    }
    return names;
}

} // namespace

// The compound lists' branch of the project explorer, on a generated
// project: built from the database, expanded lazily, edited through the
// database, and following its changes.
class tst_KAProjectBrowserPluginCompound : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void cleanup();

    void branchListsTheDatabaseCompoundLists();
    void compoundExpandsIntoItsDetections();
    void branchFollowsChangesOfCompounds();
    void deletingDetectionTakesItOutOfTheCompoundOnly();
    void deletingCompoundDeletesItFromTheDatabase();
    void renameGoesToTheDatabase();
    void detectionDeletedElsewhereLeavesTheBranch();

private:
    Node* firstList() const { return m_plugin->getTree()->firstChild(); }
    Node* expandedCompound(const QString& name);
    void settle() { QCoreApplication::processEvents(); }
    KATreeWidgetItem* branchItem() const;
    // Opens the branch in the view down to the detections, as a user would.
    void showBranch();

    std::unique_ptr<TestFixture> m_fixture;
    std::unique_ptr<KAProjectBrowserFilterPackage> m_filter;
    std::unique_ptr<KAProjectBrowserCtrl> m_ctrl;
    KAProjectBrowserPluginCompound* m_plugin = nullptr; // owned by m_ctrl
    TechDB::TDatabase* m_db = nullptr;
};

void tst_KAProjectBrowserPluginCompound::initTestCase()
{
    kaInitTestEnvironment();
}

void tst_KAProjectBrowserPluginCompound::init()
{
    m_fixture.reset(new TestFixture);
    m_filter.reset(new KAProjectBrowserFilterPackage);
    m_ctrl.reset(new KAProjectBrowserCtrl);
    m_ctrl->init(false, m_filter.get());
    m_plugin = new KAProjectBrowserPluginCompound(m_ctrl.get());
    m_ctrl->addPlugin(m_plugin, m_plugin->itemCreator());
    const KAObject2Project* project = m_fixture->openSampleProject(QStringLiteral("Compounds"));
    QVERIFY(project && project->db());
    m_db = project->db();
    QCOMPARE(m_plugin->database(), m_db);
    QVERIFY(m_plugin->getTree());
}

void tst_KAProjectBrowserPluginCompound::cleanup()
{
    m_ctrl.reset();
    m_plugin = nullptr;
    m_filter.reset();
    m_fixture.reset();
}

// The view's item for the branch, found among the top-level items.
KATreeWidgetItem* tst_KAProjectBrowserPluginCompound::branchItem() const
{
    QTreeWidget* view = m_ctrl->treeWidget();
    for (int i = 0; i < view->topLevelItemCount(); ++i) {
        auto* item = dynamic_cast<KATreeWidgetItem*>(view->topLevelItem(i));
        if (item && item->node() == m_plugin->getTree())
            return item;
    }
    return nullptr;
}

void tst_KAProjectBrowserPluginCompound::showBranch()
{
    QList<QTreeWidgetItem*> level{branchItem()};
    for (int depth = 0; depth < 3; ++depth) {
        QList<QTreeWidgetItem*> next;
        for (QTreeWidgetItem* item : qAsConst(level)) {
            item->setExpanded(true);
            for (int i = 0; i < item->childCount(); ++i)
                next.append(item->child(i));
        }
        level = next;
    }
}

Node* tst_KAProjectBrowserPluginCompound::expandedCompound(const QString& name)
{
    Node* node = childNamed(firstList(), name);
    if (node)
        m_ctrl->fillNodeOnExpand(node);
    return node;
}

void tst_KAProjectBrowserPluginCompound::branchListsTheDatabaseCompoundLists()
{
    const Node* root = m_plugin->getTree();
    QCOMPARE(root->data()->type(), KAObjectTypeCompoundBranch);
    QCOMPARE(root->data()->name(), QStringLiteral("Compound lists"));
    const QList<const KAObject2*> lists = m_db->getObjectLst(KAObjectTypeCompoundList);
    QCOMPARE(lists.size(), 2);
    QCOMPARE(childNames(root), QStringList({lists.at(0)->name(), lists.at(1)->name()}));
    QCOMPARE(childNames(firstList()), namesOf(lists.at(0)->children()));
    // The branch is shown after the project, with its own item.
    KATreeWidgetItem* item = branchItem();
    QVERIFY(item);
    QCOMPARE(item->text(0), QStringLiteral("Compound lists"));
}

void tst_KAProjectBrowserPluginCompound::compoundExpandsIntoItsDetections()
{
    const KAObject2* first = m_db->getObjectLst(KAObjectTypeCompound).first();
    Node* node = childNamed(firstList(), first->name());
    QVERIFY(node);
    QCOMPARE(node->childCount(), 1);
    QCOMPARE(node->firstChild()->data()->type(), KAObjectTypeFake);
    m_ctrl->fillNodeOnExpand(node);
    const QStringList expected = detectionNames(static_cast<const TCompoundAbstract*>(first));
    QVERIFY(!expected.isEmpty());
    QCOMPARE(childNames(node), expected);
    QVERIFY(!node->firstChild()->ownsData());
}

void tst_KAProjectBrowserPluginCompound::branchFollowsChangesOfCompounds()
{
    const KAObject2* list = m_db->getObjectLst(KAObjectTypeCompoundList).first();
    const qint64 pd = m_db->getObjectLst(KAObjectTypePeakDetect).last()->id();
    const QString name = QStringLiteral("Acide <b>citrique</b> \"pur\"");
    QVERIFY(m_db->beginBatch());
    const qint64 compound = m_db->addObject(KAObjectTypeCompound, list->id(), name);
    QVERIFY(compound && m_db->addCompoundPeakDetect(compound, pd));
    QVERIFY(m_db->commitBatch());
    settle();
    Node* node = childNamed(firstList(), name);
    QVERIFY(node);
    m_ctrl->fillNodeOnExpand(node);
    QCOMPARE(childNames(node), QStringList({m_db->objectById(pd)->name()}));
    // The view shows the rebuilt branch, its items on the new nodes.
    QVERIFY(branchItem());
}

void tst_KAProjectBrowserPluginCompound::deletingDetectionTakesItOutOfTheCompoundOnly()
{
    const auto* compound = static_cast<const TCompoundAbstract*>(m_db->getObjectLst(KAObjectTypeCompound).first());
    Node* node = expandedCompound(compound->name());
    QVERIFY(node && node->firstChild());
    Node* detection = node->firstChild();
    const KAObject2* pd = detection->data();
    showBranch();
    const int before = m_db->getObjectLst(KAObjectTypePeakDetect).size();

    QVERIFY(m_ctrl->deleteObject(detection, false));
    QVERIFY(!compound->getPeakDetectList().contains(static_cast<const KAObject2PeakDetect*>(pd)));
    QCOMPARE(m_db->getObjectLst(KAObjectTypePeakDetect).size(), before);
    QVERIFY(m_db->getObjectLst(KAObjectTypePeakDetect).contains(pd));
    settle();
    Node* rebuilt = expandedCompound(compound->name());
    QVERIFY(!childNames(rebuilt).contains(pd->name()));
}

void tst_KAProjectBrowserPluginCompound::deletingCompoundDeletesItFromTheDatabase()
{
    const KAObject2* compound = m_db->getObjectLst(KAObjectTypeCompound).first();
    const QString name = compound->name();
    Node* node = expandedCompound(name);
    QVERIFY(node);
    showBranch();
    QVERIFY(m_ctrl->deleteObject(node, false));
    QVERIFY(!m_db->getObjectLst(KAObjectTypeCompound).contains(compound));
    settle();
    QVERIFY(!childNamed(firstList(), name));
    QVERIFY(branchItem());
}

void tst_KAProjectBrowserPluginCompound::renameGoesToTheDatabase()
{
    const KAObject2* compound = m_db->getObjectLst(KAObjectTypeCompound).first();
    Node* node = childNamed(firstList(), compound->name());
    QString name = QStringLiteral("Caféine <anhydre>");
    QVERIFY(m_ctrl->renameObject(node, name));
    QCOMPARE(compound->name(), QStringLiteral("Caféine <anhydre>"));
    settle();
    QVERIFY(childNamed(firstList(), QStringLiteral("Caféine <anhydre>")));
    QVERIFY(TestFixture::reopen(m_db->project()));
}

// An analysis deleted in the project tree takes its detections out of the
// expanded compounds at once, while they still exist, and the compound is
// shown without them afterwards.
void tst_KAProjectBrowserPluginCompound::detectionDeletedElsewhereLeavesTheBranch()
{
    const auto* compound = static_cast<const TCompoundAbstract*>(m_db->getObjectLst(KAObjectTypeCompound).first());
    Node* node = expandedCompound(compound->name());
    QVERIFY(node && node->firstChild());
    const auto* pd = static_cast<const KAObject2PeakDetect*>(node->firstChild()->data());
    const KAObject2Analysis* analysis = pd->signal()->analysis();
    const QString pdName = pd->name();
    const int shown = node->childCount();

    QVERIFY(m_db->deleteObject(analysis, false));
    QVERIFY(node->childCount() < shown);
    QVERIFY(!childNames(node).contains(pdName));
    settle();
    Node* rebuilt = childNamed(firstList(), compound->name());
    QVERIFY(rebuilt);
    m_ctrl->fillNodeOnExpand(rebuilt);
    QVERIFY(!childNames(rebuilt).contains(pdName));
}

QTEST_MAIN(tst_KAProjectBrowserPluginCompound)
#include "tst_kaprojectbrowserplugincompound.moc"
