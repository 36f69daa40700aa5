#pragma once

// Real PDF files for the shell's tests, and what a file's pages hold as read back by the engine.

#include <support/PdfFixtures.h>

#include <QColor>
#include <QSize>
#include <QStringList>

namespace AppFixtures {

// A one-page PDF whose page is an image of one colour, of size points; true when written.
bool writeColourPDF(const QString &path, const QColor &colour, const QSize &size = { 200, 300 });
// The same, white, answering path: a file that could not be written fails the opening that follows.
QString whitePDF(const QString &path);

// count pages of text, each with a square whose contents are tag and the page's number ("a3"),
// so that a file read back tells where every page of which document went, with its annotation.
PdfFixtures::Document taggedPages(const QByteArray &tag, int count);

// Each page of a file: its annotations' contents joined by commas, else the first two words of its
// text, else "image W:H" by the shape of the page; "/R" follows a page turned by R degrees. The
// engine's error alone when the file cannot be read.
QStringList pageTags(const QString &path);

} // namespace AppFixtures
