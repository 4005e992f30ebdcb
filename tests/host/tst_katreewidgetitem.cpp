#include "kaobject2.h"
#include "kaobject2folder.h"
#include "katreewidgetitem.h"
#include "testfixture.h"
#include "ttree.h"

#include <QIcon>
#include <QPixmap>
#include <QTest>
#include <QTreeWidget>
#include <QTreeWidgetItemIterator>

#include <memory>
#include <vector>

namespace {

// An item that always sorts last, as a search folder does.
class LastItem : public KATreeWidgetItem
{
public:
    LastItem(QTreeWidget* view, const KAObject2* object)
        : KATreeWidgetItem(view, object)
    {
        updateSortKey();
    }
    QString sortKey() const override { return QStringLiteral("z"); }
};

} // namespace

class TestKATreeWidgetItem : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { kaInitTestEnvironment(); }
    void init();
    void cleanup();

    void sortOrder_data();
    void sortOrder();
    void childrenSortedToo();
    void insertedItemTakesItsPlace();
    void overriddenSortKeyGoesLast();
    void itemHoldsObjectNodeAndVariable();
    void placeholderForm();
    void iconAndKeyAsTheViewReadsThem();
    void renamedObjectGetsItsNewKey();
    void iconName_data();
    void iconName();

private:
    // "F:name" is a folder, anything else a signal.
    KAObject2* makeObject(const QString& entry);
    QStringList visibleOrder() const;

    std::unique_ptr<QTreeWidget> m_view;
    std::vector<std::unique_ptr<KAObject2>> m_objects;
};

void TestKATreeWidgetItem::init()
{
    m_view.reset(new QTreeWidget);
    m_view->setColumnCount(2);
    m_view->setColumnHidden(KATreeWidgetItem::SortKeyColumn, true);
    m_view->resize(300, 400);
    m_view->show();
}

void TestKATreeWidgetItem::cleanup()
{
    m_view.reset();
    m_objects.clear();
}

KAObject2* TestKATreeWidgetItem::makeObject(const QString& entry)
{
    if (entry.startsWith(QLatin1String("F:")))
        m_objects.emplace_back(new KAObject2Folder(entry.mid(2), KAObjectTypeUserFolder));
    else
        m_objects.emplace_back(new KAObject2(KAObjectTypeSignal, entry));
    return m_objects.back().get();
}

QStringList TestKATreeWidgetItem::visibleOrder() const
{
    // Walks the rows as drawn, top to bottom.
    QStringList names;
    for (QTreeWidgetItem* item = m_view->topLevelItem(0); item; item = m_view->itemBelow(item))
        names << item->text(0);
    return names;
}

void TestKATreeWidgetItem::sortOrder_data()
{
    QTest::addColumn<QStringList>("input");
    QTest::addColumn<QStringList>("expected");

    QTest::newRow("folders before other objects")
        << QStringList{"beta", "F:zeta", "alpha", "F:Alpha folder"}
        << QStringList{"Alpha folder", "zeta", "alpha", "beta"};
    QTest::newRow("numbers in natural order, case aside")
        << QStringList{"Sample 10", "Sample 2", "sample 3", "Sample 1"}
        << QStringList{"Sample 1", "Sample 2", "sample 3", "Sample 10"};
    QTest::newRow("case-insensitive")
        << QStringList{"banana", "cherry", "Apple", "apple pie"}
        << QStringList{"Apple", "apple pie", "banana", "cherry"};
    QTest::newRow("leading zeros and long numbers")
        << QStringList{"Run 20240101120000", "Run 10", "Run 9", "Run 007"}
        << QStringList{"Run 007", "Run 9", "Run 10", "Run 20240101120000"};
    QTest::newRow("shorter name first, blanks before digits before letters")
        << QStringList{"abc", "ab1", "ab", "ab 2"}
        << QStringList{"ab", "ab 2", "ab1", "abc"};
    QTest::newRow("accented letters beside their base letter")
        << QStringList{"Zoé", "Eric", "Émile", "elodie", "Delta"}
        << QStringList{"Delta", "elodie", "Émile", "Eric", "Zoé"};
    QTest::newRow("Cyrillic: case-insensitive, natural numbers")
        << QStringList{"яблоко", "образец 10", "Образец 2", "Альфа"}
        << QStringList{"Альфа", "Образец 2", "образец 10", "яблоко"};
    QTest::newRow("scripts: Latin, Greek, Cyrillic, CJK")
        << QStringList{"試料", "Проба", "Δέλτα", "zeta"}
        << QStringList{"zeta", "Δέλτα", "Проба", "試料"};
    QTest::newRow("names that fold alike get a stable order")
        << QStringList{"abc", "Abc", "ABC"}
        << QStringList{"ABC", "Abc", "abc"};
    QTest::newRow("digits of other scripts are numbers")
        << QStringList{"Lot １０", "Lot 9"}
        << QStringList{"Lot 9", "Lot １０"};
    QTest::newRow("folder names sorted among themselves")
        << QStringList{"F:Sample 10", "x", "F:sample 9"}
        << QStringList{"sample 9", "Sample 10", "x"};
}

void TestKATreeWidgetItem::sortOrder()
{
    QFETCH(QStringList, input);
    QFETCH(QStringList, expected);

    for (const QString& entry : input)
        new KATreeWidgetItem(m_view.get(), makeObject(entry));
    m_view->sortItems(KATreeWidgetItem::SortKeyColumn, Qt::AscendingOrder);
    QCOMPARE(visibleOrder(), expected);

    // The same result from the reversed input: the order depends on the keys
    // only.
    m_view->clear();
    for (int i = m_objects.size() - 1; i >= 0; --i)
        new KATreeWidgetItem(m_view.get(), m_objects[i].get());
    m_view->sortItems(KATreeWidgetItem::SortKeyColumn, Qt::AscendingOrder);
    QCOMPARE(visibleOrder(), expected);
}

void TestKATreeWidgetItem::childrenSortedToo()
{
    auto* top = new KATreeWidgetItem(m_view.get(), makeObject("F:top"));
    for (const QString& name : {"Sample 10", "F:b", "Sample 9"})
        new KATreeWidgetItem(top, makeObject(name));
    top->setExpanded(true);
    m_view->sortItems(KATreeWidgetItem::SortKeyColumn, Qt::AscendingOrder);
    QCOMPARE(visibleOrder(), (QStringList{"top", "b", "Sample 9", "Sample 10"}));
}

void TestKATreeWidgetItem::insertedItemTakesItsPlace()
{
    for (const QString& name : {"Sample 1", "Sample 10"})
        new KATreeWidgetItem(m_view.get(), makeObject(name));
    m_view->sortItems(KATreeWidgetItem::SortKeyColumn, Qt::AscendingOrder);
    m_view->setSortingEnabled(true);
    new KATreeWidgetItem(m_view.get(), makeObject("sample 2"));
    QTRY_COMPARE(visibleOrder(), (QStringList{"Sample 1", "sample 2", "Sample 10"}));
}

void TestKATreeWidgetItem::overriddenSortKeyGoesLast()
{
    new LastItem(m_view.get(), makeObject("F:aaa saved search"));
    new KATreeWidgetItem(m_view.get(), makeObject("F:folder"));
    new KATreeWidgetItem(m_view.get(), makeObject("zzz"));
    m_view->sortItems(KATreeWidgetItem::SortKeyColumn, Qt::AscendingOrder);
    QCOMPARE(visibleOrder(), (QStringList{"folder", "zzz", "aaa saved search"}));
}

void TestKATreeWidgetItem::itemHoldsObjectNodeAndVariable()
{
    KAObject2* object = makeObject("Sample");
    TTree<KAObject2*> node;
    node.setData(object);

    auto* item = new KATreeWidgetItem(m_view.get(), object);
    QCOMPARE(item->treeWidget(), m_view.get());
    QCOMPARE(item->object(), object);
    QCOMPARE(item->text(KATreeWidgetItem::NameColumn), QStringLiteral("Sample"));
    QVERIFY(!item->node());
    QVERIFY(!item->isPlaceholder());
    item->setNode(&node);
    QCOMPARE(item->node(), &node);
    item->setVar(42);
    QCOMPARE(item->getVar().toInt(), 42);

    auto* child = new KATreeWidgetItem(item, makeObject("child"));
    QCOMPARE(child->parent(), item);
    QCOMPARE(item->childCount(), 1);
}

// What the view shows of an item: the kind's icon unless one is set on the
// item, and the key in the sort column, also after it is set anew.
void TestKATreeWidgetItem::iconAndKeyAsTheViewReadsThem()
{
    new KATreeWidgetItem(m_view.get(), makeObject("Signal 1"));
    auto* item = new KATreeWidgetItem(m_view.get(), makeObject("Signal 2"));
    new KATreeWidgetItem(m_view.get(), makeObject("F:Folder"));
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
    item->setIcon(KATreeWidgetItem::NameColumn, QIcon());
    QVERIFY(icon(1).isNull());
    QVERIFY(!icon(0).isNull());

    item->setText(KATreeWidgetItem::SortKeyColumn, QStringLiteral("0"));
    QCOMPARE(model->data(model->index(1, KATreeWidgetItem::SortKeyColumn)).toString(), QStringLiteral("0"));
    QCOMPARE(item->sortText(), QStringLiteral("0"));
}

// The key an object keeps for its next items follows its name.
void TestKATreeWidgetItem::renamedObjectGetsItsNewKey()
{
    KAObject2* object = makeObject(QStringLiteral("Échantillon 10"));
    auto* first = new KATreeWidgetItem(m_view.get(), object);
    QCOMPARE(first->sortText(), KATreeWidgetItem::naturalSortKey(QStringLiteral("Échantillon 10"), false));
    object->setName(QStringLiteral("Blank 9"));
    auto* second = new KATreeWidgetItem(m_view.get(), object);
    QCOMPARE(second->sortText(), KATreeWidgetItem::naturalSortKey(QStringLiteral("Blank 9"), false));
    QCOMPARE(second->text(KATreeWidgetItem::SortKeyColumn), second->sortText());
    QCOMPARE(first->sortText(), KATreeWidgetItem::naturalSortKey(QStringLiteral("Échantillon 10"), false));
}

void TestKATreeWidgetItem::placeholderForm()
{
    auto* item = new KATreeWidgetItem(m_view.get(), makeObject("Sample"));
    auto* placeholder = new KATreeWidgetItem(item, nullptr, nullptr);
    QCOMPARE(placeholder->parent(), item);
    QVERIFY(!placeholder->object());
    QCOMPARE(placeholder->getVar().toString(), QStringLiteral("FAKE"));
    QVERIFY(placeholder->isPlaceholder());
    QVERIFY(placeholder->text(KATreeWidgetItem::NameColumn).isEmpty());
    // The expander shows, the subtree is not built.
    QCOMPARE(item->childCount(), 1);
}

void TestKATreeWidgetItem::iconName_data()
{
    QTest::addColumn<int>("kind");
    QTest::addColumn<int>("folderKind");
    QTest::addColumn<QString>("expected");

    QTest::newRow("analysis") << 1 << 0 << "analysis";
    QTest::newRow("dataset") << 4 << 0 << "dataset";
    QTest::newRow("user folder") << 260 << 519 << "user_folder";
    QTest::newRow("analyses folder") << 260 << 514 << "folder_analysis";
    QTest::newRow("numerical arrays folder") << 260 << 516 << "datasetfolder";
    QTest::newRow("indexations folder") << 260 << 528 << "indexation";
    QTest::newRow("identifications folder") << 260 << 530 << "identification";
    QTest::newRow("other folder") << 260 << 517 << "folder";
    QTest::newRow("identification") << 282 << 0 << "identification";
    QTest::newRow("project") << 768 << 0 << "project";
    QTest::newRow("windows file") << 2555 << 0 << "file";
    QTest::newRow("windows folder") << 2556 << 0 << "folder";
    QTest::newRow("alias folder") << 2558 << 0 << "alias_folder";
    QTest::newRow("placeholder") << 2456 << 0 << "placeholder";
    QTest::newRow("compound") << 600 << 0 << "compound";
    QTest::newRow("compound list") << 601 << 0 << "compound_list";
    QTest::newRow("kind without icon") << 265 << 0 << QString();
}

void TestKATreeWidgetItem::iconName()
{
    QFETCH(int, kind);
    QFETCH(int, folderKind);
    QFETCH(QString, expected);

    std::unique_ptr<KAObject2> object;
    if (kind == 260)
        object.reset(new KAObject2Folder(QStringLiteral("f"), KAObjectType(folderKind)));
    else
        object.reset(new KAObject2(KAObjectType(kind), QStringLiteral("o")));
    QCOMPARE(QString::fromLatin1(KATreeWidgetItem::iconName(object.get())), expected);
}

QTEST_MAIN(TestKATreeWidgetItem)
#include "tst_katreewidgetitem.moc"
