#include "ttranslator.h"

#include <QCoreApplication>
#include <QLibraryInfo>
#include <QLocale>
#include <QTranslator>

namespace {

// Hands back the French twin that every tr() call carries as its
// disambiguation.
class FrenchTwinTranslator : public QTranslator
{
public:
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
FrenchTwinTranslator* g_twins = nullptr; // owned by the application object
QTranslator* g_qtFrench = nullptr;      // owned by the application object

} // namespace

void TTranslator::setLanguage(Language language)
{
    g_language = language;
    QCoreApplication* app = QCoreApplication::instance();
    if (!app)
        return;
    if (language == French) {
        if (!g_qtFrench) {
            g_qtFrench = new QTranslator(app);
            if (!g_qtFrench->load(QLocale(QLocale::French), QStringLiteral("qtbase"), QStringLiteral("_"),
                                  QLibraryInfo::location(QLibraryInfo::TranslationsPath)))
                g_qtFrench->load(QLocale(QLocale::French), QStringLiteral("qt"), QStringLiteral("_"),
                                 QLibraryInfo::location(QLibraryInfo::TranslationsPath));
        }
        if (!g_twins)
            g_twins = new FrenchTwinTranslator;
        g_twins->setParent(app);
        // Installed last, asked first: the module's twins win over Qt's own.
        QCoreApplication::installTranslator(g_qtFrench);
        QCoreApplication::installTranslator(g_twins);
    } else {
        if (g_twins)
            QCoreApplication::removeTranslator(g_twins);
        if (g_qtFrench)
            QCoreApplication::removeTranslator(g_qtFrench);
    }
}

TTranslator::Language TTranslator::language()
{
    return g_language;
}

QString TTranslator::translate(const char* english, const char* french)
{
    return QString::fromUtf8(g_language == French && french ? french : english);
}
