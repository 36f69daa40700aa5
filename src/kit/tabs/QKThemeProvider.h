#pragma once

// Holds the day and night frame themes and the current one. Setting the current theme posts
// QKThemeDidChangeNotification on the kit's notification centre, so that every strip and window
// repaints at once. Main thread only.

#include "QKTheme.h"

#include <QString>

class QKThemeProvider
{
public:
    // Posted on NotificationCenter::qkCenter() with the provider as sender.
    static inline const QString QKThemeDidChangeNotification
        = QStringLiteral("QKThemeDidChangeNotification");

    static QKThemeProvider &sharedInstance();

    const QKTheme &day() const { return m_day; }
    const QKTheme &night() const { return m_night; }
    // The day theme until another is set.
    const QKTheme &current() const { return m_current; }
    // Posts the change notification even when the theme is the current one already.
    void setCurrent(const QKTheme &theme);

private:
    QKThemeProvider();

    const QKTheme m_day;
    const QKTheme m_night;
    QKTheme m_current;
};
