#include "Pasteboard.h"

#include "Archiver.h"

#include <QClipboard>
#include <QGuiApplication>
#include <QMimeData>

#include <memory>

namespace {

QClipboard *clipboard()
{
    if (!qGuiApp) {
        qWarning("Pasteboard: no QGuiApplication, so no clipboard");
        return nullptr;
    }
    return QGuiApplication::clipboard();
}

} // namespace

Pasteboard &Pasteboard::general()
{
    static Pasteboard pasteboard;
    return pasteboard;
}

void Pasteboard::clearContents()
{
    ++m_changeCount;
    m_written = nullptr;
    if (QClipboard *board = clipboard())
        board->clear();
}

const QMimeData *Pasteboard::contents() const
{
    QClipboard *board = clipboard();
    return board ? board->mimeData() : nullptr;
}

bool Pasteboard::write(const std::function<void(QMimeData &)> &fill)
{
    QClipboard *board = clipboard();
    if (!board)
        return false;
    // A clipboard takes a whole QMimeData at once, so each write hands over a copy of what was
    // written so far plus the new type.
    auto data = std::make_unique<QMimeData>();
    const QMimeData *current = board->mimeData();
    if (m_written && current == m_written.data()) {
        const QStringList formats = current->formats();
        for (const QString &format : formats)
            data->setData(format, current->data(format));
    }
    fill(*data);
    m_written = data.get();
    board->setMimeData(data.release());
    return true;
}

bool Pasteboard::setPropertyList(const QVariant &propertyList, const QString &type)
{
    const QByteArray bytes = Archiver::archivedData(propertyList);
    if (bytes.isEmpty())
        return false;
    return setData(bytes, type);
}

bool Pasteboard::setString(const QString &string)
{
    return write([&](QMimeData &data) {
        data.setData(StringType, string.toUtf8());
        data.setText(string);
    });
}

bool Pasteboard::setData(const QByteArray &bytes, const QString &type)
{
    if (type.isEmpty())
        return false;
    return write([&](QMimeData &data) { data.setData(type, bytes); });
}

bool Pasteboard::writeURLs(const QList<QUrl> &urls)
{
    return write([&](QMimeData &data) { data.setUrls(urls); });
}

QVariant Pasteboard::propertyListForType(const QString &type) const
{
    if (!canReadType(type))
        return {};
    return Archiver::unarchive(dataForType(type));
}

QString Pasteboard::stringForType(const QString &type) const
{
    const QMimeData *data = contents();
    if (!data)
        return {};
    if (data->hasFormat(type))
        return QString::fromUtf8(data->data(type));
    if (type == StringType && data->hasText())
        return data->text();
    return {};
}

QByteArray Pasteboard::dataForType(const QString &type) const
{
    const QMimeData *data = contents();
    if (!data)
        return {};
    if (type == StringType && !data->hasFormat(type) && data->hasText())
        return data->text().toUtf8();
    return data->data(type);
}

QList<QUrl> Pasteboard::readURLs() const
{
    const QMimeData *data = contents();
    return data ? data->urls() : QList<QUrl>();
}

QStringList Pasteboard::types() const
{
    const QMimeData *data = contents();
    return data ? data->formats() : QStringList();
}

QString Pasteboard::availableTypeFromArray(const QStringList &candidates) const
{
    for (const QString &type : candidates) {
        if (canReadType(type))
            return type;
    }
    return {};
}

bool Pasteboard::canReadType(const QString &type) const
{
    const QMimeData *data = contents();
    if (!data || type.isEmpty())
        return false;
    return data->hasFormat(type) || (type == StringType && data->hasText());
}

QVariant Pasteboard::readFirstObjectOfTypes(const QStringList &candidates) const
{
    const QString type = availableTypeFromArray(candidates);
    if (type.isNull())
        return {};
    if (type == StringType || type == QLatin1String("text/plain"))
        return stringForType(type);
    if (type == URLType) {
        const QList<QUrl> urls = readURLs();
        return urls.isEmpty() ? QVariant() : QVariant(urls.first());
    }
    const QByteArray bytes = dataForType(type);
    const QVariant propertyList = Archiver::unarchive(bytes);
    return propertyList.isValid() ? propertyList : QVariant(bytes);
}
