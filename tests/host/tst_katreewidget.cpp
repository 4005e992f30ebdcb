#include "katreewidget.h"
#include "testfixture.h"

#include <QTest>

// While its updates are off the widget lays its rows out once, when they come back (through its
// own switch, or QWidget's for a caller that only knows a QWidget): rows inserted or removed
// meanwhile must then be where they are drawn and clicked.
class TestKATreeWidget : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { kaInitTestEnvironment(); }
    void rowsChangedWhileUpdatesAreOffAreLaidOut()
    {
        for (const bool throughQWidget : {false, true}) {
            KATreeWidget view(nullptr, QStringLiteral("rows"));
            view.resize(300, 2000);
            view.show();
            QVERIFY(QTest::qWaitForWindowExposed(&view));
            for (int i = 0; i < 20; ++i)
                view.insertItem(nullptr, new QTreeWidgetItem(QStringList{QStringLiteral("old %1").arg(i)}));
            QApplication::processEvents();
            view.setUpdatesEnabled(false);
            view.clear();
            QApplication::processEvents();
            QVERIFY(!view.itemAt(QPoint(5, 5))); // clicks meanwhile never reach a removed row
            for (int i = 0; i < 30; ++i) {
                auto* row = new QTreeWidgetItem(QStringList{QStringLiteral("row %1").arg(i, 2, 10, QLatin1Char('0'))});
                view.insertItem(nullptr, row);
                view.insertItem(row, new QTreeWidgetItem(QStringList{QStringLiteral("child of %1").arg(i)}));
                row->setExpanded(i % 3 == 0);
                QApplication::processEvents(); // each insertion schedules a layout; this runs it (or not)
            }
            if (throughQWidget) // then laid out at the next paint
                static_cast<QWidget*>(&view)->setUpdatesEnabled(true), view.viewport()->repaint();
            else
                view.setUpdatesEnabled(true);
            QCOMPARE(view.topLevelItemCount(), 30);
            int previousBottom = -1; // each shown row is found at its own place, below the previous one
            for (QTreeWidgetItemIterator it(&view); *it; ++it) {
                if ((*it)->parent() && !(*it)->parent()->isExpanded())
                    continue;
                const QRect rect = view.visualItemRect(*it);
                QVERIFY2(rect.isValid() && rect.top() >= previousBottom, qPrintable((*it)->text(0)));
                QCOMPARE(view.itemAt(rect.center()), *it);
                previousBottom = rect.bottom();
            }
            // A row expanded during the fill shows its child right below it.
            QCOMPARE(view.itemBelow(view.topLevelItem(0)), view.topLevelItem(0)->child(0));
            QVERIFY(!view.itemAt(QPoint(5, previousBottom + 5)));
        }
    }
};

QTEST_MAIN(TestKATreeWidget)
#include "tst_katreewidget.moc"
