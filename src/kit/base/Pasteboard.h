#pragma once

// The general pasteboard over the system clipboard: typed writes that accumulate until the next
// clear, and typed reads. Types are MIME format strings. Main thread only.

#include <QByteArray>
#include <QList>
#include <QPointer>
#include <QString>
#include <QStringList>
#include <QUrl>
#include <QVariant>

#include <functional>

class QMimeData;

class Pasteboard
{
public:
    static inline const QString StringType = QStringLiteral("text/plain;charset=utf-8");
    static inline const QString PDFType = QStringLiteral("application/pdf");
    static inline const QString TIFFType = QStringLiteral("image/tiff");
    static inline const QString PNGType = QStringLiteral("image/png");
    static inline const QString URLType = QStringLiteral("text/uri-list");

    static Pasteboard &general();
    Pasteboard(const Pasteboard &) = delete;
    Pasteboard &operator=(const Pasteboard &) = delete;

    // Empties the clipboard; the writes that follow form its new contents together.
    void clearContents();
    // Counts the clears, so a holder can tell whether the contents it wrote are still current.
    int changeCount() const { return m_changeCount; }

    // Each write adds one type to what this pasteboard wrote since the last clear. If another
    // program took the clipboard meanwhile, the write starts fresh contents.
    bool setPropertyList(const QVariant &propertyList, const QString &type);
    bool setString(const QString &string);
    bool setData(const QByteArray &data, const QString &type);
    bool writeURLs(const QList<QUrl> &urls);

    // An invalid QVariant when the type is absent or its bytes are not an archive.
    QVariant propertyListForType(const QString &type) const;
    // Null when there is no text of that type; plain text counts as StringType.
    QString stringForType(const QString &type = StringType) const;
    QByteArray dataForType(const QString &type) const;
    QList<QUrl> readURLs() const;

    QStringList types() const;
    // The first of the given types that is present, or a null string.
    QString availableTypeFromArray(const QStringList &types) const;
    bool canReadType(const QString &type) const;
    // The object for the first given type present: a QString for the string type, the first QUrl
    // for the URL type, a property list when the bytes are an archive, else the raw bytes.
    QVariant readFirstObjectOfTypes(const QStringList &types) const;

private:
    Pasteboard() = default;
    const QMimeData *contents() const;
    bool write(const std::function<void(QMimeData &)> &fill);

    // What this pasteboard last handed to the clipboard; the clipboard owns and deletes it.
    QPointer<QMimeData> m_written;
    int m_changeCount = 0;
};
