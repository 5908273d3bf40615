// Changes that survive a power cut: flushes to the disk, a copy that is on it, a rename that is
// nothing else.

#pragma once

#include <QString>

#include <map>
#include <system_error>

#include <sys/types.h>

namespace Disk {

/** A file or directory held open for reading, so that it can be flushed. */
class Descriptor
{
public:
    /** Opens `path`; a failure shows at the flush. */
    explicit Descriptor(const QString &path);
    ~Descriptor();
    Descriptor(const Descriptor &) = delete;
    Descriptor &operator=(const Descriptor &) = delete;
    Descriptor(Descriptor &&) = delete;
    Descriptor &operator=(Descriptor &&) = delete;

    /** Puts the file's content and mode, or the directory's names, on the disk. */
    std::error_code flush() const;

    /**
     * Puts everything written to its file system on the disk. Fails also when something written
     * there since the last such flush is lost already, or since before that with nobody told: the
     * kernel tells an error once for each file, and Qt's copy drops it.
     */
    std::error_code flushFileSystem() const;

private:
    const int number;
    const int openError;
};

/** File systems about to be changed, each to be flushed once afterwards. */
class FileSystems
{
public:
    /** Adds the one that holds `path`, before the change; a path that does not exist adds none. */
    void add(const QString &path);

    /** Flushes them all, whatever comes of the others. Returns the first error, if any. */
    std::error_code flush() const;

private:
    std::map<dev_t, Descriptor> opened;
};

/** Puts the file at `path` on the disk: its content, its mode and its name. */
std::error_code flushFile(const QString &path);

/**
 * Copies the file `from` to `to`, which must not exist, with its mode. Returns a null string on
 * success; else the reason, and leaves no copy behind.
 */
QString copyFile(const QString &from, const QString &to);

/**
 * As copyFile(), but succeeds only when the copy is on the disk: its content, mode and name.
 * `changed` holds the file system of `to`.
 */
QString copyFileOntoDisk(const QString &from, const QString &to, const FileSystems &changed);

/**
 * Renames the file `from` to `to`, which must not exist. False leaves `from` whole and `to`
 * absent: unlike a bare QFile::rename(), which answers a failed rename by writing a copy in place
 * and deleting the original before the copy is on the disk.
 */
bool renameFile(const QString &from, const QString &to);

} // namespace Disk
