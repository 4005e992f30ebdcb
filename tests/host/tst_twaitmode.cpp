#include "testfixture.h"
#include "twaitmode.h"

#include <QTest>

class TestTWaitMode : public QObject
{
    Q_OBJECT
private slots:
    void initTestCase() { kaInitTestEnvironment(); }

    void waitCursorForTheScopeNestedAndRestored()
    {
        QApplication::setOverrideCursor(Qt::CrossCursor);
        {
            TWaitMode outer;
            {
                TWaitMode inner;
            }
            // A nested one takes back only its own cursor.
            QCOMPARE(QApplication::overrideCursor()->shape(), Qt::WaitCursor);
        }
        // The caller's comes back.
        QCOMPARE(QApplication::overrideCursor()->shape(), Qt::CrossCursor);
    }
};

QTEST_MAIN(TestTWaitMode)
#include "tst_twaitmode.moc"
