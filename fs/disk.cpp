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

const QLatin1String notWritten("could not be written to the disk: ");
const QLatin1String notVerified("could not be verified: ");

/** Calls syncfs() or fsync() for `path`. */
QString flush(const QString &path, int (*call)(int descriptor))
{
    // A report may be a pipe: without O_NONBLOCK, this would wait for its writer.
    const int descriptor = ::open(QFile::encodeName(path).constData(), O_RDONLY | O_NONBLOCK);
    if (descriptor < 0)
        return notWritten + qt_error_string(errno);
    // EINVAL: there is no fsync() for this, such as a directory of some network file systems.
    const bool failed = call(descriptor) != 0 && errno != EINVAL;
    const QString problem = failed ? notWritten + qt_error_string(errno) : QString();
    ::close(descriptor);
    return problem;
}

} // namespace

QString Disk::flushFileSystems(const std::set<QString> &paths)
{
    // fsync() comes first: a lost write that syncfs() meets and does not report, as before Linux
    // 5.8, is not reported by a later fsync() either.
    std::map<dev_t, QString> fileSystems;
    for (const QString &path : paths) {
        struct stat status = {};
        if (::stat(QFile::encodeName(path).constData(), &status) != 0) {
            if (errno == ENOENT || errno == ENOTDIR)
                continue;
            return notWritten + qt_error_string(errno);
        }
        fileSystems.emplace(status.st_dev, path);
        if (const QString problem = flush(path, ::fsync); !problem.isNull())
            return problem;
    }
    for (const auto &[device, path] : fileSystems)
        if (const QString problem = flush(path, ::syncfs); !problem.isNull())
            return problem;
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
    QString problem = copyFile(from, to);
    if (!problem.isNull())
        return problem;
    // fsync() would also report a journal that cannot be written. Then the removal and the renaming
    // that follow are lost too, and the flush of their directory reports it.
    problem = flush(to, ::syncfs);
    // Before Linux 5.8 only this finds a lost write: QFile::copy() hides its own flush's error.
    if (problem.isNull())
        problem = compareCopy(from, to);
    if (!problem.isNull())
        QFile::remove(to);
    return problem;
}

Disk::FileId Disk::fileId(const QString &path)
{
    struct stat status = {};
    ::lstat(QFile::encodeName(path).constData(), &status);
    return {status.st_dev, status.st_ino};
}

QString Disk::compareCopy(const QString &source, const QString &copy)
{
    constexpr qint64 blockSize = 4096; // QFile hides an error after the first page of a block
    QFile original(source);
    QFile written(copy);
    const auto readProblem = [](const QFile &file) {
        return notVerified + file.fileName() + QStringLiteral(": ") + file.errorString();
    };
    for (QFile *file : {&original, &written})
        if (!file->open(QIODevice::ReadOnly | QIODevice::Unbuffered))
            return readProblem(*file);
    // Drops what memory holds of the copy, so that it is read from the disk.
    ::posix_fadvise(written.handle(), 0, 0, POSIX_FADV_DONTNEED);
    QByteArray block;
    do {
        block = original.read(blockSize);
        const bool same = written.read(blockSize) == block;
        for (const QFile *file : {&original, &written})
            if (file->error() != QFile::NoError)
                return readProblem(*file);
        if (!same)
            return notVerified + copy + QStringLiteral(" differs from ") + source;
    } while (!block.isEmpty());
    return QString();
}
