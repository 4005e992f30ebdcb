#include "karibbonbar.h"
#include "karibbongroup.h"
#include "karibbongroupexpandable.h"
#include "karibbonmodulebar.h"
#include "moduleobserver.h"
#include "testfixture.h"
#include "tpixmapcache.h"

#include <QAction>
#include <QBoxLayout>
#include <QFrame>
#include <QLabel>
#include <QSignalSpy>
#include <QTest>
#include <QToolButton>
#include <QVBoxLayout>

#include <memory>

namespace {

struct CountingObserver : ModuleObserver {
    int requests = 0;
    void moduleCloseRequested() override { ++requests; }
};

// A module ribbon that records the window events reported to it and, like
// the module ribbons of the host, folds its panel away on them.
class RecordingBar : public KARibbonModuleBar
{
public:
    RecordingBar()
        : KARibbonModuleBar(QStringLiteral("Open a project"))
    {
        panel = new KARibbonGroupExpandable(QStringLiteral("Project selection"), this);
        panel->setContent(new QLabel(QStringLiteral("project list")));
        addGroup(panel);
    }
    void slotEventOccured(QEvent::Type type) override
    {
        events.append(type);
        if (type == QEvent::Move || type == QEvent::Hide)
            panel->collapse();
    }
    KARibbonGroupExpandable* panel = nullptr; // owned by the bar
    QList<QEvent::Type> events;
};

QToolButton* buttonOf(QWidget* parent, QAction* action)
{
    for (QToolButton* button : parent->findChildren<QToolButton*>()) {
        if (button->defaultAction() == action)
            return button;
    }
    return nullptr;
}

} // namespace

class TestKARibbon : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void cleanup();

    void groupButtons();
    void groupTitleBelowButtons();
    void expandableOpensBelowTheGroup();
    void expandableWithoutContentStaysClosed();
    void expandableToggledByItsArrow();
    void expandableReplacesItsContent();
    void groupsInsertedAtAnIndex();
    void closeRequestReachesObservers();
    void moduleDescription();
    void windowMoveAndHideReported_data();
    void windowMoveAndHideReported();

private:
    std::unique_ptr<QWidget> m_window;
};

void TestKARibbon::initTestCase()
{
    kaInitTestEnvironment();
}

void TestKARibbon::init()
{
    m_window.reset(new QWidget);
    m_window->setLayout(new QVBoxLayout);
    m_window->move(40, 30);
    m_window->resize(700, 400);
}

void TestKARibbon::cleanup()
{
    m_window.reset();
}

void TestKARibbon::groupButtons()
{
    KARibbonGroup group(QStringLiteral("Tools"));
    QAction open(TPixmapCache::icon("open_project"), QStringLiteral("Open"), nullptr);
    QToolButton* fromAction = group.addAction(&open);
    QCOMPARE(fromAction->defaultAction(), &open);
    QCOMPARE(fromAction->toolButtonStyle(), Qt::ToolButtonTextUnderIcon);
    QCOMPARE(fromAction->iconSize(), KARibbonGroup::largeIconSize());
    QCOMPARE(fromAction->text(), QStringLiteral("Open"));

    QToolButton* plain = group.addButton(QStringLiteral("Show properties"), TPixmapCache::icon("description"),
                                         QStringLiteral("Display more information about selected object"));
    QCOMPARE(plain->text(), QStringLiteral("Show properties"));
    QCOMPARE(plain->toolTip(), QStringLiteral("Display more information about selected object"));
    QVERIFY(!plain->icon().isNull());
    QCOMPARE(plain->toolButtonStyle(), Qt::ToolButtonTextUnderIcon);

    // A button of the group runs its action.
    group.show();
    QVERIFY(QTest::qWaitForWindowExposed(&group));
    QSignalSpy triggered(&open, &QAction::triggered);
    QTest::mouseClick(fromAction, Qt::LeftButton);
    QCOMPARE(triggered.count(), 1);
    QCOMPARE(group.title(), QStringLiteral("Tools"));
}

void TestKARibbon::groupTitleBelowButtons()
{
    auto* group = new KARibbonGroup(QStringLiteral("Display"), m_window.get());
    m_window->layout()->addWidget(group);
    QToolButton* button = group->addButton(QStringLiteral("Show properties"), TPixmapCache::icon("description"), QString());
    m_window->show();
    QVERIFY(QTest::qWaitForWindowExposed(m_window.get()));
    auto* title = group->findChild<QLabel*>(QStringLiteral("kaRibbonGroupTitle"));
    QVERIFY(title);
    QVERIFY(title->isVisible());
    QVERIFY(title->geometry().top() >= button->geometry().bottom());
}

void TestKARibbon::expandableOpensBelowTheGroup()
{
    auto* group = new KARibbonGroupExpandable(QStringLiteral("Project selection"), m_window.get());
    m_window->layout()->addWidget(group);
    auto* content = new QLabel(QStringLiteral("project list"));
    group->setContent(content);
    m_window->show();
    QVERIFY(QTest::qWaitForWindowExposed(m_window.get()));
    QVERIFY(!group->isExpanded());

    QSignalSpy expanded(group, &KARibbonGroupExpandable::expanded);
    QSignalSpy collapsed(group, &KARibbonGroupExpandable::collapsed);
    group->exec();
    QVERIFY(group->isExpanded());
    QVERIFY(content->isVisible());
    QCOMPARE(content->window(), static_cast<QWidget*>(group->panel()));
    QCOMPARE(group->panel()->geometry().topLeft(), group->mapToGlobal(QPoint(0, group->height())));
    QVERIFY(group->panel()->width() >= group->width());
    QCOMPARE(expanded.count(), 1);

    // Opening an open panel changes nothing.
    group->exec();
    QCOMPARE(expanded.count(), 1);

    group->collapse();
    QVERIFY(!group->isExpanded());
    QVERIFY(!content->isVisible());
    QCOMPARE(collapsed.count(), 1);

    // Hiding the group folds its panel away too.
    group->exec();
    QVERIFY(group->isExpanded());
    group->hide();
    QVERIFY(!group->isExpanded());
    QCOMPARE(collapsed.count(), 2);
}

void TestKARibbon::expandableWithoutContentStaysClosed()
{
    auto* group = new KARibbonGroupExpandable(QStringLiteral("Empty"), m_window.get());
    m_window->layout()->addWidget(group);
    m_window->show();
    QVERIFY(QTest::qWaitForWindowExposed(m_window.get()));
    group->exec();
    QVERIFY(!group->isExpanded());
}

void TestKARibbon::expandableToggledByItsArrow()
{
    auto* group = new KARibbonGroupExpandable(QStringLiteral("Project selection"), m_window.get());
    m_window->layout()->addWidget(group);
    group->setContent(new QLabel(QStringLiteral("project list")));
    m_window->show();
    QVERIFY(QTest::qWaitForWindowExposed(m_window.get()));
    auto* arrow = group->findChild<QToolButton*>(QStringLiteral("kaRibbonExpandArrow"));
    QVERIFY(arrow);
    QTest::mouseClick(arrow, Qt::LeftButton);
    QVERIFY(group->isExpanded());
    QVERIFY(arrow->isChecked());
    QTest::mouseClick(arrow, Qt::LeftButton);
    QVERIFY(!group->isExpanded());
    QVERIFY(!arrow->isChecked());

    // Escape in the panel folds it.
    group->exec();
    QTest::keyClick(group->panel(), Qt::Key_Escape);
    QVERIFY(!group->isExpanded());
    QVERIFY(!arrow->isChecked());
}

void TestKARibbon::expandableReplacesItsContent()
{
    KARibbonGroupExpandable group(QStringLiteral("Project selection"));
    QPointer<QLabel> first = new QLabel(QStringLiteral("first"));
    group.setContent(first);
    QCOMPARE(group.content(), first.data());
    group.setContent(new QLabel(QStringLiteral("second")));
    QVERIFY(!first); // the group owned it
    QCOMPARE(qobject_cast<QLabel*>(group.content())->text(), QStringLiteral("second"));
}

// The module ribbons put their description first, then insert a group at
// index 1 before appending the others.
void TestKARibbon::groupsInsertedAtAnIndex()
{
    KARibbonModuleBar bar(QStringLiteral("Open a project"));
    bar.setModulePixmap("open_project");
    KARibbonGroup* description = bar.createDescriptionGroup(-9999, true);
    QCOMPARE(bar.createDescriptionGroup(-9999, true), description);
    QCOMPARE(bar.descriptionHelpId(), -9999);
    auto* tools = new KARibbonGroup(QStringLiteral("Tools"));
    auto* display = new KARibbonGroup(QStringLiteral("Display"));
    bar.addGroup(tools);
    bar.addGroup(display);
    auto* selection = new KARibbonGroupExpandable(QStringLiteral("Project selection"));
    bar.groupLayout()->insertWidget(1, selection);
    const QList<KARibbonGroup*> expected{description, selection, tools, display};
    QCOMPARE(bar.groups(), expected);
    for (KARibbonGroup* group : expected)
        QCOMPARE(group->parentWidget(), static_cast<QWidget*>(&bar));

    // The generic commands stay at the far right, apart from the groups.
    bar.addGenericActions(false, false);
    QCOMPARE(bar.groups(), expected);
}

void TestKARibbon::closeRequestReachesObservers()
{
    auto* bar = new KARibbonModuleBar(QStringLiteral("Open a project"), m_window.get());
    m_window->layout()->addWidget(bar);
    bar->addGenericActions(false, false);
    bar->addGenericActions(false, false); // made once
    QVERIFY(bar->closeAction());
    QVERIFY(!bar->helpAction());
    QVERIFY(!bar->minimizeAction());
    QCOMPARE(bar->closeAction()->text(), QStringLiteral("Close"));
    m_window->show();
    QVERIFY(QTest::qWaitForWindowExposed(m_window.get()));

    CountingObserver told;
    CountingObserver gone;
    bar->registerObserver(&told);
    bar->registerObserver(&told); // registered once
    bar->registerObserver(&gone);
    bar->unregisterObserver(&gone);

    QToolButton* button = buttonOf(bar, bar->closeAction());
    QVERIFY(button);
    QTest::mouseClick(button, Qt::LeftButton);
    QCOMPARE(told.requests, 1);
    QCOMPARE(gone.requests, 0);
    QCOMPARE(bar->getIdForHelp(), 0);
}

void TestKARibbon::moduleDescription()
{
    KARibbonModuleBar bar(QStringLiteral("Open a project"));
    bar.createDescriptionGroup(-9999, true);
    bar.setModuleDescription("open_project", QStringLiteral("Project selection"));
    QCOMPARE(bar.moduleDescription(), QStringLiteral("Project selection"));
    QCOMPARE(bar.modulePixmap(), QByteArray("open_project"));
    auto* pixmap = bar.findChild<QLabel*>(QStringLiteral("kaRibbonModulePixmap"));
    QVERIFY(pixmap);
    QVERIFY(!pixmap->pixmap(Qt::ReturnByValue).isNull());
    QCOMPARE(bar.findChild<QLabel*>(QStringLiteral("kaRibbonModuleTitle"))->text(), QStringLiteral("Open a project"));

    QLabel* label = bar.createModuleLabel(QStringLiteral("Select a project"), 350);
    QCOMPARE(label->text(), QStringLiteral("Select a project"));
    QCOMPARE(label->width(), 350);
    QCOMPARE(label->minimumWidth(), 350);

    QMap<int, QAction*> actions;
    QAction a(nullptr);
    actions.insert(3, &a);
    bar.createActionGroup(actions);
    QCOMPARE(bar.actionList(), actions);
}

void TestKARibbon::windowMoveAndHideReported_data()
{
    QTest::addColumn<bool>("move");
    QTest::addColumn<int>("expected");

    QTest::newRow("window moved") << true << int(QEvent::Move);
    QTest::newRow("window hidden") << false << int(QEvent::Hide);
}

// The bar watches the window it sits in, even when it was put there after
// it was made; the event folds the bar's panel away.
void TestKARibbon::windowMoveAndHideReported()
{
    QFETCH(bool, move);
    QFETCH(int, expected);

    auto* bar = new RecordingBar;
    m_window->layout()->addWidget(bar);
    m_window->show();
    QVERIFY(QTest::qWaitForWindowExposed(m_window.get()));
    bar->panel->exec();
    QVERIFY(bar->panel->isExpanded());
    bar->events.clear();

    if (move)
        m_window->move(m_window->pos() + QPoint(25, 15));
    else
        m_window->hide();
    QTRY_VERIFY(bar->events.contains(QEvent::Type(expected)));
    QVERIFY(!bar->panel->isExpanded());
}

QTEST_MAIN(TestKARibbon)
#include "tst_karibbon.moc"
