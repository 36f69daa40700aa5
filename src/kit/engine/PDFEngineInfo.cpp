#include "PDFEngineInfo.h"

#include <mupdf/fitz/version.h>

QString PDFEngineInfo::libraryVersion()
{
    return QStringLiteral(FZ_VERSION);
}
