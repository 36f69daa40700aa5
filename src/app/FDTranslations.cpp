#include "FDTranslations.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <QLibraryInfo>
#include <QTranslator>

#include <memory>

namespace {

struct Installed
{
    std::unique_ptr<QTranslator> qt;
    std::unique_ptr<QTranslator> program;
};

Installed &installed()
{
    static Installed translators;
    return translators;
}

const QString ProgramFolder = QStringLiteral(":/i18n");

std::unique_ptr<QTranslator> load(const QLocale &locale, const QString &name, const QString &folder)
{
    auto translator = std::make_unique<QTranslator>();
    if (!translator->load(locale, name, QStringLiteral("_"), folder))
        return nullptr;
    QCoreApplication::installTranslator(translator.get());
    return translator;
}

} // namespace

void FDTranslations::install(const QLocale &locale)
{
    Installed &current = installed();
    for (auto *translator : { &current.qt, &current.program }) {
        if (*translator)
            QCoreApplication::removeTranslator(translator->get());
        translator->reset();
    }
    current.qt = load(
        locale, QStringLiteral("qtbase"), QLibraryInfo::path(QLibraryInfo::TranslationsPath));
    current.program = load(locale, QStringLiteral("folidoc"), ProgramFolder);
}

QStringList FDTranslations::shippedLanguages()
{
    QStringList languages;
    const QStringList files = QDir(ProgramFolder).entryList({ QStringLiteral("folidoc_*.qm") });
    for (const QString &file : files)
        languages.append(QFileInfo(file).completeBaseName().mid(int(qstrlen("folidoc_"))));
    return languages;
}

QString FDTranslations::installedLanguage()
{
    const QTranslator *program = installed().program.get();
    return program ? program->language().section(QLatin1Char('_'), 0, 0) : QString();
}
