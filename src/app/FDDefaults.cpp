#include "FDDefaults.h"

#include <annotation/AnnotationDefaultsKeys.h>
#include <kit/base/Archiver.h>
#include <kit/base/UserDefaults.h>

#include <QColor>

#include <pwd.h>
#include <unistd.h>

namespace {

// A stored integer outside its enumeration can only come from a hand-edited store or a bug:
// going on would act on a state the program does not know.
qint64 checkedEnumValue(const QString &key, qint64 lastCase, const char *enumName)
{
    const qint64 value = UserDefaults::standard().integerForKey(key);
    if (value < 0 || value > lastCase)
        qFatal("The preference \"%s\" holds %lld, which is no case of %s.", qPrintable(key),
            static_cast<long long>(value), enumName);
    return value;
}

} // namespace

FDSavingPrompt FDDefaults::savingPrompt()
{
    return static_cast<FDSavingPrompt>(checkedEnumValue(SavingPrompt, 1, "FDSavingPrompt"));
}

qint64 FDDefaults::disableHistory()
{
    return UserDefaults::standard().integerForKey(DisableHistory);
}

qint64 FDDefaults::rememberCurrentTheme()
{
    return UserDefaults::standard().integerForKey(RememberCurrentTheme);
}

qint64 FDDefaults::rememberLastPosition()
{
    return UserDefaults::standard().integerForKey(RememberLastPosition);
}

qint64 FDDefaults::alwaysShowSidebar()
{
    return UserDefaults::standard().integerForKey(AlwaysShowSidebar);
}

QString FDDefaults::userName()
{
    return UserDefaults::standard().stringForKey(UserName);
}

FDLaunchWith FDDefaults::launchWith()
{
    return static_cast<FDLaunchWith>(checkedEnumValue(LaunchWith, 1, "FDLaunchWith"));
}

PDFViewScaleMode FDDefaults::defaultScaleMode()
{
    return static_cast<PDFViewScaleMode>(checkedEnumValue(DefaultScaleMode, 2, "PDFViewScaleMode"));
}

QList<std::pair<QString, QVariant>> FDDefaults::defaultTable()
{
    namespace Ann = AnnotationDefaultsKeys;
    const QVariant yellow = Archiver::archivedData(QColor(255, 255, 0));
    const QVariant red = Archiver::archivedData(QColor(255, 68, 60));
    const QVariant clear = Archiver::archivedData(QColor(0, 0, 0, 0));
    const auto integer = [](int value) { return QVariant(qint64(value)); };
    return {
        { UserName, fullUserName() },
        { LaunchWith, integer(1) },
        { SavingPrompt, integer(0) },
        { DisableHistory, integer(0) },
        { DefaultScaleMode, integer(0) },
        { RememberCurrentTheme, integer(1) },
        { CurrentTheme, integer(5) },
        { RememberLastPosition, integer(1) },
        { AlwaysShowSidebar, integer(0) },
        { Ann::HighlightColor, yellow },
        { Ann::UnderlineColor, red },
        { Ann::StrikeOutColor, red },
        { Ann::FreeTextFontName, QStringLiteral("Helvetica") },
        { Ann::FreeTextFontSize, integer(12) },
        { Ann::FreeTextColor, red },
        { Ann::FreeTextBackgroundColor, clear },
        { Ann::TextIconType, integer(0) },
        { Ann::InkColor, red },
        { Ann::InkLineWidth, integer(3) },
        { Ann::LineColor, red },
        { Ann::LineLineWidth, integer(3) },
        { Ann::LineLineType, integer(0) },
        { Ann::LineArrowType, integer(2) },
        { Ann::CircleColor, red },
        { Ann::CircleInteriorColor, clear },
        { Ann::CircleLineWidth, integer(3) },
        { Ann::CircleLineType, integer(0) },
        { Ann::SquareColor, red },
        { Ann::SquareInteriorColor, clear },
        { Ann::SquareLineWidth, integer(3) },
        { Ann::SquareLineType, integer(0) },
    };
}

void FDDefaults::registerDefaults()
{
    QVariantMap table;
    for (const auto &[key, value] : defaultTable())
        table.insert(key, value);
    UserDefaults::standard().registerDefaults(table);
}

void FDDefaults::migrateDefaultsFromOlderVersion()
{ }

QString FDDefaults::fullUserName()
{
    const passwd *entry = getpwuid(getuid());
    if (!entry)
        return qEnvironmentVariable("USER");
    // The GECOS field is "Full Name,room,work phone,home phone,other".
    const QString gecos = QString::fromLocal8Bit(entry->pw_gecos ? entry->pw_gecos : "");
    const QString fullName = gecos.section(QLatin1Char(','), 0, 0).trimmed();
    return fullName.isEmpty() ? QString::fromLocal8Bit(entry->pw_name) : fullName;
}
