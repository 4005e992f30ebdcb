#include "kalistview.h"
#include "kaobject2.h"
#include "katreewidgetitem.h"
#include "testfixture.h"

#include <QAction>
#include <QApplication>
#include <QLineEdit>
#include <QTest>

#include <memory>

namespace {

// A view whose rename decision is scripted and recorded.
class RecordingListView : public KAListView
{
public:
    RecordingListView()
        : KAListView(nullptr, QStringLiteral("recording"))
    {
    }

    QStringList received;      // names the hook was given
    bool answer = true;        // what the hook returns
    QString replacement;       // when set, the hook changes the name to it
    bool deleteItem = false;   // the hook rebuilds the branch

protected:
    bool renameItem(QTreeWidgetItem* item, QString& name) override
    {
        received << name;
        if (!replacement.isEmpty())
            name = replacement;
        if (deleteItem)
            delete item;
        return answer;
    }
};

} // namespace

class TestKAListView : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { kaInitTestEnvironment(); }
    void init();
    void cleanup();

    void constructionNamesTheView();
    void rename_data();
    void rename();
    void escapeKeepsTheNameWithoutAsking();
    void f2OpensTheEditorOnTheCurrentItem();
    void movingToAnotherItemCommitsTheRename();
    void hookMayDeleteTheItem();
    void editItemNameOnANewItem();
    void disabledItemIsNotEdited();
    void acceptedNameMovesTheItemInTheSort();

private:
    QLineEdit* openEditor(QTreeWidgetItem* item);

    std::unique_ptr<RecordingListView> m_view;
    std::unique_ptr<KAObject2> m_first;
    std::unique_ptr<KAObject2> m_second;
    KATreeWidgetItem* m_item = nullptr;  // owned by the view
    KATreeWidgetItem* m_other = nullptr; // owned by the view
};

void TestKAListView::init()
{
    m_view.reset(new RecordingListView);
    m_view->setColumnCount(2);
    m_view->setColumnHidden(KATreeWidgetItem::SortKeyColumn, true);
    m_view->resize(300, 300);
    m_first.reset(new KAObject2(KAObjectTypeSignal, QStringLiteral("Sample 1")));
    m_second.reset(new KAObject2(KAObjectTypeSignal, QStringLiteral("Sample 2")));
    m_item = new KATreeWidgetItem(m_view.get(), m_first.get());
    m_other = new KATreeWidgetItem(m_view.get(), m_second.get());
    m_view->show();
    QApplication::setActiveWindow(m_view.get());
    QVERIFY(QTest::qWaitForWindowActive(m_view.get()));
}

void TestKAListView::cleanup()
{
    m_view.reset();
    m_item = m_other = nullptr;
}

QLineEdit* TestKAListView::openEditor(QTreeWidgetItem* item)
{
    m_view->setCurrentItem(item);
    m_view->slotRename();
    return qobject_cast<QLineEdit*>(m_view->renameEditor());
}

void TestKAListView::constructionNamesTheView()
{
    KAListView view(nullptr, QStringLiteral("projectTree"));
    QCOMPARE(view.objectName(), QStringLiteral("projectTree"));
    QCOMPARE(view.renameAction()->shortcut(), QKeySequence(Qt::Key_F2));
    QVERIFY(view.actions().contains(view.renameAction()));
}

void TestKAListView::rename_data()
{
    QTest::addColumn<QString>("typed");   // "" clears the editor
    QTest::addColumn<bool>("answer");
    QTest::addColumn<QString>("replacement");
    QTest::addColumn<QStringList>("hookReceived");
    QTest::addColumn<QString>("finalText");

    QTest::newRow("accepted as typed") << "Blank" << true << "" << QStringList{"Blank"} << "Blank";
    QTest::newRow("hook changes the name") << "Blank" << true << "Blank (2)" << QStringList{"Blank"} << "Blank (2)";
    QTest::newRow("refused keeps the old name") << "Blank" << false << "" << QStringList{"Blank"} << "Sample 1";
    QTest::newRow("blanks around the name are dropped") << "  Blank  " << true << "" << QStringList{"Blank"}
                                                        << "Blank";
    QTest::newRow("unchanged text does not ask") << "Sample 1" << true << "" << QStringList{} << "Sample 1";
    QTest::newRow("empty text does not ask") << "" << true << "" << QStringList{} << "Sample 1";
    QTest::newRow("blank text does not ask") << "   " << true << "" << QStringList{} << "Sample 1";
}

void TestKAListView::rename()
{
    QFETCH(QString, typed);
    QFETCH(bool, answer);
    QFETCH(QString, replacement);
    QFETCH(QStringList, hookReceived);
    QFETCH(QString, finalText);

    m_view->answer = answer;
    m_view->replacement = replacement;
    QLineEdit* editor = openEditor(m_item);
    QVERIFY(editor);
    QCOMPARE(editor->text(), QStringLiteral("Sample 1"));
    QVERIFY(m_item->flags() & Qt::ItemIsEditable);

    // The delegate selects the whole name: typing replaces it. Return
    // commits through a queued call of the delegate.
    QTest::keyClick(editor, Qt::Key_Backspace);
    QTest::keyClicks(editor, typed);
    QTest::keyClick(editor, Qt::Key_Return);
    QTRY_VERIFY(!m_view->renameEditor());

    QCOMPARE(m_view->received, hookReceived);
    QCOMPARE(m_item->text(KATreeWidgetItem::NameColumn), finalText);
    QVERIFY(!(m_item->flags() & Qt::ItemIsEditable));
}

void TestKAListView::escapeKeepsTheNameWithoutAsking()
{
    QLineEdit* editor = openEditor(m_item);
    QVERIFY(editor);
    QTest::keyClicks(editor, QStringLiteral("Other"));
    QTest::keyClick(editor, Qt::Key_Escape);
    QVERIFY(m_view->received.isEmpty());
    QCOMPARE(m_item->text(0), QStringLiteral("Sample 1"));
    QVERIFY(!(m_item->flags() & Qt::ItemIsEditable));
}

void TestKAListView::f2OpensTheEditorOnTheCurrentItem()
{
    m_view->setCurrentItem(m_other);
    m_view->setFocus();
    QTest::keyClick(m_view.get(), Qt::Key_F2);
    auto* editor = qobject_cast<QLineEdit*>(m_view->renameEditor());
    QVERIFY(editor);
    QCOMPARE(editor->text(), QStringLiteral("Sample 2"));
    QTest::keyClicks(editor, QStringLiteral("Renamed"));
    QTest::keyClick(editor, Qt::Key_Enter);
    QTRY_VERIFY(!m_view->renameEditor());
    QCOMPARE(m_view->received, QStringList{"Renamed"});
    QCOMPARE(m_other->text(0), QStringLiteral("Renamed"));
}

void TestKAListView::movingToAnotherItemCommitsTheRename()
{
    QLineEdit* editor = openEditor(m_item);
    QVERIFY(editor);
    QTest::keyClicks(editor, QStringLiteral("Moved away"));
    m_view->setCurrentItem(m_other);
    QCOMPARE(m_view->received, QStringList{"Moved away"});
    QCOMPARE(m_item->text(0), QStringLiteral("Moved away"));
    QVERIFY(!m_view->renameEditor());
}

void TestKAListView::hookMayDeleteTheItem()
{
    m_view->deleteItem = true;
    QLineEdit* editor = openEditor(m_item);
    QVERIFY(editor);
    QTest::keyClicks(editor, QStringLiteral("Gone"));
    QTest::keyClick(editor, Qt::Key_Return);
    QTRY_VERIFY(!m_view->renameEditor());
    m_item = nullptr;
    QCOMPARE(m_view->received, QStringList{"Gone"});
    QCOMPARE(m_view->topLevelItemCount(), 1);
    QCOMPARE(m_view->topLevelItem(0)->text(0), QStringLiteral("Sample 2"));
}

void TestKAListView::editItemNameOnANewItem()
{
    KAObject2 folder(KAObjectTypeFolder, QStringLiteral("New folder"));
    auto* item = new KATreeWidgetItem(m_other, &folder);
    m_view->editItemName(item);
    QCOMPARE(m_view->currentItem(), item);
    auto* editor = qobject_cast<QLineEdit*>(m_view->renameEditor());
    QVERIFY(editor);
    QCOMPARE(editor->text(), QStringLiteral("New folder"));
    QTest::keyClicks(editor, QStringLiteral("Blanks"));
    QTest::keyClick(editor, Qt::Key_Return);
    QTRY_VERIFY(!m_view->renameEditor());
    QCOMPARE(item->text(0), QStringLiteral("Blanks"));
    delete item;
}

void TestKAListView::disabledItemIsNotEdited()
{
    m_item->setFlags(m_item->flags() & ~Qt::ItemIsEnabled);
    m_view->editItemName(m_item);
    QVERIFY(!m_view->renameEditor());
    QVERIFY(!(m_item->flags() & Qt::ItemIsEditable));
}

void TestKAListView::acceptedNameMovesTheItemInTheSort()
{
    m_view->sortItems(KATreeWidgetItem::SortKeyColumn, Qt::AscendingOrder);
    m_view->setSortingEnabled(true);
    QCOMPARE(m_view->topLevelItem(0), m_item);
    QLineEdit* editor = openEditor(m_item);
    QVERIFY(editor);
    QTest::keyClicks(editor, QStringLiteral("Sample 10"));
    QTest::keyClick(editor, Qt::Key_Return);
    QTRY_VERIFY(!m_view->renameEditor());
    QCOMPARE(m_item->text(KATreeWidgetItem::SortKeyColumn),
             KATreeWidgetItem::naturalSortKey(QStringLiteral("Sample 10"), false));
    QTRY_COMPARE(m_view->topLevelItem(1), m_item);
}

QTEST_MAIN(TestKAListView)
#include "tst_kalistview.moc"
