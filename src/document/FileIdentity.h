#pragma once

// What tells one state of a file from another without reading it: the file system's device and
// inode, the size and the modification time. Taken when a document reads its file and after each
// save, so that a save can see that another program changed the file in between. A value; any
// thread.

#include <QString>

#include <optional>

#include <sys/types.h>

struct FileIdentity
{
    dev_t device = 0;
    ino_t inode = 0;
    qint64 size = 0;
    qint64 modificationSeconds = 0;
    qint64 modificationNanoseconds = 0;

    // The identity of the file at path, through symbolic links; nothing when there is no file.
    static std::optional<FileIdentity> of(const QString &path);

    friend bool operator==(const FileIdentity &, const FileIdentity &) = default;
};
