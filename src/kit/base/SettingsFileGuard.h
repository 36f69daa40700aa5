#pragma once

// Keeps values out of an INI settings file that QSettings would decode unsafely. QSettings reads
// an "@Variant(...)" value with QDataStream, which reserves whatever element count a list claims
// before reading one element: a few edited bytes can ask for gigabytes and end the process.
// Each such value is checked by a bounded walk of its stream first; one that is not a plain,
// well-formed value of the kinds a store holds is taken out of the file. Thread-safe.

#include <QByteArray>
#include <QString>

namespace SettingsFileGuard {

// Checks the file at path (once per change of its size, time or inode) and rewrites it without
// the values that fail, atomically. Answers how many were taken out this time.
int check(const QString &path);

// The file's text without the failing values; dropped counts them.
QByteArray withoutUnsafeValues(const QByteArray &text, int *dropped);

// Whether the bytes between "@Variant(" and ")" are a value that reads without claiming more
// than they hold: numbers, strings, byte arrays, string lists, lists, maps and hashes of them.
bool isSafeVariantStream(const QByteArray &stream);

} // namespace SettingsFileGuard
