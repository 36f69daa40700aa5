#pragma once

// What the engine is built on, for an about box: the version of the PDF library inside it.

#include <QString>

namespace PDFEngineInfo {

// The version of the PDF library the engine was built with, as "1.21.1".
QString libraryVersion();

} // namespace PDFEngineInfo
