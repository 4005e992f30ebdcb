#include "mainwindowinterface.h"
#include "testfixture.h"

#include <QStatusBar>
#include <QTest>

#include <memory>

namespace {

class Window : public MainWindowInterface
{
public:
    QStatusBar* statusBar() override { return m_bar.get(); }
    std::unique_ptr<QStatusBar> m_bar{new QStatusBar};
};

class WindowWithoutBar : public MainWindowInterface
{
public:
    QStatusBar* statusBar() override { return nullptr; }
};

} // namespace

class TestMainWindowInterface : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { kaInitTestEnvironment(); }
    void cleanup() { MainWindowInterface::setInstance(nullptr); }

    void noWindowByDefault() { QVERIFY(!MainWindowInterface::returnMe()); }

    void registeredWindowShowsMessages()
    {
        Window window;
        MainWindowInterface::setInstance(&window);
        QCOMPARE(MainWindowInterface::returnMe(), &window);
        MainWindowInterface::returnMe()->showMessage(QStringLiteral("3 selected item(s)"));
        QCOMPARE(window.m_bar->currentMessage(), QStringLiteral("3 selected item(s)"));
        KAObject2* none = nullptr;
        QVERIFY(!window.openObject(none, 0));
    }

    void windowWithoutStatusBarIgnoresMessages()
    {
        WindowWithoutBar window;
        MainWindowInterface::setInstance(&window);
        window.showMessage(QStringLiteral("lost"));
        QCOMPARE(MainWindowInterface::returnMe(), &window);
    }

    void destroyedWindowUnregisters()
    {
        {
            Window window;
            MainWindowInterface::setInstance(&window);
        }
        QVERIFY(!MainWindowInterface::returnMe());
    }
};

QTEST_MAIN(TestMainWindowInterface)
#include "tst_mainwindowinterface.moc"
