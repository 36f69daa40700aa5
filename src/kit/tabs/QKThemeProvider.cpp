#include "QKThemeProvider.h"

#include <kit/base/NotificationCenter.h>

QKThemeProvider::QKThemeProvider()
    : m_day(QKTheme::dayTheme())
    , m_night(QKTheme::nightTheme())
    , m_current(m_day)
{ }

QKThemeProvider &QKThemeProvider::sharedInstance()
{
    static QKThemeProvider provider;
    return provider;
}

void QKThemeProvider::setCurrent(const QKTheme &theme)
{
    m_current = theme;
    NotificationCenter::qkCenter().post(QKThemeDidChangeNotification, this);
}
