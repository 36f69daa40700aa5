#pragma once

// Tells why a file cannot be opened as a PDF document, in the few words that a terminal shows
// beside the file's name. Main thread only.

#include <QString>

class FDFileDiagnosis
{
public:
    FDFileDiagnosis() = delete;

    // Empty when the file opens; otherwise "No such file", "Permission denied", "Is a folder",
    // "Not a PDF file" or "Damaged beyond repair" (or the system's words for a rarer failure).
    static QString problemWithFile(const QString &path);
    // Only what the system says before the file's contents are read: "No such file", "Permission
    // denied", "Is a folder" or its words for a rarer failure; empty for a readable file.
    static QString problemBeforeReading(const QString &path);
};
