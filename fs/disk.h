// Changes that survive a power cut: flushes of file systems, and copies of files.

#pragma once

#include <QMap>
#include <QSet>
#include <QString>

namespace Disk {

// Each returns a null string on success, else the reason.

/**
 * Puts everything written to the file systems that hold `paths` on the disk, up to the first
 * failure; passes over a path that does not exist. Also reports a write that was lost earlier and
 * that nobody has reported: since Linux 5.8 any write to such a file system, since 4.17 a write to
 * one of `paths` that is a file.
 */
QString flushFileSystems(const QSet<QString> &paths);

/** Copies the file `from` to `to`, which must not exist, with its mode; no copy if that fails. */
QString copyFile(const QString &from, const QString &to);

/**
 * As copyFile(), but succeeds only when content, mode and name of the copy are on the disk; the
 * content is read back.
 */
QString copyFileOntoDisk(const QString &from, const QString &to);

/**
 * Reads flushed copies back from the disk and compares them with their sources. `sources`: the
 * path of each copy, and of what it is a copy of. The reason begins with the copy's path.
 */
QString compareCopies(const QMap<QString, QString> &sources);

} // namespace Disk
