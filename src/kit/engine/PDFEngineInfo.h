#pragma once

// What the engine is built on, for an about box: the version of the PDF library inside it, and
// how it is set up, for benchmarks that compare it with the library used directly.

#include <QString>
#include <QtGlobal>

#include <cstddef>

namespace PDFEngineInfo {

// The version of the PDF library the engine was built with, as "1.21.1".
QString libraryVersion();
// The most the library's cache of decoded fonts, images and resources holds, in bytes.
size_t storeBytes();
// The bytes the library holds now, in all threads, for benchmarks that tell where memory goes.
qint64 heldBytes();

} // namespace PDFEngineInfo
