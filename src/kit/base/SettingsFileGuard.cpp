#include "SettingsFileGuard.h"

#include "Log.h"

#include <QFile>
#include <QSaveFile>

#include <mutex>
#include <optional>

#include <sys/stat.h>

namespace {

// The stream version QSettings uses for "@Variant": its type ids and layouts are Qt 4's, with
// no null flag after the type.
enum Qt4Type : quint32 {
    Bool = 1,
    Int = 2,
    UInt = 3,
    LongLong = 4,
    ULongLong = 5,
    Double = 6,
    Char = 7,
    Map = 8,
    List = 9,
    String = 10,
    StringList = 11,
    ByteArray = 12,
    Rect = 19,
    RectF = 20,
    Size = 21,
    SizeF = 22,
    Line = 23,
    LineF = 24,
    Point = 25,
    PointF = 26,
    Hash = 28,
};

constexpr int MaxDepth = 32;
// A settings file larger than this is not ours: it is set aside, not read.
constexpr qint64 MaxFileSize = 16 * 1024 * 1024;

class StreamWalker
{
public:
    explicit StreamWalker(const QByteArray &bytes)
        : m_bytes(bytes)
    { }

    bool variant(int depth)
    {
        quint32 type = 0;
        if (depth > MaxDepth || !number(type))
            return false;
        switch (type) {
        case Bool:
            return skip(1);
        case Char:
            return skip(2);
        case Int:
        case UInt:
            return skip(4);
        case LongLong:
        case ULongLong:
        case Double:
        case Size:
        case Point:
            return skip(8);
        case Rect:
        case SizeF:
        case Line:
        case PointF:
            return skip(16);
        case RectF:
        case LineF:
            return skip(32);
        case String:
            return string();
        case ByteArray:
            return byteArray();
        case StringList:
            return elements(4, [this] { return string(); });
        case List:
            return elements(4, [this, depth] { return variant(depth + 1); });
        case Map:
        case Hash:
            return elements(8, [this, depth] { return string() && variant(depth + 1); });
        default:
            return false; // user types and the rest: not something a store of ours writes
        }
    }

    bool atEnd() const { return m_at == m_bytes.size(); }

private:
    qsizetype left() const { return m_bytes.size() - m_at; }

    bool skip(qsizetype count)
    {
        if (count > left())
            return false;
        m_at += count;
        return true;
    }

    bool number(quint32 &value)
    {
        if (left() < 4)
            return false;
        const auto *const data = reinterpret_cast<const uchar *>(m_bytes.constData() + m_at);
        value = quint32(data[0]) << 24 | quint32(data[1]) << 16 | quint32(data[2]) << 8 | data[3];
        m_at += 4;
        return true;
    }

    bool string()
    {
        quint32 length = 0;
        if (!number(length))
            return false;
        return length == 0xFFFFFFFFu || (length % 2 == 0 && skip(qsizetype(length)));
    }

    bool byteArray()
    {
        quint32 length = 0;
        if (!number(length))
            return false;
        return length == 0xFFFFFFFFu || skip(qsizetype(length));
    }

    // A count, never more than the bytes left could hold at the smallest element size.
    template <typename Element> bool elements(qsizetype smallest, Element element)
    {
        quint32 count = 0;
        if (!number(count) || qsizetype(count) > left() / smallest)
            return false;
        for (quint32 i = 0; i < count; ++i) {
            if (!element())
                return false;
        }
        return true;
    }

    const QByteArray &m_bytes;
    qsizetype m_at = 0;
};

int hexValue(char c)
{
    if (c >= '0' && c <= '9')
        return c - '0';
    if (c >= 'a' && c <= 'f')
        return c - 'a' + 10;
    if (c >= 'A' && c <= 'F')
        return c - 'A' + 10;
    return -1;
}

// The value part of an INI line as QSettings reads it, as Latin-1 bytes; nothing when it is a
// list (an unquoted comma) and so no "@Variant".
std::optional<QByteArray> unescapedValue(const QByteArray &raw)
{
    QString result;
    QByteArray plain; // raw bytes, read as UTF-8 the way QSettings does
    const auto flush = [&] {
        result += QString::fromUtf8(plain);
        plain.clear();
    };
    bool quoted = false;
    qsizetype i = 0;
    const qsizetype n = raw.size();
    while (i < n) {
        const char c = raw[i];
        if (c == '"') {
            quoted = !quoted;
            ++i;
        } else if (c == ',' && !quoted) {
            return std::nullopt;
        } else if (c == '\\' && i + 1 < n) {
            flush();
            const char e = raw[i + 1];
            i += 2;
            switch (e) {
            case 'a':
                result += QChar(u'\a');
                break;
            case 'b':
                result += QChar(u'\b');
                break;
            case 'f':
                result += QChar(u'\f');
                break;
            case 'n':
                result += QChar(u'\n');
                break;
            case 'r':
                result += QChar(u'\r');
                break;
            case 't':
                result += QChar(u'\t');
                break;
            case 'v':
                result += QChar(u'\v');
                break;
            case 'x': {
                uint value = 0;
                while (i < n && hexValue(raw[i]) >= 0)
                    value = ((value << 4) + uint(hexValue(raw[i++]))) & 0xFFFFu;
                result += QChar(char16_t(value));
                break;
            }
            default:
                if (e >= '0' && e <= '7') {
                    uint value = uint(e - '0');
                    while (i < n && raw[i] >= '0' && raw[i] <= '7')
                        value = ((value << 3) + uint(raw[i++] - '0')) & 0xFFFFu;
                    result += QChar(char16_t(value));
                } else {
                    result += QLatin1Char(e); // \" \' \? \\ and anything else as itself
                }
            }
        } else if (!quoted && (c == ' ' || c == '\t') && result.isEmpty() && plain.isEmpty()) {
            ++i; // leading blanks
        } else {
            plain += c;
            ++i;
        }
    }
    flush();
    return result.trimmed().toLatin1();
}

bool lineIsSafe(const QByteArray &line)
{
    if (!line.contains("@Variant("))
        return true;
    const qsizetype equals = line.indexOf('=');
    if (equals < 0)
        return true; // not a value; QSettings skips it
    const std::optional<QByteArray> value = unescapedValue(line.mid(equals + 1).trimmed());
    if (!value || !value->startsWith("@Variant("))
        return true;
    if (!value->endsWith(')'))
        return false;
    const QByteArray stream = value->mid(9, value->size() - 10);
    return SettingsFileGuard::isSafeVariantStream(stream);
}

struct Identity
{
    qint64 size = -1;
    qint64 seconds = 0;
    qint64 nanoseconds = 0;
    quint64 inode = 0;
    bool operator==(const Identity &) const = default;
};

std::optional<Identity> identityOf(const QString &path)
{
    struct stat info
    {
    };
    if (::stat(QFile::encodeName(path).constData(), &info) != 0)
        return std::nullopt;
    return Identity { qint64(info.st_size), qint64(info.st_mtim.tv_sec),
        qint64(info.st_mtim.tv_nsec), quint64(info.st_ino) };
}

} // namespace

namespace SettingsFileGuard {

bool isSafeVariantStream(const QByteArray &stream)
{
    StreamWalker walker(stream);
    return walker.variant(0) && walker.atEnd();
}

QByteArray withoutUnsafeValues(const QByteArray &text, int *dropped)
{
    int count = 0;
    QByteArray result;
    result.reserve(text.size());
    qsizetype start = 0;
    while (start < text.size()) {
        qsizetype end = text.indexOf('\n', start);
        end = end < 0 ? text.size() : end + 1;
        // A line that ends in a backslash goes on in the next one.
        while (end < text.size() && end >= 2 && text[end - 2] == '\\') {
            const qsizetype next = text.indexOf('\n', end);
            end = next < 0 ? text.size() : next + 1;
        }
        const QByteArray line = text.mid(start, end - start);
        if (lineIsSafe(line))
            result += line;
        else
            ++count;
        start = end;
    }
    if (dropped)
        *dropped = count;
    return result;
}

int check(const QString &path)
{
    static std::mutex mutex;
    static std::optional<Identity> checked;
    const std::lock_guard lock(mutex);
    const std::optional<Identity> identity = identityOf(path);
    if (!identity || identity == checked)
        return 0;
    QFile file(path);
    if (identity->size > MaxFileSize) {
        Log::warn(QStringLiteral("The settings file %1 is too large to be ours; it is set aside")
                      .arg(path));
        QFile::remove(path + QStringLiteral(".too-large"));
        file.rename(path + QStringLiteral(".too-large"));
        checked.reset();
        return 0;
    }
    if (!file.open(QIODevice::ReadOnly))
        return 0;
    const QByteArray text = file.read(MaxFileSize);
    file.close();
    int dropped = 0;
    const QByteArray kept = withoutUnsafeValues(text, &dropped);
    if (dropped > 0) {
        QSaveFile out(path);
        if (out.open(QIODevice::WriteOnly) && out.write(kept) == kept.size() && out.commit())
            Log::warn(QStringLiteral("%1 damaged value(s) were taken out of the settings file %2")
                          .arg(dropped)
                          .arg(path));
    }
    checked = identityOf(path);
    return dropped;
}

} // namespace SettingsFileGuard
