#include "NSData+XExtensions.h"

#include <QCryptographicHash>

#include <array>

namespace {

constexpr unsigned char kNotHex = 255;

constexpr std::array<unsigned char, 256> nibbleTable()
{
    std::array<unsigned char, 256> table {};
    for (unsigned char &entry : table)
        entry = kNotHex;
    for (int i = 0; i < 10; ++i)
        table[size_t('0' + i)] = static_cast<unsigned char>(i);
    for (int i = 0; i < 6; ++i) {
        table[size_t('a' + i)] = static_cast<unsigned char>(10 + i);
        table[size_t('A' + i)] = static_cast<unsigned char>(10 + i);
    }
    return table;
}

} // namespace

QByteArray initWithHexString(const QString &hex)
{
    static constexpr std::array<unsigned char, 256> table = nibbleTable();
    // Characters outside Latin-1 turn into '?', which is no digit either.
    const QByteArray ascii = hex.toLatin1();
    QByteArray bytes;
    bytes.reserve(ascii.size() / 2 + 1);
    unsigned char pair[2] = { 0, 0 };
    int filled = 0;
    for (const char c : ascii) {
        const unsigned char nibble = table[static_cast<unsigned char>(c)];
        if (nibble == kNotHex)
            continue;
        pair[filled++] = nibble;
        if (filled == 2) {
            bytes.append(char((pair[0] << 4) | pair[1]));
            filled = 0;
        }
    }
    if (filled == 1)
        bytes.append(char((pair[0] << 4) | pair[1]));
    return bytes;
}

QString hexString(const QByteArray &data)
{
    return QString::fromLatin1(data.toHex().toUpper());
}

QString md5String(const QByteArray &data)
{
    QCryptographicHash hash(QCryptographicHash::Md5);
    constexpr qsizetype kBlock = 4096;
    for (qsizetype offset = 0; offset < data.size(); offset += kBlock)
        hash.addData(QByteArrayView(data).sliced(offset, std::min(kBlock, data.size() - offset)));
    return hexString(hash.result());
}
