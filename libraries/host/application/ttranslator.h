#pragma once

#include "kahost_export.h"

#include <QString>

class QCoreApplication;

// Every text of the module is written twice: tr(english, french). The
// French literal travels as the disambiguation of Qt's translation call;
// when French is active an installed translator hands it back, so the same
// tr() serves QObject and plain classes alike.
class KAHOST_EXPORT TTranslator
{
public:
    enum Language { English = 0, French = 1 };
    // Installs the translator (and Qt's own French translations for
    // standard dialogs when French is picked). Needs an application object.
    static void setLanguage(Language language);
    static Language language();
    static QString translate(const char* english, const char* french);
};
