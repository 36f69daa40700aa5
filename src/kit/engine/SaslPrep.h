#pragma once

// Passwords of AES-256 files are compared as prepared UTF-8: non-ASCII spaces become spaces,
// invisible characters are dropped and compatibility characters are normalised (NFKC), so a
// password typed with a ligature, full-width letters or a no-break space still matches.

#include <QString>

namespace SaslPrep {

QString prepared(const QString &password);

} // namespace SaslPrep
