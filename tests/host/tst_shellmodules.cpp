#include "kamodulectrl.h"
#include "karibbonmodulebar.h"
#include "messageloggerinterface.h"
#include "modulelauncherinterface.h"
#include "ribboninterface.h"
#include "testfixture.h"

#include <QAction>
#include <QPointer>
#include <QSignalSpy>
#include <QStackedWidget>
#include <QTest>
#include <QToolButton>

#include <memory>

namespace {

const char* const ModuleId = "testModule";

// A module with a ribbon, as the host modules are made: the ribbon goes to
// the ribbon service in initView and back in the destructor.
class RibbonModule : public KAModuleCtrl
{
public:
    explicit RibbonModule(bool viewShows = true)
        : KAModuleCtrl(QString::fromLatin1(ModuleId))
        , m_viewShows(viewShows)
    {
        addAction(1, new QAction(QStringLiteral("Open")));
    }
    ~RibbonModule() override
    {
        if (ribbon) {
            RibbonInterface::returnMe()->removeRibbon(ribbon);
            ribbon->deleteLater();
        }
    }
    bool initView() override
    {
        ++initViews;
        if (!m_viewShows)
            return false;
        ribbon = new KARibbonModuleBar(QStringLiteral("Test module"));
        ribbon->createActionGroup(getActionList());
        ribbon->registerObserver(this);
        ribbon->addGenericActions(false, false);
        RibbonInterface::returnMe()->addRibbon(ribbon, true, true);
        return true;
    }
    void editorHasBeenClosed() override
    {
        ++closes;
        KAModuleCtrl::editorHasBeenClosed();
        // Still alive here, inside the ribbon's own signal: deleted later.
        aliveAfterClose = !moduleId().isEmpty();
    }

    QPointer<KARibbonModuleBar> ribbon; // released with deleteLater
    int initViews = 0;
    int closes = 0;
    bool aliveAfterClose = false;

private:
    bool m_viewShows;
};

ModuleLauncherInterface* launcher()
{
    return ModuleLauncherInterface::returnMe();
}

RibbonInterface* ribbons()
{
    return RibbonInterface::returnMe();
}

} // namespace

class TestShellModules : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void cleanup();

    void launchedOnce();
    void closedFromInsideItsOwnSlot();
    void secondCloseChangesNothing();
    void failedViewDeletesTheModule();
    void unknownModuleRefused();
    void moduleOwnsItsActions();
    void ribbonsAddedAndRemoved();
    void ribbonsListedBeforeTheHostMoveIn();
    void hiddenAreaShownOnRequest_data();
    void hiddenAreaShownOnRequest();

private:
    std::unique_ptr<QStackedWidget> m_area;
    int m_made = 0;
    bool m_viewShows = true;
};

void TestShellModules::initTestCase()
{
    kaInitTestEnvironment();
}

void TestShellModules::init()
{
    MessageLoggerInterface::returnMe()->clear();
    m_made = 0;
    m_viewShows = true;
    m_area.reset(new QStackedWidget);
    m_area->show();
    QVERIFY(QTest::qWaitForWindowExposed(m_area.get()));
    ribbons()->setHost(m_area.get());
    launcher()->registerModule(QString::fromLatin1(ModuleId), [this]() {
        ++m_made;
        return new RibbonModule(m_viewShows);
    });
}

void TestShellModules::cleanup()
{
    launcher()->closeAll();
    launcher()->unregisterModule(QString::fromLatin1(ModuleId));
    // What is still listed was made by the test itself.
    for (QWidget* ribbon : ribbons()->ribbons()) {
        ribbons()->removeRibbon(ribbon);
        delete ribbon;
    }
    ribbons()->setHost(nullptr);
    m_area.reset();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
}

void TestShellModules::launchedOnce()
{
    QSignalSpy launched(launcher(), &ModuleLauncherInterface::moduleLaunched);
    auto* first = static_cast<RibbonModule*>(launcher()->launch(QString::fromLatin1(ModuleId)));
    QVERIFY(first);
    QCOMPARE(first->moduleId(), QString::fromLatin1(ModuleId));
    auto* second = launcher()->launch(QString::fromLatin1(ModuleId));
    QCOMPARE(second, first);
    QCOMPARE(m_made, 1);
    QCOMPARE(first->initViews, 1);
    QCOMPARE(launched.count(), 1);
    QCOMPARE(launcher()->current(), first);
    QCOMPARE(launcher()->module(QString::fromLatin1(ModuleId)), first);
    // Its ribbon is the one the host shows.
    QCOMPARE(ribbons()->currentRibbon(), first->ribbon.data());
    QCOMPARE(m_area->currentWidget(), first->ribbon.data());
}

// The ribbon's Close button ends in the module asking for its own close,
// from inside the signal of a widget the module owns: nothing may be
// deleted before that call returns.
void TestShellModules::closedFromInsideItsOwnSlot()
{
    QPointer<RibbonModule> module = static_cast<RibbonModule*>(launcher()->launch(QString::fromLatin1(ModuleId)));
    QVERIFY(module);
    QPointer<KARibbonModuleBar> ribbon = module->ribbon;
    QSignalSpy closed(launcher(), &ModuleLauncherInterface::moduleClosed);
    QToolButton* close = nullptr;
    for (QToolButton* button : ribbon->findChildren<QToolButton*>()) {
        if (button->defaultAction() == ribbon->closeAction())
            close = button;
    }
    QVERIFY(close);
    QTest::mouseClick(close, Qt::LeftButton);

    QVERIFY(module);
    QCOMPARE(module->closes, 1);
    QVERIFY(module->aliveAfterClose);
    QCOMPARE(closed.count(), 1);
    QCOMPARE(closed.first().first().toString(), QString::fromLatin1(ModuleId));
    QVERIFY(!launcher()->module(QString::fromLatin1(ModuleId)));
    QVERIFY(!launcher()->current());

    QTRY_VERIFY(!module);
    QTRY_VERIFY(!ribbon);
    QVERIFY(!ribbons()->contains(ribbon));
    QCOMPARE(m_area->count(), 0);

    // A new launch makes a new module.
    QVERIFY(launcher()->launch(QString::fromLatin1(ModuleId)));
    QCOMPARE(m_made, 2);
}

void TestShellModules::secondCloseChangesNothing()
{
    QPointer<KAModuleCtrl> module = launcher()->launch(QString::fromLatin1(ModuleId));
    QSignalSpy closed(launcher(), &ModuleLauncherInterface::moduleClosed);
    launcher()->closeModule(module);
    launcher()->closeModule(module);
    QCOMPARE(closed.count(), 1);
    QTRY_VERIFY(!module);
    QVERIFY(MessageLoggerInterface::returnMe()->texts().isEmpty());
}

void TestShellModules::failedViewDeletesTheModule()
{
    m_viewShows = false;
    QVERIFY(!launcher()->launch(QString::fromLatin1(ModuleId)));
    QCOMPARE(m_made, 1);
    QVERIFY(launcher()->modules().isEmpty());
    QVERIFY(!launcher()->current());
    QCOMPARE(MessageLoggerInterface::returnMe()->texts(),
             QStringList{QStringLiteral("The module testModule could not be shown.")});
}

void TestShellModules::unknownModuleRefused()
{
    QVERIFY(!launcher()->launch(QStringLiteral("noSuchModule")));
    QCOMPARE(m_made, 0);
    QCOMPARE(MessageLoggerInterface::returnMe()->texts().size(), 1);
    QVERIFY(MessageLoggerInterface::returnMe()->texts().first().contains(QLatin1String("isRegistered(id)")));
}

void TestShellModules::moduleOwnsItsActions()
{
    QPointer<QAction> replaced;
    QPointer<QAction> kept;
    {
        RibbonModule module;
        replaced = module.action(1);
        kept = new QAction(QStringLiteral("Delete"));
        module.addAction(1, kept);
        QVERIFY(!replaced);
        QCOMPARE(module.getActionList().size(), 1);
        QCOMPARE(module.getActionList().value(1), kept.data());
        QCOMPARE(kept->parent(), &module);
    }
    QVERIFY(!kept);
}

void TestShellModules::ribbonsAddedAndRemoved()
{
    QSignalSpy current(ribbons(), &RibbonInterface::currentRibbonChanged);
    auto* first = new QWidget;
    auto* second = new QWidget;
    auto* third = new QWidget;
    ribbons()->addRibbon(first, true, true);
    ribbons()->addRibbon(second, true, false);
    QCOMPARE(m_area->count(), 2);
    QCOMPARE(m_area->currentWidget(), first);
    ribbons()->addRibbon(third, true, true);
    QCOMPARE(m_area->currentWidget(), third);
    QCOMPARE(current.count(), 2);
    QCOMPARE(ribbons()->ribbons(), (QList<QWidget*>{first, second, third}));

    // Handed back, not deleted; the ribbon added before it is shown again.
    QPointer<QWidget> removed = third;
    ribbons()->removeRibbon(third);
    QVERIFY(removed);
    QVERIFY(!removed->parent());
    QVERIFY(removed->isHidden());
    QCOMPARE(m_area->indexOf(third), -1);
    QVERIFY(!ribbons()->contains(third));
    QCOMPARE(ribbons()->currentRibbon(), second);
    QCOMPARE(m_area->currentWidget(), second);
    delete third;

    // Removing a ribbon that is not current keeps the current one.
    ribbons()->removeRibbon(first);
    QCOMPARE(ribbons()->currentRibbon(), second);
    QCOMPARE(m_area->count(), 1);
    delete first;
    // Adding a ribbon twice keeps one copy.
    ribbons()->addRibbon(second, true, true);
    QCOMPARE(m_area->count(), 1);
    QCOMPARE(ribbons()->ribbons().size(), 1);
}

void TestShellModules::ribbonsListedBeforeTheHostMoveIn()
{
    ribbons()->setHost(nullptr);
    auto* early = new QWidget;
    ribbons()->addRibbon(early, true, true);
    QVERIFY(ribbons()->contains(early));
    QVERIFY(!early->parent());

    // A host area that is a plain widget gets a stacked layout.
    QWidget area;
    ribbons()->setHost(&area);
    QCOMPARE(early->parentWidget(), &area);
    QCOMPARE(ribbons()->currentRibbon(), early);
    ribbons()->removeRibbon(early);
    QVERIFY(!early->parent());
    delete early;
    ribbons()->setHost(nullptr);
}

void TestShellModules::hiddenAreaShownOnRequest_data()
{
    QTest::addColumn<bool>("show");

    QTest::newRow("shown") << true;
    QTest::newRow("left hidden") << false;
}

void TestShellModules::hiddenAreaShownOnRequest()
{
    QFETCH(bool, show);

    m_area->hide();
    auto* ribbon = new QWidget;
    ribbons()->addRibbon(ribbon, show, true);
    QCOMPARE(m_area->isHidden(), !show);
}

QTEST_MAIN(TestShellModules)
#include "tst_shellmodules.moc"
