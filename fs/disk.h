// Changes that survive a power cut: flushing to the disk, and a rename that is only a rename.

#pragma once

#include <QString>
#include <QStringList>

#include <system_error>

namespace Disk {

/**
 * Puts the file at `path` on the disk: its content, its mode and its name in its directory.
 * Returns the error of the first step that failed, none on success.
 */
std::error_code flushFile(const QString &path);

/**
 * Puts on the disk everything written so far to the file systems that hold `paths`, each flushed
 * once. A path that does not exist is passed over. Returns the first error, none on success; the
 * other file systems are flushed all the same.
 */
std::error_code flushFileSystems(const QStringList &paths);

/**
 * Renames the file `from` to `to`, which must not exist. False leaves `from` whole and `to`
 * absent: unlike a bare QFile::rename(), which answers a failed rename by writing a copy in place
 * and deleting the original before the copy is on the disk.
 */
bool renameFile(const QString &from, const QString &to);

} // namespace Disk
