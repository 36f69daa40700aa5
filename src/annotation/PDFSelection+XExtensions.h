#pragma once

// Selection queries that stay safe on selections whose pages hold no characters. Main thread only.

#include <QString>

#include <limits>
#include <memory>

class PDFPage;
class PDFSelection;

// The index of no character.
inline constexpr qint64 SelectionNotFound = std::numeric_limits<qint64>::max();

QString firstPageLabel(const PDFSelection &selection);
QString cleanedString(const PDFSelection &selection);
qint64 safeIndexOfFirstCharacterOnPage(
    const PDFSelection &selection, const std::shared_ptr<PDFPage> &page);
// One past the end of the last range on the page.
qint64 safeIndexOfLastCharacterOnPage(
    const PDFSelection &selection, const std::shared_ptr<PDFPage> &page);
// The page when the selection has at least one character on it, else null.
std::shared_ptr<PDFPage> safePage(
    const PDFSelection &selection, const std::shared_ptr<PDFPage> &page);
// safePage of the first (last) of the selection's pages: only that page is looked at.
std::shared_ptr<PDFPage> safeFirstPage(const PDFSelection &selection);
std::shared_ptr<PDFPage> safeLastPage(const PDFSelection &selection);
bool hasCharacters(const PDFSelection &selection);
