#include "fs/disk.h"

#include <QFile>

#include <cerrno>
#include <map>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

// A 32-bit system's stat() and open() would fail on large files and large inode numbers.
static_assert(sizeof(off_t) == 8 && sizeof(ino_t) == 8, "needs _FILE_OFFSET_BITS=64");

namespace {

/** Calls syncfs() or fsync() for `path`. */
QString flush(const QString &path, int (*call)(int descriptor))
{
    // A report may be a pipe: without O_NONBLOCK, this would wait for its writer.
    const int descriptor = ::open(QFile::encodeName(path).constData(), O_RDONLY | O_NONBLOCK);
    if (descriptor < 0)
        return qt_error_string(errno);
    // EINVAL: there is no fsync() for such a file, such as a directory of some network file
    // systems.
    const bool failed = call(descriptor) != 0 && errno != EINVAL;
    const QString error = failed ? qt_error_string(errno) : QString();
    ::close(descriptor);
    return error;
}

} // namespace

QString Disk::flushFileSystems(const std::set<QString> &paths)
{
    // First every fsync(): when syncfs() has met a lost write and not reported it, none finds it.
    std::map<dev_t, QString> fileSystems;
    for (const QString &path : paths) {
        struct stat status = {};
        if (::stat(QFile::encodeName(path).constData(), &status) != 0) {
            if (errno == ENOENT)
                continue;
            return qt_error_string(errno);
        }
        fileSystems.emplace(status.st_dev, path);
        const QString error = flush(path, ::fsync);
        if (!error.isNull())
            return error;
    }
    for (const auto &[device, path] : fileSystems) {
        const QString error = flush(path, ::syncfs);
        if (!error.isNull())
            return error;
    }
    return QString();
}

QString Disk::copyFile(const QString &from, const QString &to)
{
    QFile source(from);
    if (!source.copy(to))
        return source.errorString();
    // QFile::copy() hides a failure to set the mode.
    QFile copy(to);
    if (copy.setPermissions(source.permissions()))
        return QString();
    const QString error = copy.errorString();
    copy.remove();
    return error;
}

QString Disk::copyFileOntoDisk(const QString &from, const QString &to)
{
    QString error = copyFile(from, to);
    if (!error.isNull())
        return error;
    // syncfs() alone: a lost journal, which only fsync() reports, also loses what is done next.
    error = flush(to, ::syncfs);
    // Before Linux 5.8 the flush reports no lost write, and QFile::copy() discards its own report.
    if (error.isNull())
        error = compareCopy(from, to);
    if (!error.isNull())
        QFile::remove(to);
    return error;
}

Disk::FileId Disk::fileId(const QString &path)
{
    struct stat status = {};
    ::lstat(QFile::encodeName(path).constData(), &status);
    return {status.st_dev, status.st_ino};
}

QString Disk::compareCopy(const QString &source, const QString &copy)
{
    constexpr qint64 blockSize = 65536;
    QFile sourceFile(source);
    if (!sourceFile.open(QIODevice::ReadOnly | QIODevice::Unbuffered))
        return sourceFile.errorString();
    QFile copyFile(copy);
    if (!copyFile.open(QIODevice::ReadOnly | QIODevice::Unbuffered))
        return copyFile.errorString();
    // Drops what memory holds of the copy, so that it is read from the disk.
    ::posix_fadvise(copyFile.handle(), 0, 0, POSIX_FADV_DONTNEED);
    QByteArray block;
    do {
        block = copyFile.read(blockSize);
        if (copyFile.error() != QFile::NoError)
            return copyFile.errorString();
        if (block != sourceFile.read(blockSize))
            return QStringLiteral("the content read back differs");
    } while (!block.isEmpty());
    return QString();
}
