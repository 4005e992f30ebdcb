#include "kaobject2.h"
#include "kaobject2folder.h"
#include "katreewidgetitem.h"
#include "testfixture.h"

#include <QIcon>
#include <QPixmap>
#include <QTest>
#include <QTreeWidget>

#include <memory>
#include <vector>

namespace {

// An item that always sorts last, as a search folder does.
struct LastItem : KATreeWidgetItem {
    LastItem(QTreeWidget* view, const KAObject2* object) : KATreeWidgetItem(view, object) { updateSortKey(); }
    QString sortKey() const override { return QStringLiteral("z"); }
};

} // namespace

class TestKATreeWidgetItem : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { kaInitTestEnvironment(); }
    void init() { m_view.reset(new QTreeWidget); m_view->setColumnCount(2); }
    void cleanup() { m_view.reset(); m_objects.clear(); }

    void sortOrder_data();
    void sortOrder();
    void iconAndKeyAsTheViewReadsThem();

private:
    // "F:name" is a folder, "L:name" an item sorting last, anything else a
    // signal.
    KATreeWidgetItem* makeItem(const QString& entry)
    {
        const bool folder = entry.startsWith(QLatin1String("F:")), last = entry.startsWith(QLatin1String("L:"));
        m_objects.emplace_back(folder ? new KAObject2Folder(entry.mid(2), KAObjectTypeUserFolder)
                                      : new KAObject2(KAObjectTypeSignal, last ? entry.mid(2) : entry));
        return last ? new LastItem(m_view.get(), m_objects.back().get())
                    : new KATreeWidgetItem(m_view.get(), m_objects.back().get());
    }

    std::unique_ptr<QTreeWidget> m_view;
    std::vector<std::unique_ptr<KAObject2>> m_objects;
};

void TestKATreeWidgetItem::sortOrder_data()
{
    QTest::addColumn<QStringList>("input");
    QTest::addColumn<QStringList>("expected");

    QTest::newRow("folders before other objects, search folders last")
        << QStringList{"beta", "F:zeta", "L:aaa saved search", "alpha", "F:Alpha folder"}
        << QStringList{"Alpha folder", "zeta", "alpha", "beta", "aaa saved search"};
    QTest::newRow("numbers in natural order, case aside, leading zeros, long numbers")
        << QStringList{"Sample 10", "Sample 2", "sample 3", "Sample 1", "apple pie", "Apple", "Run 20240101120000", "Run 007"}
        << QStringList{"Apple", "apple pie", "Run 007", "Run 20240101120000", "Sample 1", "Sample 2", "sample 3", "Sample 10"};
    QTest::newRow("shorter first, blank, digit, letter") << QStringList{"abc", "ab1", "ab", "ab 2"} << QStringList{"ab", "ab 2", "ab1", "abc"};
    QTest::newRow("accented letters beside their base letter")
        << QStringList{"Zoé", "Eric", "Émile", "elodie", "Delta"} << QStringList{"Delta", "elodie", "Émile", "Eric", "Zoé"};
    QTest::newRow("Cyrillic: case-insensitive, natural numbers")
        << QStringList{"яблоко", "образец 10", "Образец 2", "Альфа"} << QStringList{"Альфа", "Образец 2", "образец 10", "яблоко"};
    QTest::newRow("Latin, Greek, Cyrillic, CJK") << QStringList{"試料", "Проба", "Δέλτα", "zeta"} << QStringList{"zeta", "Δέλτα", "Проба", "試料"};
    QTest::newRow("alike once folded: stable") << QStringList{"abc", "Abc", "ABC"} << QStringList{"ABC", "Abc", "abc"};
    QTest::newRow("digits of other scripts are numbers") << QStringList{"Lot １０", "Lot 9"} << QStringList{"Lot 9", "Lot １０"};
    QTest::newRow("folders among themselves") << QStringList{"F:Sample 10", "x", "F:sample 9"} << QStringList{"sample 9", "Sample 10", "x"};
}

// The order depends on the keys only: the reversed input sorts the same.
void TestKATreeWidgetItem::sortOrder()
{
    QFETCH(QStringList, input);
    QFETCH(QStringList, expected);

    for (bool reversed : {false, true}) {
        m_view->clear();
        for (int i = 0; i < input.size(); ++i)
            makeItem(input[reversed ? input.size() - 1 - i : i]);
        m_view->sortItems(KATreeWidgetItem::SortKeyColumn, Qt::AscendingOrder);
        QStringList names;
        for (QTreeWidgetItem* item = m_view->topLevelItem(0); item; item = m_view->itemBelow(item))
            names << item->text(KATreeWidgetItem::NameColumn);
        QCOMPARE(names, expected);
    }
}

// What the view shows of an item: the kind's icon unless one is set on the
// item, and the key in the sort column, also after it is set anew; a
// placeholder shows the expander without building the subtree.
void TestKATreeWidgetItem::iconAndKeyAsTheViewReadsThem()
{
    makeItem(QStringLiteral("Signal 1"));
    KATreeWidgetItem* item = makeItem(QStringLiteral("Signal 2"));
    makeItem(QStringLiteral("F:Folder"));
    const QAbstractItemModel* model = m_view->model();
    auto icon = [&](int row) {
        return model->data(model->index(row, KATreeWidgetItem::NameColumn), Qt::DecorationRole).value<QIcon>();
    };
    const QModelIndex key = model->index(1, KATreeWidgetItem::SortKeyColumn);
    QCOMPARE(model->data(key).toString(), KATreeWidgetItem::naturalSortKey(QStringLiteral("Signal 2"), false));
    QCOMPARE(model->data(key, Qt::EditRole).toString(), model->data(key).toString());
    QVERIFY(!icon(1).isNull());
    QCOMPARE(icon(1).cacheKey(), icon(0).cacheKey());
    QVERIFY(icon(2).cacheKey() != icon(1).cacheKey());

    QPixmap red(16, 16);
    red.fill(Qt::red);
    const QIcon own(red);
    item->setIcon(KATreeWidgetItem::NameColumn, own);
    QCOMPARE(icon(1).cacheKey(), own.cacheKey());

    item->setText(KATreeWidgetItem::SortKeyColumn, QStringLiteral("0"));
    QCOMPARE(model->data(key).toString(), QStringLiteral("0"));
    QCOMPARE(item->sortText(), QStringLiteral("0"));

    auto* placeholder = new KATreeWidgetItem(item, nullptr, nullptr);
    QVERIFY(placeholder->isPlaceholder() && !placeholder->object() && item->childCount() == 1);
    QCOMPARE(placeholder->getVar().toString(), QStringLiteral("FAKE"));

    // The key an object keeps for its next items follows its name.
    KATreeWidgetItem* first = makeItem(QStringLiteral("Échantillon 10"));
    m_objects.back()->setName(QStringLiteral("Blank 9"));
    auto* second = new KATreeWidgetItem(m_view.get(), m_objects.back().get());
    QCOMPARE(second->sortText(), KATreeWidgetItem::naturalSortKey(QStringLiteral("Blank 9"), false));
    QCOMPARE(second->text(KATreeWidgetItem::SortKeyColumn), second->sortText());
    QCOMPARE(first->sortText(), KATreeWidgetItem::naturalSortKey(QStringLiteral("Échantillon 10"), false));
}

QTEST_MAIN(TestKATreeWidgetItem)
#include "tst_katreewidgetitem.moc"
