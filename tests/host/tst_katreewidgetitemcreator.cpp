#include "kaobject2.h"
#include "katreewidgetitem.h"
#include "katreewidgetitemcreator.h"
#include "katreewidgetitemcreatorabstract.h"
#include "testfixture.h"

#include <QTest>
#include <QTreeWidget>

#include <memory>

namespace {

class MarkedItem : public KATreeWidgetItem
{
public:
    MarkedItem(QTreeWidgetItem* parentItem, QTreeWidget* view, const KAObject2* object, const QString& mark)
        : KATreeWidgetItem(parentItem, object)
    {
        if (!parentItem && view)
            view->addTopLevelItem(this);
        setVar(mark);
    }
};

// Makes items for one kind of object and records every question.
class KindCreator : public KATreeWidgetItemCreatorAbstract
{
public:
    KindCreator(const QString& mark, KAObjectType kind, QStringList* log, bool declared = false)
        : m_mark(mark), m_kind(kind), m_log(log), m_declared(declared)
    {
    }
    QVector<KAObjectType> itemKinds() const override
    {
        return m_declared ? QVector<KAObjectType>{m_kind} : QVector<KAObjectType>();
    }
    KATreeWidgetItem* createItem(const KAObject2* object, QTreeWidgetItem* parentItem, QTreeWidget* view) override
    {
        *m_log << m_mark;
        if (object->type() != m_kind)
            return nullptr;
        return new MarkedItem(parentItem, view, object, m_mark);
    }

private:
    QString m_mark;
    KAObjectType m_kind;
    QStringList* m_log; // not owned
    bool m_declared;    // names its kind
};

} // namespace

class TestKATreeWidgetItemCreator : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { kaInitTestEnvironment(); }
    void init();
    void cleanup();

    void creatorsAskedInRegistrationOrder_data();
    void creatorsAskedInRegistrationOrder();
    void removedCreatorIsNotAsked();
    void creatorAskedOnlyForTheKindsItNames();
    void defaultItemUnderParentOrInView();
    void nullObjectMakesNothing();

private:
    std::unique_ptr<QTreeWidget> m_view;
    QStringList m_log;
    std::unique_ptr<KindCreator> m_signals;
    std::unique_ptr<KindCreator> m_signalsToo;
    std::unique_ptr<KindCreator> m_wells;
};

void TestKATreeWidgetItemCreator::init()
{
    m_view.reset(new QTreeWidget);
    m_log.clear();
    m_signals.reset(new KindCreator("signals", KAObjectTypeSignal, &m_log));
    m_signalsToo.reset(new KindCreator("signals too", KAObjectTypeSignal, &m_log));
    m_wells.reset(new KindCreator("wells", KAObjectTypeWell, &m_log));
    KATreeWidgetItemCreator* factory = KATreeWidgetItemCreator::instance();
    factory->addCreator(m_wells.get());
    factory->addCreator(m_signals.get());
    factory->addCreator(m_signalsToo.get());
    factory->addCreator(m_signals.get()); // a second registration keeps the first place
}

void TestKATreeWidgetItemCreator::cleanup()
{
    KATreeWidgetItemCreator* factory = KATreeWidgetItemCreator::instance();
    factory->removeCreator(m_wells.get());
    factory->removeCreator(m_signals.get());
    factory->removeCreator(m_signalsToo.get());
    QCOMPARE(factory->creatorCount(), 0);
    m_view.reset();
}

void TestKATreeWidgetItemCreator::creatorsAskedInRegistrationOrder_data()
{
    QTest::addColumn<int>("kind");
    QTest::addColumn<QStringList>("asked");
    QTest::addColumn<QString>("madeBy"); // empty: the default item

    QTest::newRow("first creator that accepts wins") << int(KAObjectTypeSignal)
                                                      << QStringList{"wells", "signals"} << "signals";
    QTest::newRow("first registered accepts at once") << int(KAObjectTypeWell) << QStringList{"wells"} << "wells";
    QTest::newRow("nobody accepts: default item") << int(KAObjectTypeAnalysis)
                                                   << QStringList{"wells", "signals", "signals too"} << "";
}

void TestKATreeWidgetItemCreator::creatorsAskedInRegistrationOrder()
{
    QFETCH(int, kind);
    QFETCH(QStringList, asked);
    QFETCH(QString, madeBy);

    KAObject2 object(KAObjectType(kind), QStringLiteral("object"));
    KATreeWidgetItem* item = KATreeWidgetItemCreator::instance()->createItemTree(&object, nullptr, m_view.get());
    QVERIFY(item);
    QCOMPARE(m_log, asked);
    QCOMPARE(item->getVar().toString(), madeBy);
    QCOMPARE(item->object(), &object);
    QCOMPARE(m_view->topLevelItemCount(), 1);
    QCOMPARE(m_view->topLevelItem(0), item);
}

void TestKATreeWidgetItemCreator::removedCreatorIsNotAsked()
{
    KATreeWidgetItemCreator::instance()->removeCreator(m_signals.get());
    KAObject2 object(KAObjectTypeSignal, QStringLiteral("object"));
    KATreeWidgetItem* item = KATreeWidgetItemCreator::instance()->createItemTree(&object, nullptr, m_view.get());
    QVERIFY(item);
    QCOMPARE(m_log, (QStringList{"wells", "signals too"}));
    QCOMPARE(item->getVar().toString(), QStringLiteral("signals too"));
}

// A creator that names its kinds is asked for those only, in its place
// among the others; kinds asked for before the registry changed are looked
// up again.
void TestKATreeWidgetItemCreator::creatorAskedOnlyForTheKindsItNames()
{
    KATreeWidgetItemCreator* factory = KATreeWidgetItemCreator::instance();
    KAObject2 analysis(KAObjectTypeAnalysis, QStringLiteral("analysis"));
    KAObject2 well(KAObjectTypeWell, QStringLiteral("well"));
    QVERIFY(factory->createItemTree(&analysis, nullptr, m_view.get()));
    QVERIFY(factory->createItemTree(&well, nullptr, m_view.get()));
    QCOMPARE(m_log, (QStringList{"wells", "signals", "signals too", "wells"}));

    KindCreator named("named wells", KAObjectTypeWell, &m_log, true);
    factory->removeCreator(m_wells.get());
    factory->addCreator(&named);
    m_log.clear();
    QCOMPARE(factory->createItemTree(&analysis, nullptr, m_view.get())->getVar().toString(), QString());
    QCOMPARE(m_log, (QStringList{"signals", "signals too"}));
    m_log.clear();
    QCOMPARE(factory->createItemTree(&well, nullptr, m_view.get())->getVar().toString(), QStringLiteral("named wells"));
    QCOMPARE(m_log, (QStringList{"signals", "signals too", "named wells"}));

    factory->removeCreator(&named);
    m_log.clear();
    QCOMPARE(factory->createItemTree(&well, nullptr, m_view.get())->getVar().toString(), QString());
    QCOMPARE(m_log, (QStringList{"signals", "signals too"}));
}

void TestKATreeWidgetItemCreator::defaultItemUnderParentOrInView()
{
    KAObject2 top(KAObjectTypeAnalysis, QStringLiteral("top"));
    KAObject2 child(KAObjectTypeAnalysis, QStringLiteral("child"));
    KATreeWidgetItemCreator* factory = KATreeWidgetItemCreator::instance();

    KATreeWidgetItem* topItem = factory->createItemTree(&top, nullptr, m_view.get());
    QVERIFY(topItem);
    QCOMPARE(m_view->topLevelItemCount(), 1);

    // A parent item wins over the view.
    KATreeWidgetItem* childItem = factory->createItemTree(&child, topItem, m_view.get());
    QVERIFY(childItem);
    QCOMPARE(childItem->parent(), topItem);
    QCOMPARE(m_view->topLevelItemCount(), 1);
    QCOMPARE(childItem->text(0), QStringLiteral("child"));

    // Without parent nor view the item is free, owned by the caller.
    std::unique_ptr<KATreeWidgetItem> freeItem(factory->createItemTree(&child, nullptr, nullptr));
    QVERIFY(freeItem);
    QVERIFY(!freeItem->treeWidget());
    QVERIFY(!freeItem->parent());
}

void TestKATreeWidgetItemCreator::nullObjectMakesNothing()
{
    QVERIFY(!KATreeWidgetItemCreator::instance()->createItemTree(nullptr, nullptr, m_view.get()));
    QVERIFY(m_log.isEmpty());
    QCOMPARE(m_view->topLevelItemCount(), 0);
}

QTEST_MAIN(TestKATreeWidgetItemCreator)
#include "tst_katreewidgetitemcreator.moc"
