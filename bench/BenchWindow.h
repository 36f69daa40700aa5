#pragma once

// What the benchmarks that drive a real window share: opening a file in a tab and waiting for it,
// and timing one turn of the event loop.

#include <QString>

#include <functional>

class PDFContents;
class PDFWindowController;

// A tab of window showing the file at path once it is read; null when it cannot be read in a
// minute.
PDFContents *openBenchTab(PDFWindowController *window, const QString &path);

// One step of the event loop with whatever it has to do, in milliseconds.
double timedTurn(const std::function<void()> &step);
