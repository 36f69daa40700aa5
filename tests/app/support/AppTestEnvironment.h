#pragma once

// Gives a test process its own configuration, cache and data folders, so that the preference
// store, recent files and thumbnails of the person running the tests are never touched.

#include <QString>

namespace AppTestEnvironment {

// Points the XDG folders at a fresh temporary folder. Call first thing in main, before any
// QApplication or store exists. Returns that folder.
QString isolate();

// Removes every value the store holds, leaving the registered defaults.
void clearStore();

} // namespace AppTestEnvironment
