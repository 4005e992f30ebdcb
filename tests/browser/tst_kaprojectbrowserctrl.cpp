#include "kaprojectbrowserctrl.h"
#include "kaprojectbrowserfilterpackage.h"
#include "kaprojectbrowsermgr.h"
#include "kaprojectbrowserpluginsearch.h"
#include "kaprojectbrowsertreewidget.h"
#include "katreewidgetitem.h"
#include "projectmgrinterface.h"
#include "testfixture.h"

#include <QTest>

#include <memory>

static QList<QTreeWidgetItem*> topItems(QTreeWidget* view)
{
    QList<QTreeWidgetItem*> items;
    for (int i = 0; i < view->topLevelItemCount(); ++i)
        items.append(view->topLevelItem(i));
    return items;
}

static QStringList topTexts(QTreeWidget* view)
{
    QStringList texts;
    for (QTreeWidgetItem* item : topItems(view))
        texts.append(item->text(0));
    return texts;
}

// The project explorer's controller with its view: the host's projects, one or all, filters, drags.
class tst_KAProjectBrowserCtrl : public QObject
{
    Q_OBJECT
private slots:
    void initTestCase() { kaInitTestEnvironment(); }
    void init() { m_fixture.reset(new TestFixture); m_filter.reset(new KAProjectBrowserFilterPackage); }
    void cleanup() { m_ctrl.reset(); m_filter.reset(); m_fixture.reset(); }

    // The project comes first, then the plug-in branches in creation order ("Zoo" would sort last).
    // A second notice for the same project adds no manager; closing a project opened in the background,
    // never shown, refills the view. The intuitive drag narrows the view to the dragged kind until the
    // same source ends it. Closed projects leave the view.
    void followsProjectsAndIntuitiveDrag()
    {
        makeCtrl(false);
        const KAObject2Project* zoo = open(QStringLiteral("Zoo"));
        QVERIFY(zoo);
        QCOMPARE(topTexts(view()), (QStringList{"Zoo", "Saved searches", "External folders"}));
        QCOMPARE(static_cast<KATreeWidgetItem*>(view()->topLevelItem(1))->node(), m_ctrl->searchPlugin()->getTree());
        m_ctrl->projectOpened();
        ProjectMgrInterface* mgr = ProjectMgrInterface::returnMe();
        const KAObject2Project* hidden = mgr->discoverProject(m_fixture->makeProject(QStringLiteral("Hidden")));
        QVERIFY(hidden && mgr->openProject(hidden, false, true));
        QCOMPARE(m_ctrl->mgrList().size(), 1);
        for (QTreeWidgetItem* item : topItems(view()))
            item->setData(0, Qt::UserRole, true);
        QVERIFY(mgr->closeProject(hidden));
        QCOMPARE(topTexts(view()), (QStringList{"Zoo", "Saved searches", "External folders"}));
        for (QTreeWidgetItem* item : topItems(view()))
            QVERIFY2(!item->data(0, Qt::UserRole).toBool(), "the view was cleared and filled again");
        QCOMPARE(static_cast<KATreeWidgetItem*>(view()->topLevelItem(0))->node(), m_ctrl->getTree());

        int source = 0, otherSource = 0;
        m_ctrl->intuitiveDragStart(&source, KAObjectTypeAnalysis);
        QCOMPARE(topTexts(view()), QStringList{"Analysis"});
        QVERIFY(view()->isIntuitiveModeActive());
        QTreeWidgetItem* filtered = view()->topLevelItem(0);
        m_ctrl->intuitiveDragEnd(&otherSource);
        QCOMPARE(topItems(view()), QList<QTreeWidgetItem*>{filtered});
        m_ctrl->intuitiveDragEnd(&source);
        QCOMPARE(topTexts(view()), (QStringList{"Zoo", "Saved searches", "External folders"}));
        QVERIFY(!view()->isIntuitiveModeActive());

        // Another project becomes current, then the first one again.
        const KAObject2Project* beta = open(QStringLiteral("Beta"));
        QVERIFY(beta && mgr->openProject(zoo));
        QCOMPARE(m_ctrl->mgrList().size(), 2);
        QCOMPARE(m_ctrl->mgrList().at(0)->project(), zoo);
        QVERIFY(mgr->closeProject(zoo) && mgr->closeProject(beta));
        QVERIFY(m_ctrl->mgrList().isEmpty() && !m_ctrl->getTree());
        QCOMPARE(view()->topLevelItemCount(), 0);
    }

    // Every project open when the controller starts, no plug-in; open and
    // close notices ignored; the intuitive drag only switches the view's mode.
    void multiProjectShowsEveryOpenProject()
    {
        const KAObject2Project* beta = open(QStringLiteral("Beta"));
        QVERIFY(beta && open(QStringLiteral("Alpha")));
        makeCtrl(true);
        QVERIFY(m_ctrl->pluginList().isEmpty() && !m_ctrl->searchPlugin());
        QCOMPARE(topTexts(view()), (QStringList{"Alpha", "Beta"}));
        const QList<QTreeWidgetItem*> before = topItems(view());
        QVERIFY(open(QStringLiteral("Gamma")));
        m_ctrl->projectClosed(beta);
        QCOMPARE(m_ctrl->mgrList().size(), 2);
        int source = 0;
        m_ctrl->intuitiveDragStart(&source, KAObjectTypeAnalysis);
        QCOMPARE(int(m_filter->currentUserFilter()), int(KAObjectTypeProject));
        QVERIFY(view()->isIntuitiveModeActive());
        m_ctrl->intuitiveDragEnd(&source);
        QCOMPARE(topItems(view()), before);
        QVERIFY(!view()->isIntuitiveModeActive());
    }

    void filterHidesPluginBranches_data()
    {
        QTest::addColumn<int>("kind");
        QTest::addColumn<QString>("branch");
        QTest::newRow("analyses") << int(KAObjectTypeAnalysis) << QStringLiteral("Analysis");
        QTest::newRow("identifications") << int(KAObjectTypeIdentifications) << QStringLiteral("Identifications");
    }
    // The host empties the view, then sets the filter; a filter change also ends a search.
    void filterHidesPluginBranches()
    {
        QFETCH(int, kind);
        QFETCH(QString, branch);
        makeCtrl(false);
        QVERIFY(open(QStringLiteral("Alpha")));
        m_ctrl->search(QStringLiteral("Blank"), false);
        QCOMPARE(int(view()->currentStateId()), int(KAAbstractBrowserListView::stateSearch));
        m_ctrl->clearEditor();
        m_ctrl->setCurrentFilter(KAObjectType(kind));
        m_ctrl->viewFiltered();
        QCOMPARE(int(view()->currentStateId()), int(KAAbstractBrowserListView::stateNormal));
        QCOMPARE(topTexts(view()), QStringList{branch});
        QCOMPARE(static_cast<KATreeWidgetItem*>(view()->topLevelItem(0))->node(), m_ctrl->getTree(KAObjectType(kind)));
        m_ctrl->clearEditor();
        m_ctrl->setCurrentFilter(KAObjectTypeProject);
        m_ctrl->viewFiltered();
        QCOMPARE(topTexts(view()), (QStringList{"Alpha", "Saved searches", "External folders"}));
    }

private:
    void makeCtrl(bool multiProject) { m_ctrl.reset(new KAProjectBrowserCtrl); m_ctrl->init(multiProject, m_filter.get()); }
    // Opens a sample project, which becomes the current one; null otherwise.
    const KAObject2Project* open(const QString& name)
    {
        const KAObject2Project* project = m_fixture->openSampleProject(name);
        return project && ProjectMgrInterface::returnMe()->currentProject() == project ? project : nullptr;
    }
    KAProjectBrowserTreeWidget* view() const { return m_ctrl->treeWidget(); }

    std::unique_ptr<TestFixture> m_fixture;
    std::unique_ptr<KAProjectBrowserFilterPackage> m_filter;
    std::unique_ptr<KAProjectBrowserCtrl> m_ctrl;
};

QTEST_MAIN(tst_KAProjectBrowserCtrl)
#include "tst_kaprojectbrowserctrl.moc"
