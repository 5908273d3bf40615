// Changes that survive a power cut: flushes of file systems, and copies of files.
//
// What is flushed when: the copy that replaces a file before the old file is removed; all else that
// a job changes (new files, directories, archives, removals) once, at the end of each group or
// step; the report last. Success is claimed only after the flush of what has succeeded.

#pragma once

#include <QString>

#include <set>
#include <utility>

#include <sys/types.h>

namespace Disk {

/** The numbers of a file's device and inode: the same under all its names. */
using FileId = std::pair<dev_t, ino_t>;

/** The id of `path`, not of what a link there leads to; zeros if nothing is there. */
FileId fileId(const QString &path);

// The following return a null string on success, else the problem in words for the log, such as
// "could not be verified: PATH: Input/output error".

/**
 * Puts everything written to the file systems that hold `paths` on the disk, up to the first
 * failure; passes over a path where nothing is. Also reports a write that was lost earlier and
 * that nobody has reported: since Linux 5.8 any write to such a file system, since 4.17 one to the
 * files and directories `paths` themselves.
 */
QString flushFileSystems(const std::set<QString> &paths);

/** Copies the file `from` to `to`, which must not exist, with its mode; no copy if that fails. */
QString copyFile(const QString &from, const QString &to);

/** As copyFile(), but the copy is also flushed, and its content compared with that of `from`. */
QString copyFileOntoDisk(const QString &from, const QString &to);

/** Compares `source` with `copy`, which was flushed and is read from the disk. */
QString compareCopy(const QString &source, const QString &copy);

} // namespace Disk
