#include "testfixture.h"
#include "ttranslator.h"

#include <QFile>
#include <QLibraryInfo>
#include <QTest>

namespace {
struct ObjectTexts : QObject {
    Q_OBJECT
public:
    static QString label() { return tr("Delete the folder", "Supprimer le répertoire"); }
};

// A class's tr(), the plain twin function, and a text of a Qt class, whose
// second argument is a real disambiguation and is left alone.
QStringList texts()
{
    return {ObjectTexts::label(), TTranslator::translate("Yes", "Oui"),
            QCoreApplication::translate("QTreeWidgetLike", "Kept as is", "Pas une traduction")};
}
} // namespace

class TestTTranslator : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { kaInitTestEnvironment(); }
    void cleanup() { TTranslator::setLanguage(TTranslator::English); }

    // The process starts in English; switching back works after French was
    // picked twice.
    void twinByLanguage()
    {
        const QStringList english{"Delete the folder", "Yes", "Kept as is"};
        QCOMPARE(TTranslator::language(), TTranslator::English);
        QCOMPARE(texts(), english);
        TTranslator::setLanguage(TTranslator::French);
        TTranslator::setLanguage(TTranslator::French);
        QCOMPARE(TTranslator::language(), TTranslator::French);
        QCOMPARE(texts(), (QStringList{QStringLiteral("Supprimer le répertoire"), "Oui", "Kept as is"}));
        TTranslator::setLanguage(TTranslator::English);
        QCOMPARE(texts(), english);
    }

    // Standard dialogs' buttons come from Qt's catalogue, not from the twins.
    void qtStandardTextsTranslated()
    {
        if (!QFile::exists(QLibraryInfo::location(QLibraryInfo::TranslationsPath) + QStringLiteral("/qtbase_fr.qm")))
            QSKIP("Qt's French translations are not installed");
        QCOMPARE(QCoreApplication::translate("QPlatformTheme", "Cancel"), QStringLiteral("Cancel"));
        TTranslator::setLanguage(TTranslator::French);
        QCOMPARE(QCoreApplication::translate("QPlatformTheme", "Cancel"), QStringLiteral("Annuler"));
    }
};

QTEST_GUILESS_MAIN(TestTTranslator)
#include "tst_ttranslator.moc"
