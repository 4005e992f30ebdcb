#include "applicationinterface.h"
#include "tapplicationdata.h"
#include "testfixture.h"

#include <QFile>
#include <QStandardPaths>
#include <QTest>

static ApplicationInterface* app() { return ApplicationInterface::returnMe(); }

class TestApplicationServices : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { kaInitTestEnvironment(); }
    void init() { QFile::remove(app()->settingsPath()); app()->reloadSettings(); }
    void cleanupTestCase() { QFile::remove(app()->settingsPath()); }
    void settingsRoundTripThroughTheFile()
    {
        // Tests must never touch the user's own settings.
        const QString location = QStandardPaths::writableLocation(QStandardPaths::AppDataLocation);
        QVERIFY2(location.contains(QLatin1String(".qttest")), qPrintable(location));
        QCOMPARE(TApplicationData::getInstance()->applicationDataPath(), location);
        QVERIFY(app()->settingsPath().startsWith(location + QLatin1Char('/')));
        // Markup, quotes, accents, line breaks and empty values survive; the last write wins.
        const QList<QPair<QString, QVariant>> values{
            {"language", "fr"}, {"last project", "a<b>&\"c\" 'd'"}, {"folder", QStringLiteral("C:/Données/Été 2024")},
            {"filter", QString()}, {"note", "one\ntwo\tthree"}, {"count", 12}, {"language", "en"}};
        for (const auto& value : values)
            QVERIFY(app()->setSetting(value.first, value.second));
        app()->reloadSettings(); // read back from the file, not from memory
        for (const auto& value : values.mid(1))
            QCOMPARE(app()->setting(value.first, QStringLiteral("default")).toString(), value.second.toString());
        QCOMPARE(app()->language(), QStringLiteral("en"));
        QVERIFY(app()->setting(QStringLiteral("absent"), 7).toInt() == 7 && !app()->setting("absent").isValid());
    }
    void malformedFileGivesDefaults_data()
    {
        QTest::addColumn<QByteArray>("content");
        QTest::newRow("not XML") << QByteArray("language=fr\n");
        QTest::newRow("truncated") << QByteArray("<settings version=\"1\"><setting key=\"language\" value=\"fr");
        QTest::newRow("other root") << QByteArray("<options><setting key=\"language\" value=\"fr\"/></options>");
        QTest::newRow("nested 50,000 deep") << QByteArray("<settings>") + QByteArray("<x>").repeated(50000);
        QTest::newRow("empty file") << QByteArray();
        QTest::newRow("binary") << QByteArray("\0\1\2\3\xff\xfe", 6);
    }

    void malformedFileGivesDefaults()
    {
        QFETCH(QByteArray, content);
        QFile file(app()->settingsPath());
        QVERIFY(file.open(QIODevice::WriteOnly) && file.write(content) == content.size() && file.flush());
        app()->reloadSettings();
        QCOMPARE(app()->setting(QStringLiteral("language"), "default").toString(), QStringLiteral("default"));
        QCOMPARE(app()->language(), QStringLiteral("en"));
        // The next change writes a sound file again.
        QVERIFY(app()->setSetting(QStringLiteral("language"), QStringLiteral("fr")));
        app()->reloadSettings();
        QCOMPARE(app()->language(), QStringLiteral("fr"));
    }
};

QTEST_GUILESS_MAIN(TestApplicationServices)
#include "tst_applicationservices.moc"
