#include "PDFEngineInfo.h"

#include "mupdf/MuContext.h"

#include <mupdf/fitz/version.h>

QString PDFEngineInfo::libraryVersion()
{
    return QStringLiteral(FZ_VERSION);
}

size_t PDFEngineInfo::storeBytes()
{
    return mu::storeBytes();
}
