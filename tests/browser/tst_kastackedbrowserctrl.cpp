#include "kafilesystembrowserctrl.h"
#include "kafilesystembrowserfilterpackage.h"
#include "kafilesystembrowserobserver.h"
#include "kaprojectbrowserctrl.h"
#include "kastackedbrowserctrl.h"
#include "kastackedbrowserctrlstateproject.h"
#include "kastackedbrowserdockfactory.h"
#include "kastackedbrowsereditor.h"
#include "kastackedbrowsereditordockwidget.h"
#include "kastackedbrowsersearchprogressbar.h"
#include "kalineeditsearch.h"
#include "messageloggerinterface.h"
#include "testfixture.h"

#include "kafilteractiongroup.h"

#include <QActionGroup>
#include <QtTest>

// The stacked explorer with its real dock, panel and both browsers.
class TestKAStackedBrowserCtrl : public QObject
{
    Q_OBJECT
private slots:
    void initTestCase() { kaInitTestEnvironment(); }
    void init();
    void cleanup();

    void switchingToTheCurrentStateRunsNeitherLeaveNorEnter();
    void observerBeforeFirstSwitchCreatesHiddenFileSystemState();
    void projectKindWithdrawnInProjectViewAndPutBackOnce();
    void intuitiveDragIgnoredInFileSystemView();
    void leavingAViewClearsItsSearch();
    void filterActionsFollowAllowedAndCurrentTypes();
    void inactiveEntriesGetNoAction();
    void progressBarStartsStepsAndHides();
    void filterViewNarrowsTheCurrentStateFilter();

private:
    KAStackedBrowserEditorDockWidget* dock() const
    {
        return static_cast<KAStackedBrowserEditorDockWidget*>(m_ctrl->editor());
    }
    QAction* action(KAObjectType type) const
    {
        for (QAction* a : dock()->editor()->filterActions()->actions())
            if (a->data().toInt() == type)
                return a;
        return nullptr;
    }

    KAFileSystemBrowserFilterPackage* m_filter = nullptr;
    KAStackedBrowserCtrl* m_ctrl = nullptr;
};

void TestKAStackedBrowserCtrl::init()
{
    m_filter = new KAFileSystemBrowserFilterPackage;
    m_ctrl = new KAStackedBrowserCtrl(KAStackedBrowserDockFactory());
    m_ctrl->init(m_filter, false, KAStackedBrowserCtrl::stateProject);
}

void TestKAStackedBrowserCtrl::cleanup()
{
    delete m_ctrl;
    delete m_filter;
    m_ctrl = nullptr;
    m_filter = nullptr;
}

void TestKAStackedBrowserCtrl::switchingToTheCurrentStateRunsNeitherLeaveNorEnter()
{
    QCOMPARE(dock()->windowTitle(), QStringLiteral("Project explorer"));
    // enter() would reset the title, leave() the search field's mode.
    dock()->setWindowTitle(QStringLiteral("marker"));
    dock()->editor()->searchField()->changeSearchMode(1);
    m_ctrl->changeState(KAStackedBrowserCtrl::stateProject);
    QCOMPARE(dock()->windowTitle(), QStringLiteral("marker"));
    QCOMPARE(dock()->editor()->searchField()->searchMode(), 1);
    m_ctrl->changeState(KAStackedBrowserCtrl::stateFileSystem);
    QCOMPARE(dock()->windowTitle(), QStringLiteral("File system explorer"));
    QCOMPARE(dock()->editor()->searchField()->searchMode(), 0);
}

void TestKAStackedBrowserCtrl::observerBeforeFirstSwitchCreatesHiddenFileSystemState()
{
    KAFileSystemBrowserObserver observer;
    QVERIFY(!m_ctrl->state(KAStackedBrowserCtrl::stateFileSystem));
    m_ctrl->registerFileSystemBrowserObserver(&observer);
    QVERIFY(m_ctrl->state(KAStackedBrowserCtrl::stateFileSystem));
    QCOMPARE(m_ctrl->currentState(), m_ctrl->state(KAStackedBrowserCtrl::stateProject));
    QCOMPARE(dock()->windowTitle(), QStringLiteral("Project explorer"));
    QVERIFY(!dock()->contains(m_ctrl->getFileSystemCtrl()->getEditor()));
    m_ctrl->unregisterFileSystemBrowserObserver(&observer);
}

void TestKAStackedBrowserCtrl::projectKindWithdrawnInProjectViewAndPutBackOnce()
{
    auto* project = static_cast<KAStackedBrowserCtrlStateProject*>(m_ctrl->state(KAStackedBrowserCtrl::stateProject));
    QVERIFY(project->projectTypeRemoved());
    QVERIFY(!action(KAObjectTypeProject)->isEnabled());
    m_ctrl->changeState(KAStackedBrowserCtrl::stateFileSystem);
    QVERIFY(!project->projectTypeRemoved());
    QVERIFY(action(KAObjectTypeProject)->isEnabled());
    // Every action is reported once, whatever was put back.
    QCOMPARE(dock()->getAllowedFilters().count(KAObjectTypeProject), 1);
    m_ctrl->changeState(KAStackedBrowserCtrl::stateProject);
    QVERIFY(!action(KAObjectTypeProject)->isEnabled());
}

void TestKAStackedBrowserCtrl::intuitiveDragIgnoredInFileSystemView()
{
    auto* project = static_cast<KAStackedBrowserCtrlStateProject*>(m_ctrl->state(KAStackedBrowserCtrl::stateProject));
    int source = 0;
    m_ctrl->changeState(KAStackedBrowserCtrl::stateFileSystem);
    m_ctrl->intuitiveDragStart(&source, KAObjectTypeAnalysis);
    QCOMPARE(project->getFilter()->currentUserFilter(), KAObjectTypeProject);
    m_ctrl->changeState(KAStackedBrowserCtrl::stateProject);
    m_ctrl->intuitiveDragStart(&source, KAObjectTypeAnalysis);
    QCOMPARE(project->getFilter()->currentUserFilter(), KAObjectTypeAnalysis);
    m_ctrl->intuitiveDragEnd(&source);
    QCOMPARE(project->getFilter()->currentUserFilter(), KAObjectTypeProject);
}

void TestKAStackedBrowserCtrl::leavingAViewClearsItsSearch()
{
    m_ctrl->changeState(KAStackedBrowserCtrl::stateFileSystem);
    KAFileSystemBrowserCtrl* fs = m_ctrl->getFileSystemCtrl();
    m_ctrl->search(QStringLiteral("caf"));
    QVERIFY(fs->searchTimer()->isActive());
    QCOMPARE(dock()->editor()->searchField()->text(), QStringLiteral("caf"));
    m_ctrl->changeState(KAStackedBrowserCtrl::stateProject);
    QVERIFY(!fs->searchTimer()->isActive());
    QCOMPARE(dock()->editor()->searchField()->searchMode(), 0);
}

void TestKAStackedBrowserCtrl::filterActionsFollowAllowedAndCurrentTypes()
{
    KAStackedBrowserEditor* editor = dock()->editor();
    editor->setAllowedFilters({KAObjectTypeAnalysis, KAObjectTypeWell});
    editor->setCurrentFilter({KAObjectTypeWell});
    QVERIFY(action(KAObjectTypeAnalysis)->isEnabled());
    QVERIFY(!action(KAObjectTypeAnalysis)->isChecked()); // allowed does not check
    QVERIFY(action(KAObjectTypeWell)->isChecked());
    QVERIFY(!action(KAObjectTypeIdentifications)->isEnabled());
    editor->setCurrentFilter({});
    QVERIFY(action(KAObjectTypeAnalysis)->isEnabled()); // current does not enable or disable
    editor->setAllowedFilters({});
    for (QAction* a : editor->filterActions()->actions())
        QVERIFY(!a->isEnabled());
}

void TestKAStackedBrowserCtrl::inactiveEntriesGetNoAction()
{
    const QList<KAObjectType> expected = {KAObjectTypeProject, KAObjectTypeAnalysis, KAObjectTypeWell,
                                          KAObjectTypeGlobalIndexation, KAObjectTypeIdentifications};
    QCOMPARE(dock()->getAllowedFilters(), expected);
    QStringList labels;
    for (QAction* a : dock()->editor()->filterActions()->actions())
        labels << a->text();
    QCOMPARE(labels, QStringList({"Show projects", "Show analyses", "Show numerical arrays", "Show indexations",
                                  "Show identifications"}));
}

void TestKAStackedBrowserCtrl::progressBarStartsStepsAndHides()
{
    KAStackedBrowserSearchProgressBar bar;
    QCOMPARE(bar.format(), QStringLiteral("Loading projects ..."));
    bar.startProcess(5);
    QVERIFY(bar.isVisibleTo(nullptr) || !bar.isHidden());
    QCOMPARE(bar.maximum(), 5);
    QCOMPARE(bar.value(), 0);
    bar.advanceProcess(2);
    bar.advanceProcess(1);
    QCOMPARE(bar.value(), 3);
    bar.endProcess();
    QVERIFY(bar.isHidden());
    QCOMPARE(bar.value(), bar.minimum() - 1); // reset
}

void TestKAStackedBrowserCtrl::filterViewNarrowsTheCurrentStateFilter()
{
    m_ctrl->filterView({KAObjectTypeAnalysis});
    KAFileSystemBrowserFilterPackage* current = m_ctrl->getCurrentStateFilter();
    QVERIFY(current->contains(KAObjectTypeAnalysis));
    QVERIFY(!current->contains(KAObjectTypeWell));
    QVERIFY(current->contains(KAObjectTypeDeconvMS)); // silent switches stay
    m_ctrl->resetCurrentStateFilter(false);
    QVERIFY(m_ctrl->getCurrentStateFilter()->contains(KAObjectTypeWell));
}

QTEST_MAIN(TestKAStackedBrowserCtrl)
#include "tst_kastackedbrowserctrl.moc"
