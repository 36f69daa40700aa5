#include "UserDefaults.h"

#include "Archiver.h"
#include "SettingsFileGuard.h"

#include <QSettings>
#include <QStandardPaths>
#include <QStringList>

#include <cctype>
#include <charconv>
#include <cmath>
#include <limits>

namespace {

// INI keeps only text and bytes. Every other value is stored as its archive (Archiver) under
// this single key of a map, which QSettings writes as @Variant; a map of any other shape is a
// value someone else stored as it stands. The archive, unlike a QVariant's QDataStream form,
// checks every count against the bytes there are: the file is one a person may edit.
const QString typedValueKey = QStringLiteral("Folidoc.TypedValue");

// The store's path, after its file was checked for values that QSettings cannot read safely.
QString guardedStorePath()
{
    const QString path = UserDefaults::storePath();
    SettingsFileGuard::check(path);
    return path;
}

QVariant encoded(const QVariant &value)
{
    const int type = value.typeId();
    if (type == QMetaType::QString || type == QMetaType::QByteArray)
        return value;
    return QVariantMap { { typedValueKey, Archiver::archivedData(value) } };
}

QVariant decoded(const QVariant &stored)
{
    if (stored.typeId() != QMetaType::QVariantMap)
        return stored;
    const QVariantMap map = stored.toMap();
    if (map.size() != 1 || !map.contains(typedValueKey))
        return stored;
    return Archiver::unarchive(map.value(typedValueKey).toByteArray());
}

bool isNumber(const QVariant &value)
{
    switch (value.typeId()) {
    case QMetaType::Int:
    case QMetaType::UInt:
    case QMetaType::LongLong:
    case QMetaType::ULongLong:
    case QMetaType::Long:
    case QMetaType::ULong:
    case QMetaType::Short:
    case QMetaType::UShort:
    case QMetaType::Char:
    case QMetaType::SChar:
    case QMetaType::UChar:
    case QMetaType::Double:
    case QMetaType::Float:
        return true;
    default:
        return false;
    }
}

bool isFloatingPoint(const QVariant &value)
{
    return value.typeId() == QMetaType::Double || value.typeId() == QMetaType::Float;
}

bool isString(const QVariant &value)
{
    return value.typeId() == QMetaType::QString;
}

// The text after leading white space and one '+', which std::from_chars does not accept.
QByteArray numberText(const QString &text)
{
    QByteArray bytes = text.toUtf8();
    qsizetype start = 0;
    while (start < bytes.size() && std::isspace(static_cast<unsigned char>(bytes.at(start))))
        ++start;
    if (start < bytes.size() && bytes.at(start) == '+')
        ++start;
    return bytes.mid(start);
}

// The leading integer of a string; 0 without one; clamped to the range of qint64.
qint64 integerFromString(const QString &text)
{
    const QByteArray bytes = numberText(text);
    qint64 value = 0;
    const auto [end, error] = std::from_chars(bytes.cbegin(), bytes.cend(), value);
    if (error == std::errc::result_out_of_range)
        return bytes.startsWith('-') ? std::numeric_limits<qint64>::min()
                                     : std::numeric_limits<qint64>::max();
    return error == std::errc() ? value : 0;
}

// The leading decimal number of a string; 0 without one.
double doubleFromString(const QString &text)
{
    const QByteArray bytes = numberText(text);
    double value = 0;
    const auto [end, error] = std::from_chars(bytes.cbegin(), bytes.cend(), value);
    if (error == std::errc::result_out_of_range)
        return 0;
    return error == std::errc() ? value : 0;
}

qint64 integerFromDouble(double value)
{
    if (std::isnan(value))
        return 0;
    if (value >= 9.2233720368547758e18)
        return std::numeric_limits<qint64>::max();
    if (value <= -9.2233720368547758e18)
        return std::numeric_limits<qint64>::min();
    return static_cast<qint64>(value);
}

// Y, y, T, t or a digit 1-9 after white space, one sign and leading zeros.
bool boolFromString(const QString &text)
{
    qsizetype index = 0;
    while (index < text.size() && text.at(index).isSpace())
        ++index;
    if (index < text.size() && (text.at(index) == u'+' || text.at(index) == u'-'))
        ++index;
    while (index < text.size() && text.at(index) == u'0')
        ++index;
    if (index == text.size())
        return false;
    const QChar c = text.at(index);
    return c == u'Y' || c == u'y' || c == u'T' || c == u't' || (c >= u'1' && c <= u'9');
}

} // namespace

UserDefaults &UserDefaults::standard()
{
    static UserDefaults defaults;
    return defaults;
}

QString UserDefaults::storePath()
{
    return QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation)
        + QStringLiteral("/Folidoc/Folidoc.conf");
}

void UserDefaults::registerDefaults(const QVariantMap &defaults)
{
    const std::lock_guard lock(m_registeredMutex);
    m_registered.insert(defaults);
}

QVariant UserDefaults::userValue(const QString &key) const
{
    const QSettings settings(guardedStorePath(), QSettings::IniFormat);
    return decoded(settings.value(key));
}

QVariant UserDefaults::objectForKey(const QString &key) const
{
    const QVariant value = userValue(key);
    if (value.isValid())
        return value;
    const std::lock_guard lock(m_registeredMutex);
    return m_registered.value(key);
}

qint64 UserDefaults::integerForKey(const QString &key) const
{
    const QVariant value = objectForKey(key);
    if (value.typeId() == QMetaType::Bool)
        return value.toBool() ? 1 : 0;
    if (isFloatingPoint(value))
        return integerFromDouble(value.toDouble());
    if (isNumber(value))
        return value.toLongLong();
    if (isString(value))
        return integerFromString(value.toString());
    return 0;
}

double UserDefaults::doubleForKey(const QString &key) const
{
    const QVariant value = objectForKey(key);
    if (value.typeId() == QMetaType::Bool)
        return value.toBool() ? 1.0 : 0.0;
    if (isNumber(value))
        return value.toDouble();
    if (isString(value))
        return doubleFromString(value.toString());
    return 0.0;
}

float UserDefaults::floatForKey(const QString &key) const
{
    return static_cast<float>(doubleForKey(key));
}

bool UserDefaults::boolForKey(const QString &key) const
{
    const QVariant value = objectForKey(key);
    if (value.typeId() == QMetaType::Bool)
        return value.toBool();
    if (isNumber(value))
        return value.toDouble() != 0.0;
    if (isString(value))
        return boolFromString(value.toString());
    return false;
}

QString UserDefaults::stringForKey(const QString &key) const
{
    const QVariant value = objectForKey(key);
    if (isString(value))
        return value.toString();
    if (value.typeId() == QMetaType::Bool)
        return value.toBool() ? QStringLiteral("1") : QStringLiteral("0");
    if (isFloatingPoint(value))
        return QString::number(value.toDouble(), 'g', QLocale::FloatingPointShortest);
    if (isNumber(value))
        return value.toString();
    return {};
}

QByteArray UserDefaults::dataForKey(const QString &key) const
{
    const QVariant value = objectForKey(key);
    return value.typeId() == QMetaType::QByteArray ? value.toByteArray() : QByteArray();
}

QVariantList UserDefaults::arrayForKey(const QString &key) const
{
    const QVariant value = objectForKey(key);
    // Another writer's list of texts comes back from INI as a QStringList.
    if (value.typeId() == QMetaType::QVariantList || value.typeId() == QMetaType::QStringList)
        return value.toList();
    return {};
}

QVariantMap UserDefaults::dictionaryForKey(const QString &key) const
{
    const QVariant value = objectForKey(key);
    if (value.typeId() == QMetaType::QVariantMap || value.typeId() == QMetaType::QVariantHash)
        return value.toMap();
    return {};
}

void UserDefaults::setObject(const QVariant &value, const QString &key)
{
    if (key.isEmpty())
        return;
    if (!value.isValid()) {
        removeObjectForKey(key);
        return;
    }
    QSettings settings(guardedStorePath(), QSettings::IniFormat);
    settings.setValue(key, encoded(value));
    settings.sync();
    if (settings.status() != QSettings::NoError)
        qWarning("UserDefaults: cannot write %s", qPrintable(settings.fileName()));
}

void UserDefaults::setInteger(qint64 value, const QString &key)
{
    setObject(QVariant::fromValue(value), key);
}

void UserDefaults::setDouble(double value, const QString &key)
{
    setObject(QVariant(value), key);
}

void UserDefaults::setFloat(float value, const QString &key)
{
    setObject(QVariant(double(value)), key);
}

void UserDefaults::setBool(bool value, const QString &key)
{
    setObject(QVariant(value), key);
}

void UserDefaults::removeObjectForKey(const QString &key)
{
    // QSettings reads an empty key as "everything".
    if (key.isEmpty())
        return;
    QSettings settings(guardedStorePath(), QSettings::IniFormat);
    settings.remove(key);
    settings.sync();
}

bool UserDefaults::synchronize()
{
    QSettings settings(guardedStorePath(), QSettings::IniFormat);
    settings.sync();
    return settings.status() == QSettings::NoError;
}
