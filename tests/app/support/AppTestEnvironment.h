#pragma once

// Gives a test process its own configuration, cache, data and runtime folders, so that the
// preference store, recent files, thumbnails and running Folidoc of the person running the tests
// are never touched.

#include <QString>

namespace AppTestEnvironment {

// Points the XDG folders (and XDG_RUNTIME_DIR, mode 0700) at a fresh temporary folder. Call first thing in main, before any
// QApplication or store exists. Returns that folder.
QString isolate();

// Removes every value the store holds, leaving the registered defaults.
void clearStore();

} // namespace AppTestEnvironment
