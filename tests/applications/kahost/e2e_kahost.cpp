#include "kafilesystembrowserctrl.h"
#include "kafilesystembrowsereditor.h"
#include "kahostmainwindow.h"
#include "kalineeditsearch.h"
#include "kaobject2project.h"
#include "kaprojectbrowserctrl.h"
#include "kaprojectbrowsermgr.h"
#include "kaprojectbrowsertreewidget.h"
#include "kaprojectselectctrl.h"
#include <QAction>
#include "karibbonprojectselect.h"
#include "kastackedbrowserctrl.h"
#include "kastackedbrowserctrlstateproject.h"
#include "kastackedbrowsereditor.h"
#include "kastackedbrowsereditordockwidget.h"
#include "katreewidgetitem.h"
#include "modulelauncherinterface.h"
#include "projectmgrinterface.h"
#include "testfixture.h"
#include "ttree.h"

#include <QApplication>
#include <QLineEdit>
#include <QSet>
#include <QTreeWidgetItemIterator>
#include <QtTest>

// The host application as a person uses it, in a real window.
class E2EKAHost : public QObject
{
    Q_OBJECT
private slots:
    void initTestCase();
    void cleanupTestCase();
    void selectOpenSearchRenameClose();
    void windowIsNotBlank();

private:
    KAProjectBrowserTreeWidget* projectView() const;
    QTreeWidgetItem* findItem(QTreeWidget* view, const QString& text) const;

    TestFixture* m_fixture = nullptr;
    KAHostMainWindow* m_window = nullptr;
};

void E2EKAHost::initTestCase()
{
    kaInitTestEnvironment();
    m_fixture = new TestFixture;
    QVERIFY(!m_fixture->makeProject(QStringLiteral("Caffeine study")).isEmpty());
    QVERIFY(!m_fixture->makeProject(QStringLiteral("Pesticides")).isEmpty());
    m_window = new KAHostMainWindow(m_fixture->path());
    m_window->show();
    QVERIFY(QTest::qWaitForWindowExposed(m_window));
}

void E2EKAHost::cleanupTestCase()
{
    delete m_window;
    ProjectMgrInterface::returnMe()->closeAll();
    delete m_fixture;
}

KAProjectBrowserTreeWidget* E2EKAHost::projectView() const
{
    auto* state = dynamic_cast<KAStackedBrowserCtrlStateProject*>(
        m_window->explorer()->state(KAStackedBrowserCtrl::stateProject));
    return state ? state->projectCtrl()->treeWidget() : nullptr;
}

QTreeWidgetItem* E2EKAHost::findItem(QTreeWidget* view, const QString& text) const
{
    for (QTreeWidgetItemIterator it(view); *it; ++it) {
        if ((*it)->text(0) == text)
            return *it;
    }
    return nullptr;
}

void E2EKAHost::selectOpenSearchRenameClose()
{
    // The user opens the project selection and picks the first project.
    m_window->showProjectSelection();
    auto* module = qobject_cast<KAProjectSelectCtrl*>(ModuleLauncherInterface::returnMe()->module("kaGCP"));
    QVERIFY(module);
    const QList<const KAObject2Project*> projects = ProjectMgrInterface::returnMe()->projectList();
    QCOMPARE(projects.size(), 2);
    const KAObject2Project* project = projects.first();
    KAFileSystemBrowserCtrl* browser = module->browser();
    QVERIFY(browser->expandPath(QDir::toNativeSeparators(m_fixture->path()), false));
    QTreeWidgetItem* projectItem = nullptr;
    for (QTreeWidgetItemIterator it(browser->view()); *it; ++it) {
        auto* item = dynamic_cast<KATreeWidgetItem*>(*it);
        if (item && item->object() == project)
            projectItem = item;
    }
    QVERIFY(projectItem);
    browser->view()->setCurrentItem(projectItem);
    module->ribbon()->openAction()->trigger();
    QTRY_COMPARE(ProjectMgrInterface::returnMe()->currentProject(), project);

    // The project explorer shows it.
    KAProjectBrowserTreeWidget* view = projectView();
    QVERIFY(view);
    QTRY_VERIFY(view->topLevelItemCount() > 0);
    QVERIFY(findItem(view, project->name()));

    // A search typed in the explorer's field shows results.
    auto* dock = static_cast<KAStackedBrowserEditorDockWidget*>(m_window->explorer()->editor());
    KALineEditSearch* field = dock->editor()->searchField();
    field->setFocus();
    QTest::keyClicks(field, QStringLiteral("tic"));
    QTRY_VERIFY(findItem(view, QStringLiteral("Results")));
    QTRY_VERIFY(view->topLevelItemCount() >= 1);
    QTest::keyClick(field, Qt::Key_Escape);
    QTRY_VERIFY(!findItem(view, QStringLiteral("Results")));
    QTRY_VERIFY(findItem(view, project->name()));

    // A folder made in the Analysis branch is renamed in place.
    QTreeWidgetItem* analysis = findItem(view, QStringLiteral("Analysis"));
    QVERIFY(analysis);
    view->setCurrentItem(analysis);
    view->slotNewFolder();
    QTRY_VERIFY(view->renameEditor());
    auto* editor = qobject_cast<QLineEdit*>(view->renameEditor());
    QVERIFY(editor);
    editor->selectAll();
    QTest::keyClicks(editor, QStringLiteral("Batch 3"));
    QTest::keyClick(editor, Qt::Key_Return);
    QTRY_VERIFY(findItem(view, QStringLiteral("Batch 3")));
    const QString saved = QDir(project->folder()).filePath(QStringLiteral("Settings/default.projectbrowser.xml"));
    QTRY_VERIFY(QFile::exists(saved));
    QFile file(saved);
    QVERIFY(file.open(QIODevice::ReadOnly));
    QVERIFY(file.readAll().contains("folder=\"/Analysis/Batch 3\""));

    // Closing the project empties the explorer.
    m_window->closeCurrentProject();
    QTRY_COMPARE(view->topLevelItemCount(), 0);
}

// A rendered window has more than a handful of colours.
void E2EKAHost::windowIsNotBlank()
{
    const QImage shot = m_window->screenshot().toImage();
    QVERIFY(!shot.isNull());
    QSet<QRgb> colours;
    for (int y = 0; y < shot.height(); y += 4) {
        for (int x = 0; x < shot.width(); x += 4)
            colours.insert(shot.pixel(x, y));
    }
    QVERIFY2(colours.size() > 20, qPrintable(QString::number(colours.size())));
}

QTEST_MAIN(E2EKAHost)
#include "e2e_kahost.moc"
