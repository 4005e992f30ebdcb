#include "kafilesystembrowserctrl.h"
#include "kafilesystembrowserfilterpackage.h"
#include "kafilesystembrowserobserver.h"
#include "kafilteractiongroup.h"
#include "kalineeditsearch.h"
#include "kastackedbrowserctrl.h"
#include "kastackedbrowserctrlstateproject.h"
#include "kastackedbrowserdockfactory.h"
#include "kastackedbrowsereditor.h"
#include "kastackedbrowsereditordockwidget.h"
#include "kastackedbrowsersearchprogressbar.h"
#include "testfixture.h"

#include <QtTest>

// The stacked explorer with its real dock, panel and both browsers.
class TestKAStackedBrowserCtrl : public QObject
{
    Q_OBJECT
private slots:
    void initTestCase() { kaInitTestEnvironment(); }
    void init()
    {
        m_filter.reset(new KAFileSystemBrowserFilterPackage);
        m_ctrl.reset(new KAStackedBrowserCtrl(KAStackedBrowserDockFactory()));
        m_ctrl->init(m_filter.get(), false, KAStackedBrowserCtrl::stateProject);
    }
    void cleanup() { m_ctrl.reset(); m_filter.reset(); }

    // An observer registered early makes the file-system state unseen. Switching to the current state runs
    // neither enter() (it resets the title) nor leave() (it resets the search field). The project view
    // withholds projects (768) from its filter, put back once on leaving; it alone takes intuitive drags.
    void switchingStates()
    {
        KAFileSystemBrowserObserver observer;
        QVERIFY(!m_ctrl->state(KAStackedBrowserCtrl::stateFileSystem));
        m_ctrl->registerFileSystemBrowserObserver(&observer);
        QVERIFY(m_ctrl->state(KAStackedBrowserCtrl::stateFileSystem) && !dock()->contains(m_ctrl->getFileSystemCtrl()->getEditor()));
        QCOMPARE(m_ctrl->currentState(), m_ctrl->state(KAStackedBrowserCtrl::stateProject));
        m_ctrl->unregisterFileSystemBrowserObserver(&observer);
        dock()->setWindowTitle(QStringLiteral("marker"));
        dock()->editor()->searchField()->changeSearchMode(1);
        m_ctrl->changeState(KAStackedBrowserCtrl::stateProject);
        QVERIFY(dock()->windowTitle() == QStringLiteral("marker") && !action(0)->isEnabled());
        QCOMPARE(dock()->editor()->searchField()->searchMode(), 1);
        m_ctrl->changeState(KAStackedBrowserCtrl::stateFileSystem);
        QVERIFY(dock()->windowTitle() == QStringLiteral("File system explorer") && action(0)->isEnabled());
        QCOMPARE(dock()->editor()->searchField()->searchMode(), 0);
        QCOMPARE(dock()->getAllowedFilters(), (QList<KAObjectType>{KAObjectTypeProject, KAObjectTypeAnalysis,
                 KAObjectTypeWell, KAObjectTypeGlobalIndexation, KAObjectTypeIdentifications})); // inactive ones absent
        auto* project = static_cast<KAStackedBrowserCtrlStateProject*>(m_ctrl->state(KAStackedBrowserCtrl::stateProject));
        int source = 0;
        m_ctrl->intuitiveDragStart(&source, KAObjectTypeAnalysis);
        QCOMPARE(project->getFilter()->currentUserFilter(), KAObjectTypeProject);
        m_ctrl->changeState(KAStackedBrowserCtrl::stateProject);
        QVERIFY(!action(0)->isEnabled());
        m_ctrl->intuitiveDragStart(&source, KAObjectTypeAnalysis);
        QCOMPARE(project->getFilter()->currentUserFilter(), KAObjectTypeAnalysis);
        m_ctrl->intuitiveDragEnd(&source);
        QCOMPARE(project->getFilter()->currentUserFilter(), KAObjectTypeProject);
    }
    // Allowed kinds enable their filter actions, current kinds check them, neither doing both. The progress bar.
    void editorWidgets()
    {
        dock()->editor()->setAllowedFilters({KAObjectTypeAnalysis, KAObjectTypeWell});
        dock()->editor()->setCurrentFilter({KAObjectTypeWell});
        QVERIFY(action(1)->isEnabled() && !action(1)->isChecked() && action(2)->isChecked() && !action(4)->isEnabled());
        dock()->editor()->setCurrentFilter({});
        QVERIFY(action(1)->isEnabled());
        KAStackedBrowserSearchProgressBar bar;
        bar.startProcess(5);
        bar.advanceProcess(2);
        bar.advanceProcess(1);
        QVERIFY(!bar.isHidden() && bar.value() == 3 && bar.maximum() == 5);
        bar.endProcess();
        QVERIFY(bar.isHidden() && bar.value() == bar.minimum() - 1); // reset
    }
private:
    KAStackedBrowserEditorDockWidget* dock() const { return static_cast<KAStackedBrowserEditorDockWidget*>(m_ctrl->editor()); }
    QAction* action(int i) const { return dock()->editor()->filterActions()->actions().at(i); }
    std::unique_ptr<KAFileSystemBrowserFilterPackage> m_filter;
    std::unique_ptr<KAStackedBrowserCtrl> m_ctrl;
};

QTEST_MAIN(TestKAStackedBrowserCtrl)
#include "tst_kastackedbrowserctrl.moc"
