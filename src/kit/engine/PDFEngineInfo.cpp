#include "PDFEngineInfo.h"

#include "mupdf/MuContext.h"
#include "mupdf/WorkBudget.h"

#include <mupdf/fitz/version.h>

QString PDFEngineInfo::libraryVersion()
{
    return QStringLiteral(FZ_VERSION);
}

size_t PDFEngineInfo::storeBytes()
{
    return mu::storeBytes();
}

qint64 PDFEngineInfo::heldBytes()
{
    return mu::liveBytes();
}
