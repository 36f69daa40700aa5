#pragma once

// Names of the user-default keys that hold the settings new annotations start from. The first
// values are registered by FDDefaults; the annotation kinds and the pickers read and write them.

#include <QString>

namespace AnnotationDefaultsKeys {

inline const QString HighlightColor = QStringLiteral("Ann_HighlightColor");
inline const QString UnderlineColor = QStringLiteral("Ann_UnderlineColor");
inline const QString StrikeOutColor = QStringLiteral("Ann_StrikeOutColor");
inline const QString FreeTextFontName = QStringLiteral("Ann_FreeTextFontName");
inline const QString FreeTextFontSize = QStringLiteral("Ann_FreeTextFontSize");
inline const QString FreeTextColor = QStringLiteral("Ann_FreeTextColor");
inline const QString FreeTextBackgroundColor = QStringLiteral("Ann_FreeTextBackgroundColor");
inline const QString TextIconType = QStringLiteral("Ann_TextIconType");
inline const QString InkColor = QStringLiteral("Ann_InkColor");
inline const QString InkLineWidth = QStringLiteral("Ann_InkLineWidth");
inline const QString LineColor = QStringLiteral("Ann_LineColor");
inline const QString LineLineWidth = QStringLiteral("Ann_LineLineWidth");
inline const QString LineLineType = QStringLiteral("Ann_LineLineType");
inline const QString LineArrowType = QStringLiteral("Ann_LineArrowType");
inline const QString CircleColor = QStringLiteral("Ann_CircleColor");
inline const QString CircleInteriorColor = QStringLiteral("Ann_CircleInteriorColor");
inline const QString CircleLineWidth = QStringLiteral("Ann_CircleLineWidth");
inline const QString CircleLineType = QStringLiteral("Ann_CircleLineType");
inline const QString SquareColor = QStringLiteral("Ann_SquareColor");
inline const QString SquareInteriorColor = QStringLiteral("Ann_SquareInteriorColor");
inline const QString SquareLineWidth = QStringLiteral("Ann_SquareLineWidth");
inline const QString SquareLineType = QStringLiteral("Ann_SquareLineType");

// Registered by the editing view on its first use; nothing reads them back.
inline const QString FreeTextDefaultContents = QStringLiteral("Ann_FreeTextDefaultContents");
inline const QString TextDefaultContents = QStringLiteral("Ann_TextDefaultContents");

// Declared names only: neither registered nor read.
inline const QString Width = QStringLiteral("Ann_Width");
inline const QString Height = QStringLiteral("Ann_Height");

} // namespace AnnotationDefaultsKeys
