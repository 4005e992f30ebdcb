#include "kamimedata.h"
#include "kaobject2.h"
#include "kaobject2decoder.h"
#include "testfixture.h"

#include <QMimeData>
#include <QTest>

#include <memory>

using ObjectList = QList<const KAObject2*>;
using ObjectMimeData = KAMimeData<ObjectList>;

class TestKAMimeData : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { kaInitTestEnvironment(); }
    void init();
    void cleanup();

    void roundTripKeepsObjectsInOrder();
    void existingMimeDataIsReused();
    void foreignMimeDataIsLeftAlone();
    void foreignDataDecodesToEmpty_data();
    void foreignDataDecodesToEmpty();

private:
    std::unique_ptr<KAObject2> m_a;
    std::unique_ptr<KAObject2> m_b;
    std::unique_ptr<KAObject2> m_c;
};

void TestKAMimeData::init()
{
    m_a.reset(new KAObject2(KAObjectTypeSignal, QStringLiteral("a")));
    m_b.reset(new KAObject2(KAObjectTypeWell, QStringLiteral("b")));
    m_c.reset(new KAObject2(KAObjectTypeAnalysis, QStringLiteral("c")));
}

void TestKAMimeData::cleanup()
{
    m_a.reset();
    m_b.reset();
    m_c.reset();
}

void TestKAMimeData::roundTripKeepsObjectsInOrder()
{
    const ObjectList dragged{m_c.get(), m_a.get(), m_b.get()};
    std::unique_ptr<ObjectMimeData> data(ObjectMimeData::create(nullptr, dragged, KAObject2Decoder::objectFormat()));
    QVERIFY(data);
    QVERIFY(data->hasFormat(QStringLiteral("kavelo/data")));
    QVERIFY(data->data(QStringLiteral("kavelo/data")).isEmpty());
    QCOMPARE(data->value(), dragged);
    // Decoded in the host library from data made here.
    QCOMPARE(KAObject2Decoder::decodeObject(data.get()), dragged);
}

void TestKAMimeData::existingMimeDataIsReused()
{
    std::unique_ptr<ObjectMimeData> data(
        ObjectMimeData::create(nullptr, ObjectList{m_a.get()}, KAObject2Decoder::objectFormat()));
    ObjectMimeData* again = ObjectMimeData::create(data.get(), ObjectList{m_b.get(), m_c.get()},
                                                   QStringLiteral("kavelo/other"));
    QCOMPARE(again, data.get());
    QCOMPARE(KAObject2Decoder::decodeObject(data.get()), (ObjectList{m_b.get(), m_c.get()}));
    QVERIFY(data->hasFormat(QStringLiteral("kavelo/data")));
    QVERIFY(data->hasFormat(QStringLiteral("kavelo/other")));
}

void TestKAMimeData::foreignMimeDataIsLeftAlone()
{
    QMimeData foreign;
    foreign.setText(QStringLiteral("plain"));
    std::unique_ptr<ObjectMimeData> data(
        ObjectMimeData::create(&foreign, ObjectList{m_a.get()}, KAObject2Decoder::objectFormat()));
    QVERIFY(data.get() != static_cast<QMimeData*>(&foreign));
    QCOMPARE(foreign.formats(), QStringList{"text/plain"});
    QCOMPARE(KAObject2Decoder::decodeObject(data.get()), ObjectList{m_a.get()});
}

void TestKAMimeData::foreignDataDecodesToEmpty_data()
{
    QTest::addColumn<QString>("source");
    QTest::newRow("null data") << "null";
    QTest::newRow("plain mime data with the format") << "plain";
    QTest::newRow("other value type with the format") << "string";
    QTest::newRow("object list without the format") << "unadvertised";
    QTest::newRow("object list under another format") << "otherformat";
}

void TestKAMimeData::foreignDataDecodesToEmpty()
{
    QFETCH(QString, source);
    std::unique_ptr<QMimeData> data;
    if (source == QLatin1String("plain")) {
        data.reset(new QMimeData);
        data->setData(KAObject2Decoder::objectFormat(), QByteArray("payload"));
    } else if (source == QLatin1String("string")) {
        data.reset(KAMimeData<QString>::create(nullptr, QStringLiteral("x"), KAObject2Decoder::objectFormat()));
    } else if (source == QLatin1String("unadvertised")) {
        data.reset(new ObjectMimeData(ObjectList{m_a.get()}));
    } else if (source == QLatin1String("otherformat")) {
        data.reset(ObjectMimeData::create(nullptr, ObjectList{m_a.get()}, QStringLiteral("text/plain")));
    }
    QVERIFY(KAObject2Decoder::decodeObject(data.get()).isEmpty());
}

QTEST_MAIN(TestKAMimeData)
#include "tst_kamimedata.moc"
