#include "mainwindowinterface.h"
#include "testfixture.h"

#include <QStatusBar>
#include <QTest>

class TestMainWindowInterface : public QObject
{
    Q_OBJECT
private slots:
    void initTestCase() { kaInitTestEnvironment(); }
    // Null without a host window; messages reach its status bar, or nowhere while it has none.
    void statusBarOfTheRegisteredWindow()
    {
        QVERIFY(!MainWindowInterface::returnMe());
        QStatusBar bar;
        {
            struct : MainWindowInterface { QStatusBar* bar{}; QStatusBar* statusBar() override { return bar; } } window;
            MainWindowInterface::setInstance(&window);
            MainWindowInterface::returnMe()->showMessage(QStringLiteral("lost"));
            window.bar = &bar;
            MainWindowInterface::returnMe()->showMessage(QStringLiteral("3 selected item(s)"));
            QCOMPARE(bar.currentMessage(), QStringLiteral("3 selected item(s)"));
        }
        QVERIFY(!MainWindowInterface::returnMe()); // a destroyed window unregisters itself
    }
};
QTEST_MAIN(TestMainWindowInterface)
#include "tst_mainwindowinterface.moc"
