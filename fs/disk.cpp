#include "fs/disk.h"

#include <QFile>

#include <cerrno>
#include <set>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

// A 32-bit system's stat() and open() would fail on large files and large inode numbers.
static_assert(sizeof(off_t) == 8 && sizeof(ino_t) == 8, "needs _FILE_OFFSET_BITS=64");

namespace {

QString flushFileSystem(const QString &path)
{
    const int descriptor = ::open(QFile::encodeName(path).constData(), O_RDONLY);
    if (descriptor < 0)
        return qt_error_string(errno);
    const QString error = ::syncfs(descriptor) == 0 ? QString() : qt_error_string(errno);
    ::close(descriptor);
    return error;
}

} // namespace

QString Disk::flushFileSystems(const QSet<QString> &paths)
{
    std::set<dev_t> flushed;
    for (const QString &path : paths) {
        struct stat status = {};
        if (::stat(QFile::encodeName(path).constData(), &status) != 0)
            continue;
        if (!flushed.insert(status.st_dev).second)
            continue;
        const QString error = flushFileSystem(path);
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
    // QFile::copy() hides a lost write, too; since Linux 5.8 this flush reports it.
    error = flushFileSystem(to);
    if (!error.isNull())
        QFile::remove(to);
    return error;
}
