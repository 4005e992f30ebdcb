#include "kalistview.h"
#include "kaobject2.h"
#include "katreewidgetitem.h"
#include "testfixture.h"

#include <QApplication>
#include <QLineEdit>
#include <QTest>

namespace {

// A view whose rename decision is scripted and recorded.
struct RecordingListView : KAListView {
    RecordingListView() : KAListView(nullptr, QStringLiteral("recording")) {}
    bool renameItem(QTreeWidgetItem* item, QString& name) override
    {
        received << name;
        if (answer == QLatin1String("delete"))
            delete item; // the controller rebuilt the branch
        else if (!answer.isEmpty() && answer != QLatin1String("refuse"))
            name = answer;
        return answer != QLatin1String("refuse");
    }
    QStringList received;
    QString answer; // refuse, delete, or the name the controller gives back
};

} // namespace

class TestKAListView : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { kaInitTestEnvironment(); }
    void rename_data();
    void rename();
};

void TestKAListView::rename_data()
{
    QTest::addColumn<QString>("typed");  // "" clears the editor
    QTest::addColumn<int>("key"); // ends the edit; Enter also opens it with F2, none moves away
    QTest::addColumn<QString>("answer");
    QTest::addColumn<QStringList>("hookReceived");
    QTest::addColumn<QString>("finalText");

    QTest::newRow("F2, then moved in the sort") << "Sample 10" << int(Qt::Key_Enter) << "" << QStringList{"Sample 10"} << "Sample 10";
    QTest::newRow("hook changes the name") << "Blank" << int(Qt::Key_Return) << "Blank (2)" << QStringList{"Blank"} << "Blank (2)";
    QTest::newRow("refused keeps the old name") << "Blank" << int(Qt::Key_Return) << "refuse" << QStringList{"Blank"} << "Sample 1";
    QTest::newRow("blanks around the name are dropped") << "  Blank  " << int(Qt::Key_Return) << "" << QStringList{"Blank"} << "Blank";
    QTest::newRow("unchanged text does not ask") << "Sample 1" << int(Qt::Key_Return) << "" << QStringList{} << "Sample 1";
    QTest::newRow("blank text does not ask") << "   " << int(Qt::Key_Return) << "" << QStringList{} << "Sample 1";
    QTest::newRow("escape does not ask") << "Other" << int(Qt::Key_Escape) << "" << QStringList{} << "Sample 1";
    QTest::newRow("moving to another item commits") << "Moved" << 0 << "" << QStringList{"Moved"} << "Moved";
    QTest::newRow("hook may delete the item") << "Gone" << int(Qt::Key_Return) << "delete" << QStringList{"Gone"} << "";
}

// The inline editor opens on column 0 with the object's name; what the user
// typed reaches the hook, whose in-out name becomes the item's text.
void TestKAListView::rename()
{
    QFETCH(QString, typed);
    QFETCH(int, key);
    QFETCH(QString, answer);
    QFETCH(QStringList, hookReceived);
    QFETCH(QString, finalText);

    RecordingListView view;
    view.setColumnCount(2);
    KAObject2 first(KAObjectTypeSignal, QStringLiteral("Sample 1")), second(KAObjectTypeSignal, QStringLiteral("Sample 2"));
    auto* item = new KATreeWidgetItem(&view, &first);
    auto* other = new KATreeWidgetItem(&view, &second);
    view.sortItems(KATreeWidgetItem::SortKeyColumn, Qt::AscendingOrder);
    view.setSortingEnabled(true);
    view.show();
    QApplication::setActiveWindow(&view);
    QVERIFY(QTest::qWaitForWindowActive(&view));
    view.answer = answer;

    item->setFlags(item->flags() & ~Qt::ItemIsEnabled); // a disabled item is never edited
    view.editItemName(item);
    QVERIFY(!view.renameEditor());
    item->setFlags(item->flags() | Qt::ItemIsEnabled);

    view.setCurrentItem(item);
    // F2, or the context menu's entry.
    key == Qt::Key_Enter ? QTest::keyClick(&view, Qt::Key_F2) : view.slotRename();
    auto* editor = qobject_cast<QLineEdit*>(view.renameEditor());
    QVERIFY(editor);
    QCOMPARE(editor->text(), QStringLiteral("Sample 1"));
    // The delegate selects the whole name: typing replaces it.
    QTest::keyClick(editor, Qt::Key_Backspace);
    QTest::keyClicks(editor, typed);
    key ? QTest::keyClick(editor, Qt::Key(key)) : view.setCurrentItem(other);
    QTRY_VERIFY(!view.renameEditor());
    QCOMPARE(view.received, hookReceived);
    QCOMPARE(view.topLevelItemCount(), answer == QLatin1String("delete") ? 1 : 2);
    if (answer == QLatin1String("delete"))
        return;
    QCOMPARE(item->text(KATreeWidgetItem::NameColumn), finalText);
    QVERIFY(!(item->flags() & Qt::ItemIsEditable));
    // The new name's key sorts the item among the others.
    QCOMPARE(item->text(KATreeWidgetItem::SortKeyColumn), KATreeWidgetItem::naturalSortKey(finalText, false));
    QTRY_VERIFY(view.topLevelItem(0)->text(KATreeWidgetItem::SortKeyColumn)
                < view.topLevelItem(1)->text(KATreeWidgetItem::SortKeyColumn));
}

QTEST_MAIN(TestKAListView)
#include "tst_kalistview.moc"
