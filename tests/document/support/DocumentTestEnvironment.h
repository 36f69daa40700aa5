#pragma once

// Points the process's configuration, cache and data folders at a temporary folder, so that the
// preferences, recent files and copies of unsaved documents of the person running the tests are
// never touched. Child processes inherit the folders.

#include <QString>

namespace DocumentTestEnvironment {

// Call first thing in main, before any application object exists. Returns the cache folder.
QString isolate();

} // namespace DocumentTestEnvironment
