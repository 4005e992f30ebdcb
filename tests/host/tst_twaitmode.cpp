#include "testfixture.h"
#include "twaitmode.h"

#include <QApplication>
#include <QTest>

class TestTWaitMode : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { kaInitTestEnvironment(); }

    void waitCursorForTheScopeAndNested()
    {
        QVERIFY(!QApplication::overrideCursor());
        {
            TWaitMode outer;
            QVERIFY(QApplication::overrideCursor());
            QCOMPARE(QApplication::overrideCursor()->shape(), Qt::WaitCursor);
            {
                TWaitMode inner;
                QCOMPARE(QApplication::overrideCursor()->shape(), Qt::WaitCursor);
            }
            // The inner scope took back only its own cursor.
            QVERIFY(QApplication::overrideCursor());
            QCOMPARE(QApplication::overrideCursor()->shape(), Qt::WaitCursor);
        }
        QVERIFY(!QApplication::overrideCursor());
    }

    void restoresTheCallersCursor()
    {
        QApplication::setOverrideCursor(Qt::CrossCursor);
        {
            TWaitMode wait;
            QCOMPARE(QApplication::overrideCursor()->shape(), Qt::WaitCursor);
        }
        QCOMPARE(QApplication::overrideCursor()->shape(), Qt::CrossCursor);
        QApplication::restoreOverrideCursor();
        QVERIFY(!QApplication::overrideCursor());
    }
};

QTEST_MAIN(TestTWaitMode)
#include "tst_twaitmode.moc"
