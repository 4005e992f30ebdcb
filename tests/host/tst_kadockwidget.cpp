#include "applicationinterface.h"
#include "kadockwidget.h"
#include "messageloggerinterface.h"
#include "testfixture.h"

#include <QFile>
#include <QLabel>
#include <QMainWindow>
#include <QScreen>
#include <QTest>
#include <QToolButton>

#include <memory>

static ApplicationInterface* app() { return ApplicationInterface::returnMe(); }

class TestKADockWidget : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { kaInitTestEnvironment(); }
    void cleanupTestCase() { QFile::remove(app()->settingsPath()); }
    void placementRoundTrip_data();
    void placementRoundTrip();
};

void TestKADockWidget::placementRoundTrip_data()
{
    QTest::addColumn<QString>("change"); // what the user did to the first dock
    QTest::addColumn<int>("area");
    QTest::addColumn<bool>("floating");
    QTest::addColumn<bool>("visible");

    QTest::newRow("floated with the title bar button") << "float button" << int(Qt::LeftDockWidgetArea) << true << true;
    QTest::newRow("floated, hidden by the user") << "float+hide" << int(Qt::RightDockWidgetArea) << true << false;
    QTest::newRow("closed by the title bar button") << "close button" << int(Qt::LeftDockWidgetArea) << false << false;
    // The host closes its docks when it tears them down: the next session
    // must still show them.
    QTest::newRow("closed by the host") << "close" << int(Qt::RightDockWidgetArea) << false << true;
    QTest::newRow("floating off every screen comes back") << "off screen" << int(Qt::LeftDockWidgetArea) << true << true;
    QTest::newRow("nothing saved keeps the placement") << "" << int(Qt::RightDockWidgetArea) << false << true;
}

// What one dock saved, a new dock of the same name restores, through the
// settings file read again from disk.
void TestKADockWidget::placementRoundTrip()
{
    QFETCH(QString, change);
    QFETCH(int, area);
    QFETCH(bool, floating);
    QFETCH(bool, visible);

    QFile::remove(app()->settingsPath());
    app()->reloadSettings();
    MessageLoggerInterface::returnMe()->clear();
    QMainWindow window;
    window.setCentralWidget(new QLabel(QStringLiteral("centre")));
    window.resize(700, 500);
    window.show();
    QVERIFY(QTest::qWaitForWindowExposed(&window));
    auto makeDock = [&window](int where) {
        auto* dock = new KADockWidget(QStringLiteral("Files explorer"), QStringLiteral("testDock"), "project_explorer", true,
                                      &window);
        dock->setWidget(new QLabel(QStringLiteral("tree")));
        window.addDockWidget(Qt::DockWidgetArea(where), dock);
        dock->show();
        return std::unique_ptr<KADockWidget>(dock);
    };

    const bool offScreen = change == QLatin1String("off screen"); // a screen that is gone
    const QRect geometry = offScreen ? QRect(9000, 9000, 200, 150) : QRect(120, 90, 260, 340);
    if (offScreen) {
        QVERIFY(app()->setSetting(QStringLiteral("testDock/floating"), true));
        QVERIFY(app()->setSetting(QStringLiteral("testDock/geometry"), QStringLiteral("9000,9000,200,150")));
    } else if (!change.isEmpty()) {
        std::unique_ptr<KADockWidget> dock = makeDock(area);
        const QString button = change.startsWith(QLatin1String("float")) ? "kaDockFloatButton" : "kaDockCloseButton";
        if (change.endsWith(QLatin1String("button")))
            QTest::mouseClick(dock->findChild<QToolButton*>(button), Qt::LeftButton);
        else if (change.startsWith(QLatin1String("float")))
            dock->setFloating(true);
        if (floating) {
            dock->setGeometry(geometry);
            QTRY_COMPARE(dock->geometry(), geometry);
        }
        if (change.endsWith(QLatin1String("hide")))
            dock->hide();
        else if (change == QLatin1String("close"))
            QVERIFY(dock->close());
        QVERIFY(dock->settingWrite());
    }
    app()->reloadSettings();

    // The new dock starts in the other area (left and right are 1 and 2),
    // docked and shown.
    std::unique_ptr<KADockWidget> dock = makeDock(area ^ 3);
    QCOMPARE(dock->settingRead(), !change.isEmpty());
    if (change.isEmpty() || offScreen)
        area ^= 3; // stays where it was put
    QCOMPARE(dock->isFloating(), floating);
    QCOMPARE(int(window.dockWidgetArea(dock.get())), area);
    if (offScreen) {
        QTRY_COMPARE(dock->size(), geometry.size());
        QVERIFY(dock->screen()->availableGeometry().intersects(dock->geometry()));
    } else if (floating) {
        QTRY_COMPARE(dock->geometry(), geometry);
    }
    QCOMPARE(dock->isHidden(), !visible);
    QVERIFY(MessageLoggerInterface::returnMe()->texts().isEmpty());
}

QTEST_MAIN(TestKADockWidget)
#include "tst_kadockwidget.moc"
