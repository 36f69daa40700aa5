#pragma once

// Replaces a file's bytes so that at every moment the file holds either its old or its new
// contents, keeping its permissions, owner and "user." extended attributes. Stateless; any thread.

#include <QByteArray>
#include <QString>

class AtomicFileWriter
{
public:
    AtomicFileWriter() = delete;

    // Writes data to path (a symbolic link is written through to its target and stays a link):
    // a temporary file in the target's folder, synced, given the original's metadata, renamed
    // over the target, then the folder synced. Answers an empty string on success, otherwise a
    // readable reason; on failure the original is untouched and no temporary file is left.
    static QString write(const QString &path, const QByteArray &data);

    // A writer killed between creating its temporary file and renaming it leaves the file
    // behind. Removes those beside path's target that are ours: named as write() names them,
    // owned by this user, empty or the start of a PDF, and untouched for LeftoverAge seconds, so
    // that a save still under way in another process is left alone. Answers how many went.
    static int removeLeftovers(const QString &path);
    static constexpr qint64 LeftoverAge = 60 * 60;
};
