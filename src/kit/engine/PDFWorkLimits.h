#pragma once

// Bounds on one piece of page work (recording, rendering, text extraction, a page of a find), so
// that a hostile page fails alone, as a blank page, instead of taking the program's memory or
// time. Process-wide; thread-safe.

#include <QtGlobal>

struct PDFWorkLimits
{
    qint64 memoryBytes = qint64(1) << 30; // MuPDF memory one piece of work may add
    qint64 contentBytes = qint64(256) << 20; // a page's decoded content streams
    int milliseconds = 20000; // after that the work is aborted like a cancelled one

    static PDFWorkLimits current();
    static void setCurrent(const PDFWorkLimits &limits);
};
