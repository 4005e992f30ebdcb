#include "testfixture.h"
#include "ttranslator.h"

#include <QCoreApplication>
#include <QFile>
#include <QLibraryInfo>
#include <QTest>

namespace {

class ObjectTexts : public QObject
{
    Q_OBJECT
public:
    static QString label() { return tr("Show analyses", "Afficher les analyses"); }
};

class PlainTexts
{
    Q_DECLARE_TR_FUNCTIONS(PlainTexts)
public:
    static QString label() { return tr("Delete the folder", "Supprimer le répertoire"); }
};

enum Source { FromQObject, FromPlainClass, FromFreeFunction, FromQtContext };

QString text(int source)
{
    switch (source) {
    case FromQObject: return ObjectTexts::label();
    case FromPlainClass: return PlainTexts::label();
    case FromFreeFunction:
        return QCoreApplication::translate("KAProjectSelection", "Open read-only", "Ouvrir en lecture seule");
    default:
        // Qt's own classes use the second argument as a real disambiguation.
        return QCoreApplication::translate("QTreeWidgetLike", "Kept as is", "Pas une traduction");
    }
}

} // namespace

class TestTTranslator : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void cleanupTestCase();

    void twinByLanguage_data();
    void twinByLanguage();
    void switchingBackAfterRepeatedFrench();
    void qtStandardTextsTranslated();
};

void TestTTranslator::initTestCase()
{
    kaInitTestEnvironment();
    // Nothing has picked a language yet: the process starts in English.
    QCOMPARE(TTranslator::language(), TTranslator::English);
    QCOMPARE(text(FromQObject), QStringLiteral("Show analyses"));
    QCOMPARE(text(FromPlainClass), QStringLiteral("Delete the folder"));
}

void TestTTranslator::init()
{
    TTranslator::setLanguage(TTranslator::English);
}

void TestTTranslator::cleanupTestCase()
{
    TTranslator::setLanguage(TTranslator::English);
}

void TestTTranslator::twinByLanguage_data()
{
    QTest::addColumn<int>("source");
    QTest::addColumn<QString>("english");
    QTest::addColumn<QString>("french");

    QTest::newRow("tr() in a QObject class")
        << int(FromQObject) << QStringLiteral("Show analyses") << QStringLiteral("Afficher les analyses");
    QTest::newRow("tr() in a plain class")
        << int(FromPlainClass) << QStringLiteral("Delete the folder") << QStringLiteral("Supprimer le répertoire");
    QTest::newRow("translate() outside classes")
        << int(FromFreeFunction) << QStringLiteral("Open read-only") << QStringLiteral("Ouvrir en lecture seule");
    QTest::newRow("Qt's own context left alone")
        << int(FromQtContext) << QStringLiteral("Kept as is") << QStringLiteral("Kept as is");
}

void TestTTranslator::twinByLanguage()
{
    QFETCH(int, source);
    QFETCH(QString, english);
    QFETCH(QString, french);

    QCOMPARE(text(source), english);
    TTranslator::setLanguage(TTranslator::French);
    QCOMPARE(TTranslator::language(), TTranslator::French);
    QCOMPARE(text(source), french);
    TTranslator::setLanguage(TTranslator::English);
    QCOMPARE(text(source), english);
}

void TestTTranslator::switchingBackAfterRepeatedFrench()
{
    TTranslator::setLanguage(TTranslator::French);
    TTranslator::setLanguage(TTranslator::French);
    QCOMPARE(text(FromQObject), QStringLiteral("Afficher les analyses"));
    TTranslator::setLanguage(TTranslator::English);
    QCOMPARE(text(FromQObject), QStringLiteral("Show analyses"));
    QCOMPARE(TTranslator::translate("Yes", "Oui"), QStringLiteral("Yes"));
    TTranslator::setLanguage(TTranslator::French);
    QCOMPARE(TTranslator::translate("Yes", "Oui"), QStringLiteral("Oui"));
}

void TestTTranslator::qtStandardTextsTranslated()
{
    const QString qm = QLibraryInfo::location(QLibraryInfo::TranslationsPath) + QStringLiteral("/qtbase_fr.qm");
    if (!QFile::exists(qm))
        QSKIP("Qt's French translations are not installed");
    // The buttons of standard dialogs come from Qt's catalogue, not from the
    // module's twins.
    const QString english = QCoreApplication::translate("QPlatformTheme", "Cancel");
    QCOMPARE(english, QStringLiteral("Cancel"));
    TTranslator::setLanguage(TTranslator::French);
    QCOMPARE(QCoreApplication::translate("QPlatformTheme", "Cancel"), QStringLiteral("Annuler"));
}

QTEST_GUILESS_MAIN(TestTTranslator)
#include "tst_ttranslator.moc"
