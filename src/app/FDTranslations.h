#pragma once

// Puts the interface into the person's language: Qt's own texts (standard dialogs and buttons)
// and the program's, both chosen from the locale's languages in order of preference.

#include <QLocale>
#include <QStringList>

class QTranslator;

class FDTranslations
{
public:
    FDTranslations() = delete;

    // Installs the translators for locale on the running application, replacing those of an
    // earlier call; a language without a translation leaves the English texts. Main thread only.
    static void install(const QLocale &locale = QLocale::system());
    // The languages the program ships, as "de", "fr".
    static QStringList shippedLanguages();
    // The language of the installed program translation, empty for English.
    static QString installedLanguage();
};
