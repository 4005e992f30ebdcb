#include "karibbongroup.h"
#include "karibbongroupexpandable.h"
#include "karibbonmodulebar.h"
#include "moduleobserver.h"
#include "testfixture.h"
#include "tpixmapcache.h"

#include <QAction>
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

// A module ribbon that records the window events reported to it: the
// module ribbons of the host fold their panels away on them.
struct RecordingBar : KARibbonModuleBar {
    RecordingBar() : KARibbonModuleBar(QStringLiteral("Open a project")) {}
    void slotEventOccured(QEvent::Type type) override { events.append(type); }
    QList<QEvent::Type> events;
};

} // namespace

class TestKARibbon : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { kaInitTestEnvironment(); }
    void expandableOpensBelowTheGroup();
    void groupsInOrderAndCloseRequestReachesObservers();
    void windowMoveAndHideReported();

private:
    // Puts the widget in a shown window, as the host's ribbon area does.
    template<typename W> W* show(W* widget)
    {
        m_window.reset(new QWidget);
        (new QVBoxLayout(m_window.get()))->addWidget(widget);
        m_window->setGeometry(40, 30, 700, 400);
        m_window->show();
        return QTest::qWaitForWindowExposed(m_window.get()) ? widget : nullptr;
    }

    std::unique_ptr<QWidget> m_window;
};

void TestKARibbon::expandableOpensBelowTheGroup()
{
    auto* group = show(new KARibbonGroupExpandable(QStringLiteral("Project selection")));
    QVERIFY(group);
    group->exec();
    QVERIFY(!group->isExpanded()); // nothing to show yet
    QPointer<QLabel> first = new QLabel(QStringLiteral("first"));
    group->setContent(first);
    auto* content = new QLabel(QStringLiteral("project list"));
    group->setContent(content);
    QVERIFY(!first); // the group owned it

    QSignalSpy expanded(group, &KARibbonGroupExpandable::expanded);
    QSignalSpy collapsed(group, &KARibbonGroupExpandable::collapsed);
    group->exec();
    group->exec(); // opening an open panel changes nothing
    QVERIFY(group->isExpanded() && content->isVisible());
    QCOMPARE(content->window(), static_cast<QWidget*>(group->panel()));
    QCOMPARE(group->panel()->geometry().topLeft(), group->mapToGlobal(QPoint(0, group->height())));
    QCOMPARE(expanded.count(), 1);

    // The arrow toggles the panel; Escape in the panel and hiding the group
    // fold it away.
    auto* arrow = group->findChild<QToolButton*>(QStringLiteral("kaRibbonExpandArrow"));
    QTest::mouseClick(arrow, Qt::LeftButton);
    QVERIFY(!group->isExpanded() && !arrow->isChecked() && !content->isVisible());
    QTest::mouseClick(arrow, Qt::LeftButton);
    QVERIFY(group->isExpanded() && arrow->isChecked());
    QTest::keyClick(group->panel(), Qt::Key_Escape);
    QVERIFY(!group->isExpanded() && !arrow->isChecked());
    group->exec();
    group->hide();
    QVERIFY(!group->isExpanded());
    QCOMPARE(collapsed.count(), 3);
}

// The module ribbons put their description first, then insert a group at
// index 1 before appending the others; the generic commands stay at the
// far right, apart from the groups. A group's title sits below its buttons.
void TestKARibbon::groupsInOrderAndCloseRequestReachesObservers()
{
    auto* bar = new KARibbonModuleBar(QStringLiteral("Open a project"));
    KARibbonGroup* description = bar->createDescriptionGroup(-9999, true);
    QCOMPARE(bar->createDescriptionGroup(-9999, true), description);
    auto* tools = new KARibbonGroup(QStringLiteral("Tools"));
    QAction open(TPixmapCache::icon("open_project"), QStringLiteral("Open"), nullptr);
    QToolButton* openButton = tools->addAction(&open);
    bar->addGroup(tools);
    auto* selection = new KARibbonGroupExpandable(QStringLiteral("Project selection"));
    bar->groupLayout()->insertWidget(1, selection);
    bar->addGenericActions(false, false);
    bar->addGenericActions(false, false); // made once
    QCOMPARE(bar->groups(), (QList<KARibbonGroup*>{description, selection, tools}));
    QVERIFY(bar->closeAction() && !bar->helpAction() && !bar->minimizeAction());
    QVERIFY(show(bar));
    auto* title = tools->findChild<QLabel*>(QStringLiteral("kaRibbonGroupTitle"));
    QVERIFY(title && title->isVisible() && title->geometry().top() >= openButton->geometry().bottom());
    QSignalSpy triggered(&open, &QAction::triggered);
    QTest::mouseClick(openButton, Qt::LeftButton);
    QCOMPARE(triggered.count(), 1);

    CountingObserver told, gone;
    bar->registerObserver(&told);
    bar->registerObserver(&told); // registered once
    bar->registerObserver(&gone);
    bar->unregisterObserver(&gone);
    for (QToolButton* button : bar->findChildren<QToolButton*>()) {
        if (button->defaultAction() == bar->closeAction())
            QTest::mouseClick(button, Qt::LeftButton);
    }
    QCOMPARE(told.requests, 1);
    QCOMPARE(gone.requests, 0);
}

// The bar watches the window it sits in, even when it was put there after
// it was made.
void TestKARibbon::windowMoveAndHideReported()
{
    for (QEvent::Type expected : {QEvent::Move, QEvent::Hide}) {
        auto* bar = show(new RecordingBar);
        QVERIFY(bar);
        bar->events.clear();
        if (expected == QEvent::Move)
            m_window->move(m_window->pos() + QPoint(25, 15));
        else
            m_window->hide();
        QTRY_VERIFY(bar->events.contains(expected));
    }
}

QTEST_MAIN(TestKARibbon)
#include "tst_karibbon.moc"
