#include "applicationinterface.h"
#include "kadockwidget.h"
#include "messageloggerinterface.h"
#include "testfixture.h"
#include "txmlmethod.h"

#include <QDomDocument>
#include <QFile>
#include <QLabel>
#include <QMainWindow>
#include <QScreen>
#include <QTest>
#include <QToolButton>

#include <memory>

namespace {

const char* const DockName = "testDock";

ApplicationInterface* app()
{
    return ApplicationInterface::returnMe();
}

// The settings as the file holds them, key to value.
QMap<QString, QString> settingsOnDisk()
{
    QMap<QString, QString> values;
    QDomDocument doc;
    if (!TXMLMethod::load(app()->settingsPath(), doc))
        return values;
    for (QDomElement e = doc.documentElement().firstChildElement(QStringLiteral("setting")); !e.isNull();
         e = e.nextSiblingElement(QStringLiteral("setting")))
        values.insert(e.attribute(QStringLiteral("key")), e.attribute(QStringLiteral("value")));
    return values;
}

} // namespace

class TestKADockWidget : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void cleanup();
    void cleanupTestCase();

    void placementRoundTrip_data();
    void placementRoundTrip();
    void placementIsWrittenToTheSettingsFile();
    void nothingSavedKeepsThePlacement();
    void closingKeepsTheUsersVisibility_data();
    void closingKeepsTheUsersVisibility();
    void floatingRectangleOffEveryScreenComesBack();
    void titleBarShowsIconAndTitle();
    void setDockWidgetFloatsAndDocks();

private:
    KADockWidget* makeDock(Qt::DockWidgetArea area);

    std::unique_ptr<QMainWindow> m_window;
};

void TestKADockWidget::initTestCase()
{
    kaInitTestEnvironment();
}

void TestKADockWidget::init()
{
    QFile::remove(app()->settingsPath());
    app()->reloadSettings();
    MessageLoggerInterface::returnMe()->clear();
    m_window.reset(new QMainWindow);
    m_window->setCentralWidget(new QLabel(QStringLiteral("centre")));
    m_window->resize(700, 500);
    m_window->show();
    QVERIFY(QTest::qWaitForWindowExposed(m_window.get()));
}

void TestKADockWidget::cleanup()
{
    m_window.reset();
}

void TestKADockWidget::cleanupTestCase()
{
    QFile::remove(app()->settingsPath());
}

KADockWidget* TestKADockWidget::makeDock(Qt::DockWidgetArea area)
{
    auto* dock = new KADockWidget(QStringLiteral("Files explorer"), QString::fromLatin1(DockName), "project_explorer",
                                  true, m_window.get());
    dock->setWidget(new QLabel(QStringLiteral("tree")));
    dock->setAllowedDockAreas(Qt::LeftDockWidgetArea | Qt::RightDockWidgetArea);
    m_window->addDockWidget(area, dock);
    dock->show();
    return dock;
}

void TestKADockWidget::placementRoundTrip_data()
{
    QTest::addColumn<bool>("floating");
    QTest::addColumn<int>("area");
    QTest::addColumn<QRect>("geometry");
    QTest::addColumn<bool>("visible");

    QTest::newRow("floating") << true << int(Qt::LeftDockWidgetArea) << QRect(120, 90, 260, 340) << true;
    QTest::newRow("floating, hidden by the user") << true << int(Qt::RightDockWidgetArea) << QRect(60, 50, 200, 150)
                                                  << false;
    QTest::newRow("docked right") << false << int(Qt::RightDockWidgetArea) << QRect() << true;
    QTest::newRow("docked left, hidden by the user") << false << int(Qt::LeftDockWidgetArea) << QRect() << false;
}

// What one dock saved, a new dock of the same name restores, through the
// settings file read again from disk.
void TestKADockWidget::placementRoundTrip()
{
    QFETCH(bool, floating);
    QFETCH(int, area);
    QFETCH(QRect, geometry);
    QFETCH(bool, visible);

    {
        std::unique_ptr<KADockWidget> dock(makeDock(Qt::DockWidgetArea(area)));
        if (floating) {
            dock->setFloating(true);
            dock->setGeometry(geometry);
            QTRY_COMPARE(dock->geometry(), geometry);
        }
        dock->setVisible(visible);
        QVERIFY(dock->settingWrite());
    }
    app()->reloadSettings();

    // The new dock starts in the other area, docked and shown.
    const Qt::DockWidgetArea other = area == Qt::LeftDockWidgetArea ? Qt::RightDockWidgetArea : Qt::LeftDockWidgetArea;
    std::unique_ptr<KADockWidget> dock(makeDock(other));
    QVERIFY(dock->settingRead());
    QCOMPARE(dock->isFloating(), floating);
    QCOMPARE(dock->isDockWidget(), !floating);
    QCOMPARE(int(m_window->dockWidgetArea(dock.get())), area);
    if (floating)
        QTRY_COMPARE(dock->geometry(), geometry);
    QCOMPARE(dock->isHidden(), !visible);
    QVERIFY(MessageLoggerInterface::returnMe()->texts().isEmpty());
}

void TestKADockWidget::placementIsWrittenToTheSettingsFile()
{
    std::unique_ptr<KADockWidget> dock(makeDock(Qt::RightDockWidgetArea));
    dock->setFloating(true);
    dock->setGeometry(QRect(120, 90, 260, 340));
    QTRY_COMPARE(dock->geometry(), QRect(120, 90, 260, 340));
    QVERIFY(dock->settingWrite());

    const QMap<QString, QString> values = settingsOnDisk();
    QCOMPARE(values.value(QStringLiteral("testDock/floating")), QStringLiteral("true"));
    QCOMPARE(values.value(QStringLiteral("testDock/geometry")), QStringLiteral("120,90,260,340"));
    QCOMPARE(values.value(QStringLiteral("testDock/visible")), QStringLiteral("true"));
    QCOMPARE(values.value(QStringLiteral("testDock/area")), QString::number(int(Qt::RightDockWidgetArea)));
}

void TestKADockWidget::nothingSavedKeepsThePlacement()
{
    std::unique_ptr<KADockWidget> dock(makeDock(Qt::RightDockWidgetArea));
    QVERIFY(!dock->settingRead());
    QVERIFY(!dock->isFloating());
    QCOMPARE(m_window->dockWidgetArea(dock.get()), Qt::RightDockWidgetArea);
    QVERIFY(!dock->isHidden());
}

void TestKADockWidget::closingKeepsTheUsersVisibility_data()
{
    QTest::addColumn<bool>("byUser");
    QTest::addColumn<bool>("savedVisible");

    // The host closes its docks when it tears them down: the next session
    // must still show them.
    QTest::newRow("closed by the host") << false << true;
    QTest::newRow("closed with the title bar button") << true << false;
}

void TestKADockWidget::closingKeepsTheUsersVisibility()
{
    QFETCH(bool, byUser);
    QFETCH(bool, savedVisible);

    std::unique_ptr<KADockWidget> dock(makeDock(Qt::LeftDockWidgetArea));
    if (byUser) {
        auto* button = dock->findChild<QToolButton*>(QStringLiteral("kaDockCloseButton"));
        QVERIFY(button);
        QVERIFY(button->isVisible());
        QTest::mouseClick(button, Qt::LeftButton);
    } else {
        QVERIFY(dock->close());
    }
    QVERIFY(dock->isHidden());
    QVERIFY(dock->settingWrite());
    QCOMPARE(settingsOnDisk().value(QStringLiteral("testDock/visible")),
             savedVisible ? QStringLiteral("true") : QStringLiteral("false"));
}

// A floating rectangle saved on a screen that is gone is brought back.
void TestKADockWidget::floatingRectangleOffEveryScreenComesBack()
{
    QVERIFY(app()->setSetting(QStringLiteral("testDock/floating"), true));
    QVERIFY(app()->setSetting(QStringLiteral("testDock/geometry"), QStringLiteral("9000,9000,200,150")));
    std::unique_ptr<KADockWidget> dock(makeDock(Qt::LeftDockWidgetArea));
    QVERIFY(dock->settingRead());
    QVERIFY(dock->isFloating());
    QTRY_COMPARE(dock->size(), QSize(200, 150));
    QVERIFY(dock->screen());
    QVERIFY(dock->screen()->availableGeometry().intersects(dock->geometry()));
}

void TestKADockWidget::titleBarShowsIconAndTitle()
{
    std::unique_ptr<KADockWidget> dock(makeDock(Qt::LeftDockWidgetArea));
    QVERIFY(dock->hasHostTitleBar());
    QCOMPARE(dock->titleBarWidget()->objectName(), QStringLiteral("kaDockTitleBar"));
    auto* text = dock->findChild<QLabel*>(QStringLiteral("kaDockTitleText"));
    auto* icon = dock->findChild<QLabel*>(QStringLiteral("kaDockTitleIcon"));
    QVERIFY(text && icon);
    QCOMPARE(text->text(), QStringLiteral("Files explorer"));
    QVERIFY(!icon->pixmap(Qt::ReturnByValue).isNull());

    dock->setWindowTitle(QStringLiteral("Project explorer"));
    QCOMPARE(text->text(), QStringLiteral("Project explorer"));

    // Without the closable feature the close button goes.
    dock->setFeatures(QDockWidget::DockWidgetMovable | QDockWidget::DockWidgetFloatable);
    QVERIFY(dock->findChild<QToolButton*>(QStringLiteral("kaDockCloseButton"))->isHidden());

    // The platform's title bar when asked.
    KADockWidget plain(QStringLiteral("Log"), QStringLiteral("plainDock"), "description", false, m_window.get());
    QVERIFY(!plain.hasHostTitleBar());
    QVERIFY(!plain.titleBarWidget());
}

void TestKADockWidget::setDockWidgetFloatsAndDocks()
{
    std::unique_ptr<KADockWidget> dock(makeDock(Qt::RightDockWidgetArea));
    dock->setDockWidget(false);
    QVERIFY(dock->isFloating());
    dock->setDockWidget(true);
    QVERIFY(!dock->isFloating());
    QCOMPARE(m_window->dockWidgetArea(dock.get()), Qt::RightDockWidgetArea);

    // The title bar's float button does the same.
    auto* button = dock->findChild<QToolButton*>(QStringLiteral("kaDockFloatButton"));
    QVERIFY(button);
    QTest::mouseClick(button, Qt::LeftButton);
    QVERIFY(dock->isFloating());
}

QTEST_MAIN(TestKADockWidget)
#include "tst_kadockwidget.moc"
