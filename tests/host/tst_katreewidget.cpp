#include "katreewidget.h"
#include "testfixture.h"

#include <QApplication>
#include <QTest>

#include <memory>

// While its updates are off the widget lays its rows out once, when they come
// back: what matters to the user is that rows inserted or removed meanwhile
// are then where they are drawn and clicked.
class TestKATreeWidget : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { kaInitTestEnvironment(); }
    void init();
    void cleanup();

    void rowsFilledWhileUpdatesAreOffAreLaidOut_data();
    void rowsFilledWhileUpdatesAreOffAreLaidOut();
    void rowsRemovedWhileUpdatesAreOffLeaveNoTrace();

private:
    QTreeWidgetItem* addRow(QTreeWidgetItem* parent, const QString& text);
    // Every top-level row (and shown child) is found at its own place.
    void verifyRowsAtTheirPlace();

    std::unique_ptr<KATreeWidget> m_view;
};

void TestKATreeWidget::init()
{
    m_view.reset(new KATreeWidget(nullptr, QStringLiteral("rows")));
    m_view->setHeaderHidden(true);
    m_view->resize(300, 2000);
    m_view->show();
    QVERIFY(QTest::qWaitForWindowExposed(m_view.get()));
}

void TestKATreeWidget::cleanup()
{
    m_view.reset();
}

QTreeWidgetItem* TestKATreeWidget::addRow(QTreeWidgetItem* parent, const QString& text)
{
    auto* item = new QTreeWidgetItem(QStringList{text});
    m_view->insertItem(parent, item);
    return item;
}

void TestKATreeWidget::verifyRowsAtTheirPlace()
{
    int previousBottom = -1;
    for (QTreeWidgetItemIterator it(m_view.get()); *it; ++it) {
        QTreeWidgetItem* item = *it;
        if (item->parent() && !item->parent()->isExpanded())
            continue;
        const QRect rect = m_view->visualItemRect(item);
        QVERIFY2(rect.isValid(), qPrintable(item->text(0)));
        QVERIFY2(rect.top() >= previousBottom, qPrintable(item->text(0)));
        QCOMPARE(m_view->itemAt(rect.center()), item);
        previousBottom = rect.bottom();
    }
}

void TestKATreeWidget::rowsFilledWhileUpdatesAreOffAreLaidOut_data()
{
    QTest::addColumn<bool>("throughQWidget");
    QTest::newRow("widget's own switch") << false;
    // Switched back on by a caller that only knows a QWidget.
    QTest::newRow("QWidget's switch") << true;
}

void TestKATreeWidget::rowsFilledWhileUpdatesAreOffAreLaidOut()
{
    QFETCH(bool, throughQWidget);
    addRow(nullptr, QStringLiteral("first"));
    QApplication::processEvents();

    m_view->setUpdatesEnabled(false);
    for (int i = 0; i < 30; ++i) {
        QTreeWidgetItem* row = addRow(nullptr, QStringLiteral("row %1").arg(i, 2, 10, QLatin1Char('0')));
        addRow(row, QStringLiteral("child of %1").arg(i));
        if (i % 3 == 0)
            row->setExpanded(true);
        // Each insertion schedules a layout; the loop runs it (or not).
        QApplication::processEvents();
    }
    if (throughQWidget) {
        static_cast<QWidget*>(m_view.get())->setUpdatesEnabled(true);
        m_view->viewport()->repaint();
    } else {
        m_view->setUpdatesEnabled(true);
    }
    QCOMPARE(m_view->topLevelItemCount(), 31);
    verifyRowsAtTheirPlace();
    // The rows expanded during the fill show their child right below them.
    const QTreeWidgetItem* expanded = m_view->topLevelItem(1);
    QCOMPARE(expanded->text(0), QStringLiteral("row 00"));
    QVERIFY(expanded->isExpanded());
    QCOMPARE(m_view->itemBelow(expanded), expanded->child(0));
}

void TestKATreeWidget::rowsRemovedWhileUpdatesAreOffLeaveNoTrace()
{
    for (int i = 0; i < 20; ++i)
        addRow(nullptr, QStringLiteral("old %1").arg(i, 2, 10, QLatin1Char('0')));
    QApplication::processEvents();

    m_view->setUpdatesEnabled(false);
    m_view->clear();
    QApplication::processEvents();
    // Clicks and queries meanwhile never reach a removed row.
    QVERIFY(!m_view->itemAt(QPoint(5, 5)));
    for (int i = 0; i < 5; ++i)
        addRow(nullptr, QStringLiteral("new %1").arg(i));
    QApplication::processEvents();
    m_view->setUpdatesEnabled(true);

    QCOMPARE(m_view->topLevelItemCount(), 5);
    verifyRowsAtTheirPlace();
    const QRect last = m_view->visualItemRect(m_view->topLevelItem(4));
    QVERIFY(!m_view->itemAt(QPoint(5, last.bottom() + 5)));
}

QTEST_MAIN(TestKATreeWidget)
#include "tst_katreewidget.moc"
