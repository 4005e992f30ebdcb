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

namespace {

const QString ModuleId = QStringLiteral("testModule");

ModuleLauncherInterface* launcher() { return ModuleLauncherInterface::returnMe(); }
RibbonInterface* ribbons() { return RibbonInterface::returnMe(); }
QStringList logged() { return MessageLoggerInterface::returnMe()->texts(); }

// A module with a ribbon, as the host modules are made: the ribbon goes to
// the ribbon service in initView and back in the destructor.
struct RibbonModule : KAModuleCtrl {
    RibbonModule() : KAModuleCtrl(ModuleId) { addAction(1, new QAction(QStringLiteral("Open"))); }
    ~RibbonModule() override
    {
        if (ribbon) {
            ribbons()->removeRibbon(ribbon);
            ribbon->deleteLater();
        }
    }
    bool initView() override
    {
        if (!viewShows)
            return false;
        ribbon = new KARibbonModuleBar(QStringLiteral("Test module"));
        ribbon->registerObserver(this);
        ribbon->addGenericActions(false, false);
        ribbons()->addRibbon(ribbon, true, true);
        return true;
    }

    static inline bool viewShows = true;
    QPointer<KARibbonModuleBar> ribbon;
};

} // namespace

class TestShellModules : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        kaInitTestEnvironment();
        launcher()->registerModule(ModuleId, [] { return new RibbonModule; });
    }
    void launchedOnceAndClosedFromItsOwnRibbon();
    void refusedLaunch();
    void ribbonsAddedAndRemoved();
};

// The ribbon's Close button ends in the module asking for its own close,
// from inside the signal of a widget the module owns: nothing may be
// deleted before that call returns.
void TestShellModules::launchedOnceAndClosedFromItsOwnRibbon()
{
    QStackedWidget area;
    ribbons()->setHost(&area);
    QSignalSpy closed(launcher(), &ModuleLauncherInterface::moduleClosed);
    QPointer<RibbonModule> module = static_cast<RibbonModule*>(launcher()->launch(ModuleId));
    QVERIFY(module);
    QCOMPARE(launcher()->launch(ModuleId), module.data());
    QCOMPARE(area.currentWidget(), module->ribbon.data());
    // The module owns its actions: one replaced goes at once, the others
    // with the module.
    QPointer<QAction> replaced = module->action(1), kept = new QAction(QStringLiteral("Delete"));
    module->addAction(1, kept);
    QVERIFY(!replaced);
    QPointer<KARibbonModuleBar> ribbon = module->ribbon;
    for (QToolButton* button : ribbon->findChildren<QToolButton*>()) {
        if (button->defaultAction() == ribbon->closeAction())
            QTest::mouseClick(button, Qt::LeftButton);
    }
    QVERIFY(module); // still alive after the click returned: deleted later
    QCOMPARE(closed.count(), 1);
    QCOMPARE(closed.first().first().toString(), ModuleId);
    QVERIFY(!launcher()->module(ModuleId) && !launcher()->current());
    launcher()->closeModule(module); // a second close changes nothing
    QCOMPARE(closed.count(), 1);
    QTRY_VERIFY(!module && !ribbon && !kept);
    QVERIFY(logged().isEmpty());
    ribbons()->setHost(nullptr);
}

void TestShellModules::refusedLaunch()
{
    MessageLoggerInterface::returnMe()->clear();
    RibbonModule::viewShows = false;
    QVERIFY(!launcher()->launch(ModuleId));
    RibbonModule::viewShows = true;
    QVERIFY(!launcher()->launch(QStringLiteral("noSuchModule")));
    QVERIFY(launcher()->modules().isEmpty()); // the module whose view failed is gone
    const QStringList texts = logged();
    QCOMPARE(texts.size(), 2);
    QCOMPARE(texts.first(), QStringLiteral("The module testModule could not be shown."));
    QVERIFY2(texts.last().contains(QLatin1String("isRegistered(id)")), qPrintable(texts.last()));
}

void TestShellModules::ribbonsAddedAndRemoved()
{
    // Ribbons listed before the host exists move into it, a plain widget
    // getting a stacked layout.
    QSignalSpy current(ribbons(), &RibbonInterface::currentRibbonChanged);
    QWidget area, first, second;
    QPointer<QWidget> third = new QWidget;
    ribbons()->addRibbon(&first, true, true);
    ribbons()->setHost(&area);
    QCOMPARE(first.parentWidget(), &area);
    ribbons()->addRibbon(&second, true, false);
    ribbons()->addRibbon(third, true, true);
    ribbons()->addRibbon(&second, true, false); // kept once
    QCOMPARE(current.count(), 2);
    QCOMPARE(ribbons()->ribbons(), (QList<QWidget*>{&first, &second, third}));

    // Handed back, not deleted; the ribbon added before it is current again.
    ribbons()->removeRibbon(third);
    QVERIFY(third && !third->parent() && third->isHidden());
    QCOMPARE(ribbons()->currentRibbon(), &second);
    delete third;
    // Removing a ribbon that is not current keeps the current one.
    ribbons()->removeRibbon(&first);
    QCOMPARE(ribbons()->currentRibbon(), &second);
    ribbons()->removeRibbon(&second);
    ribbons()->setHost(nullptr);
}

QTEST_MAIN(TestShellModules)
#include "tst_shellmodules.moc"
