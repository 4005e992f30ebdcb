#include "applicationinterface.h"
#include "tapplicationdata.h"
#include "testfixture.h"
#include "txmlmethod.h"

#include <QDomDocument>
#include <QFile>
#include <QStandardPaths>
#include <QTest>

namespace {

bool writeAll(const QString& path, const QByteArray& bytes)
{
    QFile file(path);
    return file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size();
}

ApplicationInterface* app()
{
    return ApplicationInterface::returnMe();
}

} // namespace

class TestApplicationServices : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void cleanupTestCase();

    void settingsLiveInTheTestLocation();
    void settingRoundTrip_data();
    void settingRoundTrip();
    void severalSettingsKeptTogether();
    void malformedFileGivesDefaults_data();
    void malformedFileGivesDefaults();
};

void TestApplicationServices::initTestCase()
{
    kaInitTestEnvironment();
}

void TestApplicationServices::init()
{
    QFile::remove(app()->settingsPath());
    app()->reloadSettings();
}

void TestApplicationServices::cleanupTestCase()
{
    QFile::remove(app()->settingsPath());
}

void TestApplicationServices::settingsLiveInTheTestLocation()
{
    // Tests must never touch the user's own settings.
    const QString location = QStandardPaths::writableLocation(QStandardPaths::AppDataLocation);
    QVERIFY2(location.contains(QLatin1String(".qttest")), qPrintable(location));
    QCOMPARE(TApplicationData::getInstance()->applicationDataPath(), location);
    QVERIFY(app()->settingsPath().startsWith(location + QLatin1Char('/')));
    QVERIFY(QFileInfo(location).isDir());
}

void TestApplicationServices::settingRoundTrip_data()
{
    QTest::addColumn<QString>("key");
    QTest::addColumn<QString>("value");

    QTest::newRow("language") << QStringLiteral("language") << QStringLiteral("fr");
    QTest::newRow("markup and quotes") << QStringLiteral("last project") << QStringLiteral("a<b>&\"c\" 'd'");
    QTest::newRow("accented path") << QStringLiteral("folder") << QStringLiteral("C:/Données/Été 2024");
    QTest::newRow("empty value") << QStringLiteral("filter") << QString();
    QTest::newRow("line breaks") << QStringLiteral("note") << QStringLiteral("one\ntwo\tthree");
}

void TestApplicationServices::settingRoundTrip()
{
    QFETCH(QString, key);
    QFETCH(QString, value);

    QVERIFY(app()->setSetting(key, value));
    QVERIFY(QFile::exists(app()->settingsPath()));

    // Read back from the file, not from memory.
    app()->reloadSettings();
    const QVariant read = app()->setting(key, QStringLiteral("default"));
    QCOMPARE(read.toString(), value);

    QDomDocument doc;
    QVERIFY(TXMLMethod::load(app()->settingsPath(), doc));
    QCOMPARE(doc.documentElement().tagName(), QStringLiteral("settings"));
    const QDomElement e = doc.documentElement().firstChildElement(QStringLiteral("setting"));
    QCOMPARE(e.attribute(QStringLiteral("key")), key);
    QCOMPARE(e.attribute(QStringLiteral("value")), value);
}

void TestApplicationServices::severalSettingsKeptTogether()
{
    QVERIFY(app()->setSetting(QStringLiteral("language"), QStringLiteral("fr")));
    QVERIFY(app()->setSetting(QStringLiteral("count"), 12));
    QVERIFY(app()->setSetting(QStringLiteral("language"), QStringLiteral("en")));
    app()->reloadSettings();
    QCOMPARE(app()->setting(QStringLiteral("count")).toInt(), 12);
    QCOMPARE(app()->language(), QStringLiteral("en"));
    QCOMPARE(app()->setting(QStringLiteral("absent"), 7).toInt(), 7);
    QVERIFY(!app()->setting(QStringLiteral("absent")).isValid());
}

void TestApplicationServices::malformedFileGivesDefaults_data()
{
    QTest::addColumn<QByteArray>("content");

    const QByteArray deep = QByteArray("<settings>") + QByteArray("<x>").repeated(50000);
    QTest::newRow("not XML") << QByteArray("language=fr\n");
    QTest::newRow("truncated") << QByteArray("<settings version=\"1\"><setting key=\"language\" value=\"fr");
    QTest::newRow("other root element")
        << QByteArray("<options><setting key=\"language\" value=\"fr\"/></options>");
    QTest::newRow("nested 50,000 deep") << deep;
    QTest::newRow("empty file") << QByteArray();
    QTest::newRow("binary") << QByteArray("\0\1\2\3\xff\xfe", 6);
}

void TestApplicationServices::malformedFileGivesDefaults()
{
    QFETCH(QByteArray, content);

    QVERIFY(writeAll(app()->settingsPath(), content));
    app()->reloadSettings();
    QCOMPARE(app()->language(), QStringLiteral("en"));
    QCOMPARE(app()->setting(QStringLiteral("language"), QStringLiteral("default")).toString(),
             QStringLiteral("default"));

    // The next change writes a sound file again.
    QVERIFY(app()->setSetting(QStringLiteral("language"), QStringLiteral("fr")));
    app()->reloadSettings();
    QCOMPARE(app()->language(), QStringLiteral("fr"));
}

QTEST_GUILESS_MAIN(TestApplicationServices)
#include "tst_applicationservices.moc"
