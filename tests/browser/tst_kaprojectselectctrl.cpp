#include "kaabstractbrowserlistview.h"
#include "kafilesystembrowserctrl.h"
#include "kafilesystembrowsereditor.h"
#include "kafilesystembrowserfilterpackage.h"
#include "kaobject2project.h"
#include "kaprojectselectctrl.h"
#include "kaprojectselecteditor.h"
#include "karibbonprojectselect.h"
#include "katreewidgetitem.h"
#include "mainwindowinterface.h"
#include "messageloggerinterface.h"
#include "projectmgrinterface.h"
#include "tdatabase.h"
#include "testfixture.h"
#include "tmessagebox.h"
#include "ttree.h"

#include "kafilteractiongroup.h"

#include <QActionGroup>
#include <QStatusBar>
#include <QTreeWidgetItemIterator>
#include <QtTest>

namespace {
// The host window as the module sees it: records what it is asked to open.
class RecordingWindow : public MainWindowInterface
{
public:
    QStatusBar* statusBar() override { return &m_bar; }
    bool openObject(const KAObject2* object, int mode) override
    {
        opened.append({object, mode});
        return true;
    }
    QList<QPair<const KAObject2*, int>> opened;

private:
    QStatusBar m_bar;
};
} // namespace

class TestKAProjectSelectCtrl : public QObject
{
    Q_OBJECT
private slots:
    void initTestCase();
    void init();
    void cleanup();

    void openNeedsExactlyOneProject_data();
    void openNeedsExactlyOneProject();
    void terminatedProjectOpenedWithModeTwoEitherWay_data();
    void terminatedProjectOpenedWithModeTwoEitherWay();
    void deleteQuestions_data();
    void deleteQuestions();
    void ribbonCommandsAndSender();
    void deleteKeyRunsDeleteCommand();
    void projectKindHiddenInDisplayMenu();
    void uncheckingEveryDisplayModeFiltersEverything();

private:
    void select(const QList<const KAObject2Project*>& projects);
    QList<const KAObject2Project*> projects() const;

    TestFixture* m_fixture = nullptr;
    RecordingWindow* m_window = nullptr;
    KAProjectSelectCtrl* m_ctrl = nullptr;
    QStringList m_folders;
};

void TestKAProjectSelectCtrl::initTestCase()
{
    kaInitTestEnvironment();
}

void TestKAProjectSelectCtrl::init()
{
    m_fixture = new TestFixture;
    m_folders.clear();
    for (const QString& name : {QStringLiteral("Alpha"), QStringLiteral("Beta"), QStringLiteral("Gamma")})
        m_folders << m_fixture->makeProject(name);
    ProjectMgrInterface::returnMe()->setWorkspaceFolders({m_fixture->path()});
    m_window = new RecordingWindow;
    MainWindowInterface::setInstance(m_window);
    MessageLoggerInterface::returnMe()->clear();
    m_ctrl = new KAProjectSelectCtrl;
    QVERIFY(m_ctrl->initView());
}

void TestKAProjectSelectCtrl::cleanup()
{
    TMessageBox::setAnswerProvider({});
    delete m_ctrl;
    m_ctrl = nullptr;
    MainWindowInterface::setInstance(nullptr);
    delete m_window;
    ProjectMgrInterface::returnMe()->closeAll();
    ProjectMgrInterface::returnMe()->setWorkspaceFolders({});
    delete m_fixture;
}

QList<const KAObject2Project*> TestKAProjectSelectCtrl::projects() const
{
    QList<const KAObject2Project*> list;
    for (const QString& folder : m_folders)
        list << ProjectMgrInterface::returnMe()->findProject(folder);
    return list;
}

// Selects the projects' items in the module's real view, unfolding the path
// to their folder as a user would.
void TestKAProjectSelectCtrl::select(const QList<const KAObject2Project*>& wanted)
{
    KAFileSystemBrowserCtrl* browser = m_ctrl->browser();
    QVERIFY(browser->expandPath(QDir::toNativeSeparators(m_fixture->path()), false));
    KAFileSystemBrowserEditor* view = browser->view();
    view->clearSelection();
    int found = 0;
    for (QTreeWidgetItemIterator it(view); *it; ++it) {
        auto* item = dynamic_cast<KATreeWidgetItem*>(*it);
        const KAObject2* object = item ? item->object() : nullptr;
        if (object && object->type() == KAObjectTypeProject
            && wanted.contains(static_cast<const KAObject2Project*>(object))) {
            item->setSelected(true);
            ++found;
        }
    }
    QCOMPARE(found, wanted.size());
}

void TestKAProjectSelectCtrl::openNeedsExactlyOneProject_data()
{
    QTest::addColumn<int>("selected");
    QTest::addColumn<QString>("warning");
    QTest::newRow("none") << 0 << "You must select a project first";
    QTest::newRow("several") << 2 << "Several projects are selected, only one project can be opened at a time";
}

void TestKAProjectSelectCtrl::openNeedsExactlyOneProject()
{
    QFETCH(int, selected);
    QFETCH(QString, warning);
    select(projects().mid(0, selected));
    m_ctrl->actionOpen(false);
    QVERIFY(m_window->opened.isEmpty());
    const QList<MessageLoggerInterface::Entry> log = MessageLoggerInterface::returnMe()->entries();
    QCOMPARE(log.size(), 1);
    QCOMPARE(log.first().level, MessageLoggerInterface::LevelWarning);
    QCOMPARE(log.first().text, warning);
}

void TestKAProjectSelectCtrl::terminatedProjectOpenedWithModeTwoEitherWay_data()
{
    QTest::addColumn<bool>("readOnly");
    QTest::addColumn<int>("state");
    QTest::addColumn<bool>("message");
    QTest::newRow("normal open, terminated") << false << 4 << true;
    QTest::newRow("normal open, terminated archived") << false << 7 << true;
    QTest::newRow("read-only open, terminated") << true << 4 << false;
    QTest::newRow("normal open, in progress") << false << 0 << false;
}

void TestKAProjectSelectCtrl::terminatedProjectOpenedWithModeTwoEitherWay()
{
    QFETCH(bool, readOnly);
    QFETCH(int, state);
    QFETCH(bool, message);
    const KAObject2Project* project = projects().first();
    const_cast<KAObject2Project*>(project)->setProjectState(state);
    select({project});
    m_ctrl->actionOpen(readOnly);
    QCOMPARE(m_window->opened.size(), 1);
    QCOMPARE(m_window->opened.first().first, static_cast<const KAObject2*>(project));
    QCOMPARE(m_window->opened.first().second, 2);
    const QStringList log = MessageLoggerInterface::returnMe()->texts();
    QCOMPARE(log.contains(QStringLiteral("Since project is terminated it can only be read only opened")), message);
}

void TestKAProjectSelectCtrl::deleteQuestions_data()
{
    QTest::addColumn<QList<int>>("answers");
    QTest::addColumn<QList<bool>>("deleted");
    QTest::addColumn<QString>("information");
    QTest::newRow("cancel at the third") << QList<int>{0, 0, 2} << QList<bool>{false, false, false}
                                         << "Deleting cancelled by the user";
    QTest::newRow("no at the second") << QList<int>{0, 1, 0} << QList<bool>{true, false, true}
                                      << "Deletion of project <b>Beta</b> cancelled by the user";
}

void TestKAProjectSelectCtrl::deleteQuestions()
{
    QFETCH(QList<int>, answers);
    QFETCH(QList<bool>, deleted);
    QFETCH(QString, information);
    // Project names come from their databases; make them known.
    QStringList asked;
    int next = 0;
    TMessageBox::setAnswerProvider([&](const QString&, const QString& text, bool*) {
        asked << text;
        return answers.value(next++, 2);
    });
    select(projects());
    m_ctrl->actionDelete();
    QCOMPARE(asked.size(), 3);
    QVERIFY(asked.first().startsWith(QStringLiteral("<nobr>Do you really want to suppress the project</nobr> <b>")));
    for (int i = 0; i < m_folders.size(); ++i)
        QCOMPARE(!QFileInfo::exists(m_folders.at(i)), deleted.at(i));
    QVERIFY2(MessageLoggerInterface::returnMe()->texts().contains(information),
             qPrintable(MessageLoggerInterface::returnMe()->texts().join('\n')));
}

void TestKAProjectSelectCtrl::ribbonCommandsAndSender()
{
    KARibbonProjectSelect* ribbon = m_ctrl->ribbon();
    QVERIFY(ribbon);
    QCOMPARE(ribbon->getIdForHelp(), 64);
    ribbon->openAction()->trigger();
    QCOMPARE(MessageLoggerInterface::returnMe()->texts(), QStringList{"You must select a project first"});
    // A triggered signal from any other action does nothing.
    QAction stranger;
    connect(&stranger, &QAction::triggered, ribbon, &KARibbonProjectSelect::slotActionTiggered);
    stranger.trigger();
    QCOMPARE(MessageLoggerInterface::returnMe()->texts().size(), 1);
    select({projects().at(1)});
    ribbon->readOnlyOpenAction()->trigger();
    QCOMPARE(m_window->opened.size(), 1);
}

void TestKAProjectSelectCtrl::deleteKeyRunsDeleteCommand()
{
    KARibbonProjectSelect* ribbon = m_ctrl->ribbon();
    QCOMPARE(ribbon->deleteAction()->shortcut(), QKeySequence(QStringLiteral("Del")));
    QCOMPARE(ribbon->deleteAction()->text(), QStringLiteral("Project delete"));
    QCOMPARE(ribbon->editPropertiesAction()->text(), QStringLiteral("Edit properties"));
}

void TestKAProjectSelectCtrl::projectKindHiddenInDisplayMenu()
{
    QActionGroup* group = m_ctrl->editor()->filterActions();
    QAction* projectAction = nullptr;
    for (QAction* a : group->actions()) {
        if (a->data().toInt() == KAObjectTypeProject)
            projectAction = a;
    }
    QVERIFY(projectAction);
    QVERIFY(!projectAction->isVisible());
}

void TestKAProjectSelectCtrl::uncheckingEveryDisplayModeFiltersEverything()
{
    QActionGroup* group = m_ctrl->editor()->filterActions();
    for (QAction* a : group->actions())
        a->setChecked(false);
    group->actions().first()->trigger(); // checks it back: uncheck it again through the slot path
    group->actions().first()->setChecked(false);
    QMetaObject::invokeMethod(group->actions().first(), "triggered", Q_ARG(bool, false));
    for (KAObjectType type : {KAObjectTypeProject, KAObjectTypeAnalysis, KAObjectTypeGlobalIndexation})
        QVERIFY(!m_ctrl->viewFilter()->contains(type));
    QVERIFY(m_ctrl->viewFilter()->contains(FsProjectContent));
}

QTEST_MAIN(TestKAProjectSelectCtrl)
#include "tst_kaprojectselectctrl.moc"
