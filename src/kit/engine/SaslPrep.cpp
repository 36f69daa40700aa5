#include "SaslPrep.h"

namespace SaslPrep {
namespace {

// Characters commonly mapped to nothing: soft hyphen, joiners, variation selectors, BOM.
bool mapsToNothing(char16_t c)
{
    return c == 0x00AD || c == 0x034F || c == 0x1806 || (c >= 0x180B && c <= 0x180D)
        || (c >= 0x200B && c <= 0x200D) || c == 0x2060 || (c >= 0xFE00 && c <= 0xFE0F)
        || c == 0xFEFF;
}

bool isNonAsciiSpace(char16_t c)
{
    return c == 0x00A0 || c == 0x1680 || (c >= 0x2000 && c <= 0x200A) || c == 0x202F || c == 0x205F
        || c == 0x3000;
}

} // namespace

QString prepared(const QString &password)
{
    QString mapped;
    mapped.reserve(password.size());
    for (const QChar c : password) {
        if (mapsToNothing(c.unicode()))
            continue;
        mapped.append(isNonAsciiSpace(c.unicode()) ? QChar(u' ') : c);
    }
    return mapped.normalized(QString::NormalizationForm_KC);
}

} // namespace SaslPrep
