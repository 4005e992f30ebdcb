#include "ttranslator.h"

#include <QCoreApplication>
#include <QLibraryInfo>
#include <QLocale>
#include <QPointer>
#include <QTranslator>

namespace {

// Hands back the French twin that every tr() call carries as its
// disambiguation.
class FrenchTwinTranslator : public QTranslator
{
public:
    using QTranslator::QTranslator;

    QString translate(const char* context, const char* sourceText, const char* disambiguation,
                      int n) const override
    {
        Q_UNUSED(sourceText);
        Q_UNUSED(n);
        // Qt's own contexts (QFileDialog, ...) use the disambiguation for its
        // real purpose; they are left to Qt's translations.
        if (!context || context[0] == 'Q')
            return QString();
        return disambiguation && *disambiguation ? QString::fromUtf8(disambiguation) : QString();
    }
    bool isEmpty() const override { return false; }
};

TTranslator::Language g_language = TTranslator::English;
// Both children of the application object: the guarded pointers clear when
// it goes, so a later application object gets fresh ones.
QPointer<FrenchTwinTranslator> g_twins;
QPointer<QTranslator> g_qtFrench;

} // namespace

void TTranslator::setLanguage(Language language)
{
    g_language = language;
    QCoreApplication* app = QCoreApplication::instance();
    if (!app)
        return;
    // Removed first in both cases: installing twice would stack a second
    // copy that one later removal leaves behind.
    if (g_twins)
        QCoreApplication::removeTranslator(g_twins);
    if (g_qtFrench)
        QCoreApplication::removeTranslator(g_qtFrench);
    if (language != French)
        return;
    if (!g_qtFrench) {
        g_qtFrench = new QTranslator(app);
        const QString dir = QLibraryInfo::location(QLibraryInfo::TranslationsPath);
        if (!g_qtFrench->load(QLocale(QLocale::French), QStringLiteral("qtbase"), QStringLiteral("_"), dir))
            g_qtFrench->load(QLocale(QLocale::French), QStringLiteral("qt"), QStringLiteral("_"), dir);
    }
    if (!g_twins)
        g_twins = new FrenchTwinTranslator(app);
    // Installed last, asked first: the module's twins win over Qt's own.
    QCoreApplication::installTranslator(g_qtFrench);
    QCoreApplication::installTranslator(g_twins);
}

TTranslator::Language TTranslator::language()
{
    return g_language;
}

QString TTranslator::translate(const char* english, const char* french)
{
    return QString::fromUtf8(g_language == French && french ? french : english);
}
