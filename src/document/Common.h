#pragma once

// Free helpers that everything about a file rests on: extended attributes, URLs made storable,
// and the application's folders. Stateless apart from the two folder caches; any thread except
// where noted.

#include <QByteArray>
#include <QList>
#include <QString>
#include <QUrl>
#include <QVariantList>

#include <optional>

// Attribute names are given without the "user." namespace that Linux requires; a name of 127
// UTF-8 bytes or more stops the process. Failures of the system call are ignored.
void FDSetXAttr(const QUrl &url, const QString &name, const QByteArray &data);
// The bytes, or nothing for a missing, empty or unreadable attribute.
std::optional<QByteArray> FDGetXAttr(const QUrl &url, const QString &name);
// Always true, whether or not the attribute existed.
bool FDRemoveXAttr(const QUrl &url, const QString &name);

// URLs as storable data: the UTF-8 bytes of each URL's string without its query. Elements that
// are not URLs are passed over.
QVariantList FDEncodeURLs(const QVariantList &urls);
QVariantList FDEncodeURLs(const QList<QUrl> &urls);
// Reads what FDEncodeURLs wrote; keeps only file URLs whose file exists. Non-data elements are
// passed over; an invalid or empty list gives an empty list.
QList<QUrl> FDDecodeURLs(const QVariant &datas);

// The URL's absolute string; with a query, the string of a URL of scheme, host and path only.
QString absoluteStringWithoutQueryString(const QUrl &url);

// One folder for each user application-support folder, the application's name appended.
// Main thread.
QList<QUrl> applicationSupportDirectoryURLs();
// A new, empty folder of its own under the user's temporary items. Main thread.
QUrl uniqueChewableItemsDirectoryURL();
