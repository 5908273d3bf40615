// Changes that survive a power cut: flushes of file systems, and copies of files.

#pragma once

#include <QSet>
#include <QString>

namespace Disk {

// Each returns a null string on success, else the reason.

/**
 * Puts everything written to the file systems that hold `paths` on the disk, up to the first
 * failure; passes over a path that is not found. Since Linux 5.8 this also reports a write to
 * such a file system that was lost earlier and that nobody has reported.
 */
QString flushFileSystems(const QSet<QString> &paths);

/** Copies the file `from` to `to`, which must not exist, with its mode; no copy if that fails. */
QString copyFile(const QString &from, const QString &to);

/** As copyFile(), but succeeds only when content, mode and name of the copy are on the disk. */
QString copyFileOntoDisk(const QString &from, const QString &to);

} // namespace Disk
