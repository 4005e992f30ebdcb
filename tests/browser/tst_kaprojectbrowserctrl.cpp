#include "kaobject2project.h"
#include "kaprojectbrowserctrl.h"
#include "kaprojectbrowserfilterpackage.h"
#include "kaprojectbrowsermgr.h"
#include "kaprojectbrowserplugin.h"
#include "kaprojectbrowserpluginsearch.h"
#include "kaprojectbrowsertreewidget.h"
#include "katreewidgetitem.h"
#include "messageloggerinterface.h"
#include "projectmgrinterface.h"
#include "tapplicationdata.h"
#include "testfixture.h"
#include "ttree.h"

#include <QTest>

#include <memory>

namespace {

using Node = TTree<KAObject2*>;

QStringList topTexts(QTreeWidget* view)
{
    QStringList texts;
    for (int i = 0; i < view->topLevelItemCount(); ++i)
        texts.append(view->topLevelItem(i)->text(0));
    return texts;
}

// What the view shows at top level, whatever the order.
QStringList shown(QTreeWidget* view)
{
    QStringList texts = topTexts(view);
    texts.sort();
    return texts;
}

Node* topNodeNamed(QTreeWidget* view, const QString& text)
{
    for (int i = 0; i < view->topLevelItemCount(); ++i) {
        auto* item = dynamic_cast<KATreeWidgetItem*>(view->topLevelItem(i));
        if (item && item->text(0) == text)
            return item->node();
    }
    return nullptr;
}

QList<QTreeWidgetItem*> topItems(QTreeWidget* view)
{
    QList<QTreeWidgetItem*> items;
    for (int i = 0; i < view->topLevelItemCount(); ++i)
        items.append(view->topLevelItem(i));
    return items;
}

Node* topNode(QTreeWidget* view, int index)
{
    auto* item = dynamic_cast<KATreeWidgetItem*>(view->topLevelItem(index));
    return item ? item->node() : nullptr;
}

const int MarkerRole = Qt::UserRole + 77;

} // namespace

// The project explorer's controller with its view: following the host's
// projects, one or all projects, filter changes and the intuitive drag.
class tst_KAProjectBrowserCtrl : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void cleanup();

    void openedProjectFillsView();
    void pluginBranchesFollowProjectInCreationOrder();
    void openingSameProjectAddsNoManager();
    void closedProjectLeavesView();
    void closingUnshownProjectRefillsView();
    void multiProjectShowsEveryOpenProject();
    void filterHidesPluginBranches_data();
    void filterHidesPluginBranches();
    void intuitiveDragFiltersView();
    void intuitiveDragInMultiProjectOnlySwitchesMode();

private:
    void makeCtrl(bool multiProject);
    const KAObject2Project* open(const QString& name);
    KAProjectBrowserTreeWidget* view() const { return m_ctrl->treeWidget(); }

    std::unique_ptr<TestFixture> m_fixture;
    std::unique_ptr<KAProjectBrowserFilterPackage> m_filter;
    std::unique_ptr<KAProjectBrowserCtrl> m_ctrl;
};

void tst_KAProjectBrowserCtrl::initTestCase()
{
    kaInitTestEnvironment();
}

void tst_KAProjectBrowserCtrl::init()
{
    m_fixture.reset(new TestFixture);
    m_filter.reset(new KAProjectBrowserFilterPackage);
    MessageLoggerInterface::returnMe()->clear();
}

void tst_KAProjectBrowserCtrl::cleanup()
{
    m_ctrl.reset();
    m_filter.reset();
    m_fixture.reset();
    TApplicationData::getInstance()->setCurrentProjectReadOnly(false);
}

void tst_KAProjectBrowserCtrl::makeCtrl(bool multiProject)
{
    m_ctrl.reset(new KAProjectBrowserCtrl);
    m_ctrl->init(multiProject, m_filter.get());
    QVERIFY(view());
    QCOMPARE(m_ctrl->getEditor(), static_cast<QWidget*>(view()));
}

const KAObject2Project* tst_KAProjectBrowserCtrl::open(const QString& name)
{
    const KAObject2Project* project = m_fixture->openSampleProject(name);
    if (project && ProjectMgrInterface::returnMe()->currentProject() != project)
        return nullptr;
    return project;
}

void tst_KAProjectBrowserCtrl::openedProjectFillsView()
{
    makeCtrl(false);
    QVERIFY(m_ctrl->mgrList().isEmpty());
    QCOMPARE(view()->topLevelItemCount(), 0);
    QVERIFY(m_ctrl->searchPlugin());

    const KAObject2Project* alpha = open(QStringLiteral("Alpha"));
    QVERIFY(alpha);
    QCOMPARE(m_ctrl->mgrList().size(), 1);
    QCOMPARE(m_ctrl->mgrList().first()->project(), alpha);
    QVERIFY(view()->isEnabled());
    QCOMPARE(shown(view()), (QStringList{"Alpha", "External folders", "Saved searches"}));
    QCOMPARE(topNodeNamed(view(), QStringLiteral("Alpha")), m_ctrl->getTree());
    QCOMPARE(topNodeNamed(view(), QStringLiteral("Saved searches")), m_ctrl->searchPlugin()->getTree());
    QCOMPARE(m_ctrl->pluginList().size(), 2);
    QCOMPARE(topNodeNamed(view(), QStringLiteral("External folders")), m_ctrl->pluginList().at(1)->getTree());
}

void tst_KAProjectBrowserCtrl::pluginBranchesFollowProjectInCreationOrder()
{
    makeCtrl(false);
    QVERIFY(open(QStringLiteral("Zoo")));
    QCOMPARE(m_ctrl->pluginList().size(), 2);
    QCOMPARE(m_ctrl->pluginList().at(0), static_cast<KAProjectBrowserPlugin*>(m_ctrl->searchPlugin()));
    QCOMPARE(topTexts(view()), (QStringList{"Zoo", "Saved searches", "External folders"}));
}

void tst_KAProjectBrowserCtrl::openingSameProjectAddsNoManager()
{
    makeCtrl(false);
    const KAObject2Project* alpha = open(QStringLiteral("Alpha"));
    QVERIFY(alpha);
    QCOMPARE(m_ctrl->mgrList().size(), 1);

    // The host tells again that the current project is open.
    m_ctrl->projectOpened();
    QCOMPARE(m_ctrl->mgrList().size(), 1);
    QCOMPARE(shown(view()), (QStringList{"Alpha", "External folders", "Saved searches"}));

    // Another project becomes current, then the first one again.
    const KAObject2Project* beta = open(QStringLiteral("Beta"));
    QVERIFY(beta);
    QCOMPARE(m_ctrl->mgrList().size(), 2);
    QVERIFY(ProjectMgrInterface::returnMe()->openProject(alpha));
    QCOMPARE(ProjectMgrInterface::returnMe()->currentProject(), alpha);
    QCOMPARE(m_ctrl->mgrList().size(), 2);
    QCOMPARE(m_ctrl->mgrList().at(0)->project(), alpha);
    QCOMPARE(m_ctrl->mgrList().at(1)->project(), beta);
    // Two projects shown: the plug-in branches stay out.
    QCOMPARE(shown(view()), (QStringList{"Alpha", "Beta", "External folders", "Saved searches"}));
}

void tst_KAProjectBrowserCtrl::closedProjectLeavesView()
{
    makeCtrl(false);
    const KAObject2Project* alpha = open(QStringLiteral("Alpha"));
    QVERIFY(alpha);
    QCOMPARE(view()->topLevelItemCount(), 3);
    QVERIFY(ProjectMgrInterface::returnMe()->closeProject(alpha));
    QVERIFY(m_ctrl->mgrList().isEmpty());
    QVERIFY(!m_ctrl->getTree());
    QCOMPARE(view()->topLevelItemCount(), 0);
    QVERIFY(view()->isEnabled());
}

void tst_KAProjectBrowserCtrl::closingUnshownProjectRefillsView()
{
    makeCtrl(false);
    const KAObject2Project* alpha = open(QStringLiteral("Alpha"));
    QVERIFY(alpha);
    // A project opened in the background is not shown.
    const QString folder = m_fixture->makeProject(QStringLiteral("Hidden"));
    QVERIFY(!folder.isEmpty());
    ProjectMgrInterface* mgr = ProjectMgrInterface::returnMe();
    mgr->rescan();
    const KAObject2Project* hidden = mgr->findProject(folder);
    QVERIFY(hidden);
    QVERIFY(mgr->openProject(hidden, false, true));
    QCOMPARE(m_ctrl->mgrList().size(), 1);

    for (QTreeWidgetItem* item : topItems(view()))
        item->setData(0, MarkerRole, true);
    QVERIFY(mgr->closeProject(hidden));
    QCOMPARE(m_ctrl->mgrList().size(), 1);
    QCOMPARE(m_ctrl->mgrList().first()->project(), alpha);
    QCOMPARE(shown(view()), (QStringList{"Alpha", "External folders", "Saved searches"}));
    for (QTreeWidgetItem* item : topItems(view()))
        QVERIFY2(!item->data(0, MarkerRole).toBool(), "the view was cleared and filled again");
    QCOMPARE(topNodeNamed(view(), QStringLiteral("Alpha")), m_ctrl->getTree());
    QVERIFY(view()->isEnabled());
}

void tst_KAProjectBrowserCtrl::multiProjectShowsEveryOpenProject()
{
    const KAObject2Project* alpha = open(QStringLiteral("Alpha"));
    const KAObject2Project* beta = open(QStringLiteral("Beta"));
    QVERIFY(alpha && beta);
    makeCtrl(true);
    QVERIFY(m_ctrl->isInMultiProject());
    QCOMPARE(m_ctrl->mgrList().size(), 2);
    QCOMPARE(m_ctrl->mgrList().at(0)->project(), alpha);
    QCOMPARE(m_ctrl->mgrList().at(1)->project(), beta);
    QVERIFY(m_ctrl->pluginList().isEmpty());
    QVERIFY(!m_ctrl->searchPlugin());
    QCOMPARE(topTexts(view()), (QStringList{"Alpha", "Beta"}));
    QVERIFY(view()->isEnabled());
    const QList<QTreeWidgetItem*> before = topItems(view());

    // Open and close notices are ignored.
    const KAObject2Project* gamma = open(QStringLiteral("Gamma"));
    QVERIFY(gamma);
    QCOMPARE(m_ctrl->mgrList().size(), 2);
    m_ctrl->projectClosed(beta);
    QCOMPARE(m_ctrl->mgrList().size(), 2);
    QCOMPARE(topItems(view()), before);
    QCOMPARE(topTexts(view()), (QStringList{"Alpha", "Beta"}));
}

void tst_KAProjectBrowserCtrl::filterHidesPluginBranches_data()
{
    QTest::addColumn<int>("kind");
    QTest::addColumn<QString>("branch");
    QTest::newRow("analyses") << int(KAObjectTypeAnalysis) << QStringLiteral("Analysis");
    QTest::newRow("numerical arrays") << int(KAObjectTypeWell) << QStringLiteral("Numerical arrays");
    QTest::newRow("indexations") << int(KAObjectTypeGlobalIndexation) << QStringLiteral("Indexations");
    QTest::newRow("identifications") << int(KAObjectTypeIdentifications) << QStringLiteral("Identifications");
}

void tst_KAProjectBrowserCtrl::filterHidesPluginBranches()
{
    QFETCH(int, kind);
    QFETCH(QString, branch);
    makeCtrl(false);
    QVERIFY(open(QStringLiteral("Alpha")));
    QCOMPARE(shown(view()), (QStringList{"Alpha", "External folders", "Saved searches"}));
    // A search puts the view in its search state; a filter change ends it.
    m_ctrl->search(QStringLiteral("Blank"), false);
    QCOMPARE(int(view()->currentStateId()), int(KAAbstractBrowserListView::stateSearch));

    // The host empties the view, then sets the filter.
    m_ctrl->clearEditor();
    m_ctrl->setCurrentFilter(KAObjectType(kind));
    m_ctrl->viewFiltered();
    QCOMPARE(int(m_filter->currentUserFilter()), kind);
    QCOMPARE(int(view()->currentStateId()), int(KAAbstractBrowserListView::stateNormal));
    QCOMPARE(topTexts(view()), QStringList{branch});
    QCOMPARE(topNode(view(), 0), m_ctrl->getTree(KAObjectType(kind)));

    m_ctrl->clearEditor();
    m_ctrl->setCurrentFilter(KAObjectTypeProject);
    m_ctrl->viewFiltered();
    QCOMPARE(shown(view()), (QStringList{"Alpha", "External folders", "Saved searches"}));
    QCOMPARE(topNodeNamed(view(), QStringLiteral("Saved searches")), m_ctrl->searchPlugin()->getTree());
}

void tst_KAProjectBrowserCtrl::intuitiveDragFiltersView()
{
    makeCtrl(false);
    QVERIFY(open(QStringLiteral("Alpha")));
    int source = 0;
    int otherSource = 0;
    QVERIFY(!view()->isIntuitiveModeActive());

    m_ctrl->intuitiveDragStart(&source, KAObjectTypeAnalysis);
    QCOMPARE(int(m_filter->currentUserFilter()), int(KAObjectTypeAnalysis));
    QCOMPARE(topTexts(view()), QStringList{"Analysis"});
    QVERIFY(view()->isIntuitiveModeActive());
    QTreeWidgetItem* filtered = view()->topLevelItem(0);

    m_ctrl->intuitiveDragEnd(&otherSource);
    QCOMPARE(int(m_filter->currentUserFilter()), int(KAObjectTypeAnalysis));
    QCOMPARE(topItems(view()), QList<QTreeWidgetItem*>{filtered});
    QVERIFY(view()->isIntuitiveModeActive());

    m_ctrl->intuitiveDragEnd(&source);
    QCOMPARE(int(m_filter->currentUserFilter()), int(KAObjectTypeProject));
    QCOMPARE(shown(view()), (QStringList{"Alpha", "External folders", "Saved searches"}));
    QVERIFY(!view()->isIntuitiveModeActive());
}

void tst_KAProjectBrowserCtrl::intuitiveDragInMultiProjectOnlySwitchesMode()
{
    QVERIFY(open(QStringLiteral("Alpha")));
    QVERIFY(open(QStringLiteral("Beta")));
    makeCtrl(true);
    const QList<QTreeWidgetItem*> before = topItems(view());
    QCOMPARE(before.size(), 2);
    int source = 0;

    m_ctrl->intuitiveDragStart(&source, KAObjectTypeAnalysis);
    QCOMPARE(int(m_filter->currentUserFilter()), int(KAObjectTypeProject));
    QCOMPARE(topItems(view()), before);
    QVERIFY(view()->isIntuitiveModeActive());

    m_ctrl->intuitiveDragEnd(&source);
    QCOMPARE(int(m_filter->currentUserFilter()), int(KAObjectTypeProject));
    QCOMPARE(topItems(view()), before);
    QVERIFY(!view()->isIntuitiveModeActive());
}

QTEST_MAIN(tst_KAProjectBrowserCtrl)
#include "tst_kaprojectbrowserctrl.moc"
