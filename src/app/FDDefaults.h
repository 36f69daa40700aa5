#pragma once

// The keys and first values of the user preferences, and typed readers that ask the store at
// every use (nothing is cached, so a change takes effect at its next reading). Main thread only.

#include <view/PDFViewScaleMode.h>

#include <QList>
#include <QString>
#include <QVariant>

#include <utility>

enum class FDLaunchWith : int { none = 0, lastOpenedWindows = 1 };
enum class FDSavingPrompt : int { none = 0, prompt = 1 };

class FDDefaults
{
public:
    FDDefaults() = delete;

    static inline const QString UserName = QStringLiteral("UserName");
    static inline const QString LaunchWith = QStringLiteral("LaunchWith");
    static inline const QString SavingPrompt = QStringLiteral("SavingPrompt");
    static inline const QString DisableHistory = QStringLiteral("DisableHistory");
    static inline const QString DefaultScaleMode = QStringLiteral("DefaultScaleMode");
    static inline const QString RememberCurrentTheme = QStringLiteral("RememberCurrentTheme");
    static inline const QString CurrentTheme = QStringLiteral("CurrentTheme");
    static inline const QString RememberLastPosition = QStringLiteral("RememberLastPosition");
    static inline const QString AlwaysShowSidebar = QStringLiteral("AlwaysShowSidebar");
    // Not registered: absent until the first save of the window list.
    static inline const QString LastOpenedWindows = QStringLiteral("LastOpenedWindows");
    // Not registered: the recently opened documents as URL strings, newest first.
    static inline const QString RecentDocuments = QStringLiteral("RecentDocuments");

    static FDSavingPrompt savingPrompt();
    static qint64 disableHistory();
    static qint64 rememberCurrentTheme();
    static qint64 rememberLastPosition();
    static qint64 alwaysShowSidebar();
    static QString userName();
    static FDLaunchWith launchWith();
    static PDFViewScaleMode defaultScaleMode();

    // The registered table, in its order, as (key, first value).
    static QList<std::pair<QString, QVariant>> defaultTable();
    static void registerDefaults();
    // Nothing is left to convert from older versions; kept as the place where it would go.
    static void migrateDefaultsFromOlderVersion();

    // The user's full name from the user database, else the login name.
    static QString fullUserName();
};
