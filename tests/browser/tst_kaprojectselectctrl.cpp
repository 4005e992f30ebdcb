#include "kafilesystembrowserctrl.h"
#include "kafilesystembrowsereditor.h"
#include "kaobject2project.h"
#include "kaprojectselectctrl.h"
#include "karibbonprojectselect.h"
#include "katreewidgetitem.h"
#include "mainwindowinterface.h"
#include "messageloggerinterface.h"
#include "projectmgrinterface.h"
#include "testfixture.h"
#include "tmessagebox.h"

#include <QAction>
#include <QStatusBar>
#include <QTreeWidgetItemIterator>
#include <QtTest>

namespace {
using Opened = QList<QPair<const KAObject2*, int>>; // object and mode

// The host window as the module sees it: records what it is asked to open.
class RecordingWindow : public MainWindowInterface
{
public:
    QStatusBar* statusBar() override { return &bar; }
    bool openObject(const KAObject2* object, int mode) override { opened.append({object, mode}); return true; }
    Opened opened;
    QStatusBar bar;
};

QStringList logTexts() { return MessageLoggerInterface::returnMe()->texts(); }
} // namespace

// The project selection module on three generated projects (Alpha, Beta,
// Gamma), its ribbon's commands answered through the message-box seam.
class TestKAProjectSelectCtrl : public QObject
{
    Q_OBJECT

    // Selects those projects' items in the module's real view, unfolding the path as a user would.
    void select(int first, int count)
    {
        QVERIFY(m_ctrl->browser()->expandPath(QDir::toNativeSeparators(m_fixture->path()), false));
        QList<const KAObject2*> wanted;
        for (const QString& folder : m_folders.mid(first, count))
            wanted << ProjectMgrInterface::returnMe()->findProject(folder);
        for (QTreeWidgetItemIterator it(m_ctrl->browser()->view()); *it; ++it) {
            if (auto* item = dynamic_cast<KATreeWidgetItem*>(*it))
                item->setSelected(wanted.removeOne(item->object()));
        }
        QVERIFY(wanted.isEmpty());
    }

    std::unique_ptr<TestFixture> m_fixture;
    RecordingWindow m_window;
    std::unique_ptr<KAProjectSelectCtrl> m_ctrl;
    QStringList m_folders;

private slots:
    void initTestCase() { kaInitTestEnvironment(); }
    void init()
    {
        m_fixture.reset(new TestFixture);
        m_folders.clear();
        for (const char* name : {"Alpha", "Beta", "Gamma"})
            m_folders << m_fixture->makeProject(QLatin1String(name));
        ProjectMgrInterface::returnMe()->setWorkspaceFolders({m_fixture->path()});
        m_window.opened.clear();
        MainWindowInterface::setInstance(&m_window);
        MessageLoggerInterface::returnMe()->clear();
        m_ctrl.reset(new KAProjectSelectCtrl);
        QVERIFY(m_ctrl->initView());
    }
    void cleanup()
    {
        TMessageBox::setAnswerProvider({});
        m_ctrl.reset();
        MainWindowInterface::setInstance(nullptr);
        ProjectMgrInterface::returnMe()->closeAll();
        ProjectMgrInterface::returnMe()->setWorkspaceFolders({});
        m_fixture.reset();
    }

    // Exactly one project opens, always in mode 2: the read-only open is
    // the host's to make; a normal open of a terminated project says so.
    void open_data()
    {
        QTest::addColumn<int>("selected");
        QTest::addColumn<bool>("readOnly");
        QTest::addColumn<int>("state"); // of Alpha
        QTest::addColumn<QString>("log");
        QTest::newRow("none") << 0 << false << 0 << "You must select a project first";
        QTest::newRow("several") << 2 << false << 0
                                 << "Several projects are selected, only one project can be opened at a time";
        const QString terminated = QStringLiteral("Since project is terminated it can only be read only opened");
        QTest::newRow("normal open, terminated") << 1 << false << 4 << terminated;
        QTest::newRow("normal open, terminated archived") << 1 << false << 7 << terminated;
        QTest::newRow("read-only open, terminated") << 1 << true << 4 << "";
        QTest::newRow("normal open, in progress") << 1 << false << 0 << "";
    }
    void open()
    {
        QFETCH(int, selected);
        QFETCH(bool, readOnly);
        QFETCH(int, state);
        QFETCH(QString, log);
        const KAObject2Project* project = ProjectMgrInterface::returnMe()->findProject(m_folders.first());
        const_cast<KAObject2Project*>(project)->setProjectState(state);
        select(0, selected);
        // Through the ribbon's commands, as the user gives them.
        (readOnly ? m_ctrl->ribbon()->readOnlyOpenAction() : m_ctrl->ribbon()->openAction())->trigger();
        QCOMPARE(logTexts().join('\n'), log);
        QCOMPARE(m_window.opened, selected == 1 ? (Opened{{project, 2}}) : Opened());
        if (selected != 1)
            QCOMPARE(MessageLoggerInterface::returnMe()->entries().first().level, MessageLoggerInterface::LevelWarning);
    }

    void deleteQuestions_data()
    {
        QTest::addColumn<QList<int>>("answers"); // 0 yes, 1 no, 2 cancel
        QTest::addColumn<QList<bool>>("deleted");
        QTest::addColumn<QString>("information");
        QTest::newRow("cancel at the third") << QList<int>{0, 0, 2} << QList<bool>{false, false, false}
                                             << "Deleting cancelled by the user";
        QTest::newRow("no at the second") << QList<int>{0, 1, 0} << QList<bool>{true, false, true}
                                          << "Deletion of project <b>Beta</b> cancelled by the user";
    }
    void deleteQuestions()
    {
        QFETCH(QList<int>, answers);
        QFETCH(QList<bool>, deleted);
        QFETCH(QString, information);
        QStringList asked;
        TMessageBox::setAnswerProvider([&](const QString&, const QString& text, bool*) {
            asked << text;
            return answers.value(asked.size() - 1, 2);
        });
        select(0, 3);
        // A triggered signal from any other action than the ribbon's own does nothing.
        QAction stranger;
        connect(&stranger, &QAction::triggered, m_ctrl->ribbon(), &KARibbonProjectSelect::slotActionTiggered);
        stranger.trigger();
        QVERIFY(asked.isEmpty());
        QCOMPARE(logTexts(), QStringList());
        QCOMPARE(m_ctrl->ribbon()->deleteAction()->shortcut(), QKeySequence(QStringLiteral("Del")));
        m_ctrl->ribbon()->deleteAction()->trigger();
        QCOMPARE(asked.size(), 3);
        QVERIFY(asked.first().startsWith(QStringLiteral("<nobr>Do you really want to suppress the project</nobr> <b>")));
        for (int i = 0; i < m_folders.size(); ++i)
            QCOMPARE(!QFileInfo::exists(m_folders.at(i)), deleted.at(i));
        QVERIFY2(logTexts().contains(information), qPrintable(logTexts().join('\n')));
    }
};

QTEST_MAIN(TestKAProjectSelectCtrl)
#include "tst_kaprojectselectctrl.moc"
