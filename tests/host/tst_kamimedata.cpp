#include "kamimedata.h"
#include "kaobject2.h"
#include "kaobject2decoder.h"
#include "testfixture.h"

#include <QTest>

#include <memory>

using ObjectList = QList<const KAObject2*>;
using ObjectMimeData = KAMimeData<ObjectList>;

class TestKAMimeData : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { kaInitTestEnvironment(); }

    // Drag data made here decodes in the host library in drag order; made again on it, it is reused,
    // while another program's data is left alone. Data of any other making decodes to nothing.
    void dragDataRoundTrip()
    {
        const KAObject2 a(KAObjectTypeSignal, "a"), b(KAObjectTypeWell, "b"), c(KAObjectTypeAnalysis, "c");
        const QString format = KAObject2Decoder::objectFormat();
        std::unique_ptr<ObjectMimeData> data(ObjectMimeData::create(nullptr, {&c, &a, &b}, format));
        QVERIFY(data->hasFormat(QStringLiteral("kavelo/data")) && data->data(format).isEmpty()); // advertised empty
        QCOMPARE(KAObject2Decoder::decodeObject(data.get()), (ObjectList{&c, &a, &b}));
        QCOMPARE(ObjectMimeData::create(data.get(), {&b, &c}, QStringLiteral("kavelo/other")), data.get());
        QCOMPARE(KAObject2Decoder::decodeObject(data.get()), (ObjectList{&b, &c}));
        QVERIFY(data->hasFormat(QStringLiteral("kavelo/data")) && data->hasFormat(QStringLiteral("kavelo/other")));
        QMimeData plain;
        plain.setText(QStringLiteral("plain"));
        data.reset(ObjectMimeData::create(&plain, {&a}, format));
        QVERIFY(data.get() != static_cast<QMimeData*>(&plain));
        QCOMPARE(plain.formats(), QStringList{"text/plain"});
        QCOMPARE(KAObject2Decoder::decodeObject(data.get()), ObjectList{&a});
        plain.setData(format, QByteArray("payload"));
        const std::unique_ptr<QMimeData> others[] = {
            std::unique_ptr<QMimeData>(KAMimeData<QString>::create(nullptr, "x", format)), // another value type
            std::make_unique<ObjectMimeData>(ObjectList{&a}),                      // the format not advertised
            std::unique_ptr<QMimeData>(ObjectMimeData::create(nullptr, {&a}, QStringLiteral("text/plain")))};
        QVERIFY(KAObject2Decoder::decodeObject(nullptr).isEmpty() && KAObject2Decoder::decodeObject(&plain).isEmpty());
        for (const std::unique_ptr<QMimeData>& other : others)
            QVERIFY(KAObject2Decoder::decodeObject(other.get()).isEmpty());
    }
};

QTEST_MAIN(TestKAMimeData)
#include "tst_kamimedata.moc"
