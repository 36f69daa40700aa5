#pragma once

// Bytes to and from hexadecimal text, and their MD5 digest as text. Pure functions, any thread.

#include <QByteArray>
#include <QString>

// The bytes of a hexadecimal text, high nibble first, digits of either case. Anything that is
// not a hexadecimal digit is passed over, so separators may stand anywhere. A last, unpaired
// digit still makes a byte: it is the high nibble, and the low nibble stays what the pair
// before left there (0 when there was none), so "abc" gives 0xab 0xcb.
QByteArray initWithHexString(const QString &hex);

// Two upper-case hexadecimal digits per byte, in order.
QString hexString(const QByteArray &data);

// The MD5 digest as 32 upper-case hexadecimal digits.
QString md5String(const QByteArray &data);
