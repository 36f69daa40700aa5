#pragma once

// The preference store: the user's values in an INI file in the XDG config folder, over a layer
// of registered defaults kept in memory. Every read goes to the file, so a change made by another
// writer is seen at once. Typed reads convert between numbers, strings and booleans.
// Any thread.

#include <QByteArray>
#include <QString>
#include <QVariant>
#include <QVariantList>
#include <QVariantMap>

#include <mutex>

class UserDefaults
{
public:
    UserDefaults() = default;
    UserDefaults(const UserDefaults &) = delete;
    UserDefaults &operator=(const UserDefaults &) = delete;

    static UserDefaults &standard();

    // $XDG_CONFIG_HOME/Folidoc/Folidoc.conf, worked out again at every use.
    static QString storePath();

    // Adds to the in-memory layer under the user's values; later registrations win per key.
    void registerDefaults(const QVariantMap &defaults);

    // The user's value, else the registered default, else an invalid QVariant.
    QVariant objectForKey(const QString &key) const;
    // Numbers, booleans and the leading number of a string convert; anything else reads 0.
    qint64 integerForKey(const QString &key) const;
    double doubleForKey(const QString &key) const;
    float floatForKey(const QString &key) const;
    // Non-zero numbers; strings that start with Y, y, T, t or a digit 1 to 9.
    bool boolForKey(const QString &key) const;
    // Strings, and numbers in their text form; anything else reads empty.
    QString stringForKey(const QString &key) const;
    QByteArray dataForKey(const QString &key) const;
    QVariantList arrayForKey(const QString &key) const;
    QVariantMap dictionaryForKey(const QString &key) const;

    // Stores value so that it reads back with its type; an invalid value removes the key.
    void setObject(const QVariant &value, const QString &key);
    void setInteger(qint64 value, const QString &key);
    void setDouble(double value, const QString &key);
    void setFloat(float value, const QString &key);
    void setBool(bool value, const QString &key);
    void removeObjectForKey(const QString &key);

    // Writes pending changes to the file and reads changes made by others.
    bool synchronize();

private:
    QVariant userValue(const QString &key) const;

    mutable std::mutex m_registeredMutex;
    QVariantMap m_registered;
};
