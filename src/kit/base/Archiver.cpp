#include "Archiver.h"

#include "BezierPath.h"

#include <QColor>
#include <QDataStream>
#include <QDateTime>
#include <QFont>
#include <QIODevice>
#include <QRectF>
#include <QTimeZone>
#include <QUrl>
#include <QtDebug>

namespace Archiver {

namespace {

// Layout: one format byte, then one tagged value. A tag is one byte; containers give their
// element count, strings and bytes their length, so a reader can check them against what is left.
constexpr quint8 formatVersion = 1;
constexpr QDataStream::Version streamVersion = QDataStream::Qt_6_4;
constexpr int maxDepth = 64;
constexpr int colorBytes = 11; // QColor's own stream form: spec, alpha, three channels, pad

enum Tag : quint8 {
    NullTag = 0,
    BoolTag,
    IntTag,
    UIntTag,
    LongLongTag,
    ULongLongTag,
    DoubleTag,
    FloatTag,
    StringTag,
    BytesTag,
    DateTimeTag,
    ColorTag,
    FontTag,
    BezierPathTag,
    ListTag,
    MapTag,
    PointTag,
    RectTag,
    SizeTag,
    UrlTag,
};

enum DateKind : quint8 { InvalidDate = 0, LocalDate, UtcDate, OffsetDate, ZoneDate };

void writeBytes(QDataStream &out, const QByteArray &bytes)
{
    out << quint32(bytes.size());
    out.writeRawData(bytes.constData(), int(bytes.size()));
}

void writeString(QDataStream &out, const QString &text)
{
    writeBytes(out, text.toUtf8());
}

bool writeValue(QDataStream &out, const QVariant &value, int depth)
{
    if (depth > maxDepth) {
        qWarning("Archiver: nesting deeper than %d levels", maxDepth);
        return false;
    }
    if (!value.isValid()) {
        out << quint8(NullTag);
        return true;
    }
    const int type = value.metaType().id();
    switch (type) {
    case QMetaType::Bool:
        out << quint8(BoolTag) << value.toBool();
        return true;
    case QMetaType::Int:
    case QMetaType::Short:
    case QMetaType::SChar:
    case QMetaType::Char:
        out << quint8(IntTag) << qint32(value.toInt());
        return true;
    case QMetaType::UInt:
    case QMetaType::UShort:
    case QMetaType::UChar:
        out << quint8(UIntTag) << quint32(value.toUInt());
        return true;
    case QMetaType::LongLong:
    case QMetaType::Long:
        out << quint8(LongLongTag) << qint64(value.toLongLong());
        return true;
    case QMetaType::ULongLong:
    case QMetaType::ULong:
        out << quint8(ULongLongTag) << quint64(value.toULongLong());
        return true;
    case QMetaType::Double:
        out << quint8(DoubleTag) << value.toDouble();
        return true;
    case QMetaType::Float:
        out << quint8(FloatTag) << value.toFloat();
        return true;
    case QMetaType::QString:
        out << quint8(StringTag);
        writeString(out, value.toString());
        return true;
    case QMetaType::QByteArray:
        out << quint8(BytesTag);
        writeBytes(out, value.toByteArray());
        return true;
    case QMetaType::QDateTime: {
        const QDateTime date = value.toDateTime();
        out << quint8(DateTimeTag);
        if (!date.isValid()) {
            out << quint8(InvalidDate);
            return true;
        }
        switch (date.timeSpec()) {
        case Qt::LocalTime:
            out << quint8(LocalDate) << date.toMSecsSinceEpoch();
            break;
        case Qt::UTC:
            out << quint8(UtcDate) << date.toMSecsSinceEpoch();
            break;
        case Qt::OffsetFromUTC:
            out << quint8(OffsetDate) << date.toMSecsSinceEpoch() << qint32(date.offsetFromUtc());
            break;
        case Qt::TimeZone:
            out << quint8(ZoneDate) << date.toMSecsSinceEpoch();
            writeBytes(out, date.timeZone().id());
            break;
        }
        return true;
    }
    case QMetaType::QColor:
        out << quint8(ColorTag) << value.value<QColor>();
        return true;
    case QMetaType::QFont:
        out << quint8(FontTag);
        writeString(out, value.value<QFont>().toString());
        return true;
    case QMetaType::QPointF:
    case QMetaType::QPoint: {
        const QPointF point = value.toPointF();
        out << quint8(PointTag) << point.x() << point.y();
        return true;
    }
    case QMetaType::QRectF:
    case QMetaType::QRect: {
        const QRectF rect = value.toRectF();
        out << quint8(RectTag) << rect.x() << rect.y() << rect.width() << rect.height();
        return true;
    }
    case QMetaType::QSizeF:
    case QMetaType::QSize: {
        const QSizeF size = value.toSizeF();
        out << quint8(SizeTag) << size.width() << size.height();
        return true;
    }
    case QMetaType::QUrl:
        out << quint8(UrlTag);
        writeString(out, value.toUrl().toString(QUrl::FullyEncoded));
        return true;
    case QMetaType::QStringList:
    case QMetaType::QVariantList: {
        const QVariantList list = value.toList();
        out << quint8(ListTag) << quint32(list.size());
        for (const QVariant &item : list) {
            if (!writeValue(out, item, depth + 1))
                return false;
        }
        return true;
    }
    case QMetaType::QVariantMap:
    case QMetaType::QVariantHash: {
        const QVariantMap map = value.toMap();
        out << quint8(MapTag) << quint32(map.size());
        for (auto it = map.constBegin(); it != map.constEnd(); ++it) {
            writeString(out, it.key());
            if (!writeValue(out, it.value(), depth + 1))
                return false;
        }
        return true;
    }
    default:
        break;
    }
    if (value.metaType() == QMetaType::fromType<BezierPath>()) {
        out << quint8(BezierPathTag) << value.value<BezierPath>();
        return true;
    }
    qWarning("Archiver: cannot archive a value of type %s", value.metaType().name());
    return false;
}

// Reads values back, checking the stream after every read and every length against the bytes
// that are left, so that no input can make it allocate more than the input's size or recurse
// without bound.
class Reader
{
public:
    explicit Reader(QDataStream &in)
        : m_in(in)
    { }

    bool readValue(QVariant &value, int depth)
    {
        if (depth > maxDepth)
            return false;
        quint8 tag = 0;
        m_in >> tag;
        if (!ok())
            return false;
        switch (Tag(tag)) {
        case NullTag:
            value = QVariant();
            return true;
        case BoolTag:
            return readNumber<bool>(value);
        case IntTag:
            return readNumber<qint32, int>(value);
        case UIntTag:
            return readNumber<quint32, uint>(value);
        case LongLongTag:
            return readNumber<qint64>(value);
        case ULongLongTag:
            return readNumber<quint64>(value);
        case DoubleTag:
            return readNumber<double>(value);
        case FloatTag:
            return readNumber<float>(value);
        case StringTag: {
            QString text;
            if (!readString(text))
                return false;
            value = text;
            return true;
        }
        case BytesTag: {
            QByteArray bytes;
            if (!readBytes(bytes))
                return false;
            value = bytes;
            return true;
        }
        case DateTimeTag:
            return readDateTime(value);
        case ColorTag:
            return readColor(value);
        case FontTag: {
            QString description;
            QFont font;
            if (!readString(description) || !font.fromString(description))
                return false;
            value = font;
            return true;
        }
        case BezierPathTag: {
            BezierPath path;
            m_in >> path;
            if (!ok())
                return false;
            value = QVariant::fromValue(path);
            return true;
        }
        case ListTag:
            return readList(value, depth);
        case MapTag:
            return readMap(value, depth);
        case PointTag:
            return readDoubles<2>(value, [](const double *v) { return QPointF(v[0], v[1]); });
        case RectTag:
            return readDoubles<4>(
                value, [](const double *v) { return QRectF(v[0], v[1], v[2], v[3]); });
        case SizeTag:
            return readDoubles<2>(value, [](const double *v) { return QSizeF(v[0], v[1]); });
        case UrlTag: {
            QString text;
            if (!readString(text))
                return false;
            value = QUrl(text, QUrl::StrictMode);
            return true;
        }
        }
        return false;
    }

    bool ok() const { return m_in.status() == QDataStream::Ok; }
    bool atEnd() const { return m_in.atEnd(); }

private:
    template <typename Stored, typename Result = Stored> bool readNumber(QVariant &value)
    {
        Stored number {};
        m_in >> number;
        if (!ok())
            return false;
        value = QVariant::fromValue(Result(number));
        return true;
    }

    template <int Count, typename Make> bool readDoubles(QVariant &value, Make make)
    {
        double numbers[Count] = {};
        for (double &number : numbers)
            m_in >> number;
        if (!ok())
            return false;
        value = make(numbers);
        return true;
    }

    bool fits(quint64 count, quint64 bytesEach) const
    {
        return count * bytesEach <= quint64(m_in.device()->bytesAvailable());
    }

    bool readBytes(QByteArray &bytes)
    {
        quint32 size = 0;
        m_in >> size;
        if (!ok() || !fits(size, 1))
            return false;
        bytes.resize(qsizetype(size));
        return m_in.readRawData(bytes.data(), int(size)) == int(size);
    }

    bool readString(QString &text)
    {
        QByteArray bytes;
        if (!readBytes(bytes))
            return false;
        text = QString::fromUtf8(bytes);
        return true;
    }

    bool readDateTime(QVariant &value)
    {
        quint8 kind = 0;
        m_in >> kind;
        if (!ok())
            return false;
        if (kind == InvalidDate) {
            value = QDateTime();
            return true;
        }
        qint64 msecs = 0;
        m_in >> msecs;
        if (!ok())
            return false;
        switch (DateKind(kind)) {
        case LocalDate:
            value = QDateTime::fromMSecsSinceEpoch(msecs, Qt::LocalTime);
            return true;
        case UtcDate:
            value = QDateTime::fromMSecsSinceEpoch(msecs, Qt::UTC);
            return true;
        case OffsetDate: {
            qint32 offset = 0;
            m_in >> offset;
            if (!ok())
                return false;
            value = QDateTime::fromMSecsSinceEpoch(msecs, Qt::OffsetFromUTC, offset);
            return true;
        }
        case ZoneDate: {
            QByteArray id;
            if (!readBytes(id))
                return false;
            const QTimeZone zone(id);
            if (!zone.isValid())
                return false;
            value = QDateTime::fromMSecsSinceEpoch(msecs, zone);
            return true;
        }
        case InvalidDate:
            break;
        }
        return false;
    }

    bool readColor(QVariant &value)
    {
        // QColor's reader trusts its spec byte; check it before handing the bytes over.
        QByteArray bytes(colorBytes, Qt::Uninitialized);
        if (m_in.readRawData(bytes.data(), colorBytes) != colorBytes)
            return false;
        const qint8 spec = qint8(bytes.at(0));
        if (spec < QColor::Invalid || spec > QColor::ExtendedRgb)
            return false;
        QDataStream colorStream(bytes);
        colorStream.setVersion(streamVersion);
        QColor color;
        colorStream >> color;
        if (colorStream.status() != QDataStream::Ok)
            return false;
        value = color;
        return true;
    }

    bool readList(QVariant &value, int depth)
    {
        quint32 count = 0;
        m_in >> count;
        if (!ok() || !fits(count, 1)) // every element takes at least its tag byte
            return false;
        QVariantList list;
        list.reserve(count);
        for (quint32 i = 0; i < count; ++i) {
            QVariant item;
            if (!readValue(item, depth + 1))
                return false;
            list.append(item);
        }
        value = list;
        return true;
    }

    bool readMap(QVariant &value, int depth)
    {
        quint32 count = 0;
        m_in >> count;
        if (!ok() || !fits(count, 5)) // a key length and a tag at least
            return false;
        QVariantMap map;
        for (quint32 i = 0; i < count; ++i) {
            QString key;
            QVariant item;
            if (!readString(key) || !readValue(item, depth + 1))
                return false;
            map.insert(key, item);
        }
        value = map;
        return true;
    }

    QDataStream &m_in;
};

} // namespace

QByteArray archivedData(const QVariant &value)
{
    if (!value.isValid())
        return {};
    QByteArray data;
    QDataStream out(&data, QIODevice::WriteOnly);
    out.setVersion(streamVersion);
    out << formatVersion;
    if (!writeValue(out, value, 0) || out.status() != QDataStream::Ok)
        return {};
    return data;
}

QVariant unarchive(const QByteArray &data)
{
    QDataStream in(data);
    in.setVersion(streamVersion);
    quint8 version = 0;
    in >> version;
    if (in.status() != QDataStream::Ok || version != formatVersion)
        return {};
    Reader reader(in);
    QVariant value;
    if (!reader.readValue(value, 0) || !reader.ok() || !reader.atEnd())
        return {};
    return value;
}

} // namespace Archiver
