#include "kaobject2analysis.h"
#include "kaobject2peakdetect.h"
#include "kaobject2project.h"
#include "kaobject2signal.h"
#include "kaprojectbrowserctrl.h"
#include "kaprojectbrowserfilterpackage.h"
#include "kaprojectbrowserplugincompound.h"
#include "kaprojectbrowsertreewidget.h"
#include "projecttreehelpers.h"
#include "tcompoundabstract.h"
#include "tdatabase.h"
#include "testfixture.h"

#include <QTest>
#include <QTreeWidgetItemIterator>

#include <memory>

using namespace TreeTest;

// The compound lists' branch of the project explorer on a generated project: built from the database,
// expanded lazily, edited through the database, and following its changes.
class tst_KAProjectBrowserPluginCompound : public QObject
{
    Q_OBJECT

    Node* firstList() const { return m_plugin->getTree()->firstChild(); }
    auto firstCompound() const { return static_cast<const TCompoundAbstract*>(m_db->getObjectLst(KAObjectTypeCompound).first()); }
    // The compound's node, expanded into its detections.
    Node* expanded(const QString& name)
    {
        Node* node = childNamed(firstList(), name);
        m_ctrl->fillNodeOnExpand(node); // a missing node (null) is ignored
        return node;
    }
    // Opens every item, as a user would, so that edits and rebuilds go through the view's items too.
    void showAll() { for (QTreeWidgetItemIterator it(m_ctrl->treeWidget()); *it; ++it) (*it)->setExpanded(true); }

    std::unique_ptr<TestFixture> m_fixture;
    KAProjectBrowserFilterPackage m_filter;
    std::unique_ptr<KAProjectBrowserCtrl> m_ctrl;
    KAProjectBrowserPluginCompound* m_plugin = nullptr; // owned by m_ctrl
    TechDB::TDatabase* m_db = nullptr;

private slots:
    void initTestCase() { kaInitTestEnvironment(); }
    void init()
    {
        m_fixture.reset(new TestFixture);
        m_ctrl.reset(new KAProjectBrowserCtrl);
        m_ctrl->init(false, &m_filter);
        m_plugin = new KAProjectBrowserPluginCompound(m_ctrl.get());
        m_ctrl->addPlugin(m_plugin, m_plugin->itemCreator());
        const KAObject2Project* project = m_fixture->openSampleProject(QStringLiteral("Compounds"));
        QVERIFY(project && (m_db = project->db()));
    }
    void cleanup() { m_ctrl.reset(); m_fixture.reset(); }

    // Lists and compounds as the database holds them; a compound shows its detections, each once and in
    // order, only when expanded, borrowing the database's objects. A new compound shows after its batch.
    void branchFollowsTheDatabase()
    {
        QTreeWidget* view = m_ctrl->treeWidget(); // the branch shows after the project's
        QCOMPARE(view->topLevelItem(view->topLevelItemCount() - 1)->text(0), QStringLiteral("Compound lists"));
        const QList<const KAObject2*> lists = m_db->getObjectLst(KAObjectTypeCompoundList);
        QCOMPARE(childNames(m_plugin->getTree()), QStringList({lists.at(0)->name(), lists.at(1)->name()}));
        QVERIFY(carriesPlaceholder(childNamed(firstList(), firstCompound()->name())));
        QStringList names;
        for (const KAObject2PeakDetect* pd : firstCompound()->getPeakDetectList()) {
            if (pd && !names.contains(pd->name()))
                names.append(pd->name());
        }
        QCOMPARE(childNames(expanded(firstCompound()->name())), names);
        QVERIFY(!expanded(firstCompound()->name())->firstChild()->ownsData());
        const qint64 pd = m_db->getObjectLst(KAObjectTypePeakDetect).last()->id();
        const QString name = QStringLiteral("Acide <b>citrique</b> \"pur\"");
        showAll();
        QVERIFY(m_db->beginBatch());
        const qint64 compound = m_db->addObject(KAObjectTypeCompound, lists.at(0)->id(), name);
        QVERIFY(compound && m_db->addCompoundPeakDetect(compound, pd));
        QVERIFY(m_db->commitBatch());
        QCoreApplication::processEvents();
        QCOMPARE(childNames(expanded(name)), QStringList({m_db->objectById(pd)->name()}));
    }

    // Deleting a detection under a compound only takes it out of that compound's list; deleting a compound,
    // and a rename, go to the database. An analysis deleted elsewhere takes its detections out of the
    // expanded compounds at once, while they still exist, and for good.
    void editsGoToTheDatabase()
    {
        const TCompoundAbstract* compound = firstCompound();
        Node* detection = expanded(compound->name())->firstChild();
        const auto* pd = static_cast<const KAObject2PeakDetect*>(detection->data());
        showAll();
        QVERIFY(m_ctrl->deleteObject(detection, false));
        QVERIFY(!compound->getPeakDetectList().contains(pd));
        QVERIFY(m_db->getObjectLst(KAObjectTypePeakDetect).contains(pd));
        QCoreApplication::processEvents();
        showAll();
        QVERIFY(m_ctrl->deleteObject(childNamed(firstList(), compound->name()), false));
        QVERIFY(!m_db->getObjectLst(KAObjectTypeCompound).contains(compound));
        QCoreApplication::processEvents();
        QString name = QStringLiteral("Caféine <anhydre>");
        QVERIFY(m_ctrl->renameObject(childNamed(firstList(), firstCompound()->name()), name));
        QCOMPARE(firstCompound()->name(), QStringLiteral("Caféine <anhydre>"));
        Node* node = expanded(name);
        pd = static_cast<const KAObject2PeakDetect*>(node->firstChild()->data());
        const QString pdName = pd->name();
        QVERIFY(m_db->deleteObject(pd->signal()->analysis(), false));
        QVERIFY(!childNames(node).contains(pdName));
        QCoreApplication::processEvents();
        QVERIFY(!childNames(expanded(name)).contains(pdName));
    }
};

QTEST_MAIN(tst_KAProjectBrowserPluginCompound)
#include "tst_kaprojectbrowserplugincompound.moc"
