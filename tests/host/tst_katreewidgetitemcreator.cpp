#include "kaobject2.h"
#include "katreewidgetitem.h"
#include "katreewidgetitemcreator.h"
#include "katreewidgetitemcreatorabstract.h"
#include "testfixture.h"

#include <QTest>
#include <QTreeWidget>

#include <memory>

namespace {

// Makes items for one kind of object, marked with its name, and records
// every question; `declared` names the kind to the registry.
struct KindCreator : KATreeWidgetItemCreatorAbstract {
    KindCreator(const char* name, KAObjectType made, QStringList* record, bool names = false)
        : mark(QString::fromLatin1(name)), kind(made), log(record), declared(names) {}
    QVector<KAObjectType> itemKinds() const override { return declared ? QVector<KAObjectType>{kind} : QVector<KAObjectType>(); }
    KATreeWidgetItem* createItem(const KAObject2* object, QTreeWidgetItem*, QTreeWidget* view) override
    {
        *log << mark;
        KATreeWidgetItem* item = object->type() == kind ? new KATreeWidgetItem(view, object) : nullptr;
        if (item)
            item->setVar(mark);
        return item;
    }
    QString mark;
    KAObjectType kind;
    QStringList* log; // not owned
    bool declared;
};

KATreeWidgetItemCreator* factory() { return KATreeWidgetItemCreator::instance(); }

} // namespace

class TestKATreeWidgetItemCreator : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { kaInitTestEnvironment(); }
    void creatorsAskedInRegistrationOrder();
};

void TestKATreeWidgetItemCreator::creatorsAskedInRegistrationOrder()
{
    QTreeWidget view;
    // The mark of the creator that made the item, empty for the default one.
    auto madeBy = [&view](const KAObject2& o) { return factory()->createItemTree(&o, nullptr, &view)->getVar().toString(); };
    QStringList log;
    KindCreator wells("wells", KAObjectTypeWell, &log), signalsFirst("signals", KAObjectTypeSignal, &log),
        signalsToo("signals too", KAObjectTypeSignal, &log), named("named wells", KAObjectTypeWell, &log, true);
    for (KindCreator* creator : {&wells, &signalsFirst, &signalsToo, &signalsFirst})
        factory()->addCreator(creator); // a second registration keeps the first place
    KAObject2 signal(KAObjectTypeSignal, QStringLiteral("signal")), well(KAObjectTypeWell, QStringLiteral("well")),
        analysis(KAObjectTypeAnalysis, QStringLiteral("analysis"));
    QCOMPARE(madeBy(signal), QStringLiteral("signals"));
    QCOMPARE(madeBy(well), QStringLiteral("wells"));
    QCOMPARE(madeBy(analysis), QString());
    QVERIFY(!factory()->createItemTree(nullptr, nullptr, &view));
    QCOMPARE(log, (QStringList{"wells", "signals", "wells", "wells", "signals", "signals too"}));
    QCOMPARE(static_cast<KATreeWidgetItem*>(view.topLevelItem(0))->object(), &signal);

    // A removed creator is not asked; one that names its kinds is asked for
    // those only, in its place, also for kinds looked up before.
    for (KindCreator* creator : {&signalsFirst, &wells})
        factory()->removeCreator(creator);
    factory()->addCreator(&named);
    log.clear();
    QCOMPARE(madeBy(signal), QStringLiteral("signals too"));
    QCOMPARE(madeBy(analysis), QString());
    QCOMPARE(madeBy(well), QStringLiteral("named wells"));
    QCOMPARE(log, (QStringList{"signals too", "signals too", "signals too", "named wells"}));
    factory()->removeCreator(&named);
    QCOMPARE(madeBy(well), QString());
    factory()->removeCreator(&signalsToo);
    QCOMPARE(factory()->creatorCount(), 0);

    // The default item goes under a parent item rather than in the view, and
    // without either it is free, owned by the caller.
    auto* top = static_cast<KATreeWidgetItem*>(view.topLevelItem(0));
    QCOMPARE(factory()->createItemTree(&analysis, top, &view)->parent(), top);
    std::unique_ptr<KATreeWidgetItem> freeItem(factory()->createItemTree(&analysis, nullptr, nullptr));
    QVERIFY(freeItem && !freeItem->treeWidget() && !freeItem->parent());
}

QTEST_MAIN(TestKATreeWidgetItemCreator)
#include "tst_katreewidgetitemcreator.moc"
