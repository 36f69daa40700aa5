#pragma once

// Real PDF files for the shell's tests, written with the engine.

#include <QColor>
#include <QSize>
#include <QString>

namespace AppFixtures {

// A one-page PDF whose page is an image of one colour, of size points; true when written.
bool writeColourPDF(const QString &path, const QColor &colour, const QSize &size = { 200, 300 });

} // namespace AppFixtures
