#include "fs/disk.h"

#include <QFile>
#include <QFileInfo>

#include <cerrno>
#include <set>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

/** A file or directory opened for reading, so that it can be flushed; closed when it goes. */
class Descriptor
{
public:
    explicit Descriptor(const QString &path)
        : number(::open(QFile::encodeName(path).constData(), O_RDONLY | O_CLOEXEC))
    {
    }
    ~Descriptor()
    {
        if (number >= 0)
            ::close(number);
    }
    Descriptor(const Descriptor &) = delete;
    Descriptor &operator=(const Descriptor &) = delete;
    Descriptor(Descriptor &&) = delete;
    Descriptor &operator=(Descriptor &&) = delete;

    std::error_code flushWith(int (*flush)(int)) const
    {
        if (number >= 0 && flush(number) == 0)
            return {};
        // Some file systems cannot flush a directory: then there is nothing of it to flush.
        if (number >= 0 && errno == EINVAL)
            return {};
        return {errno, std::generic_category()};
    }

private:
    const int number;
};

/** A QFile whose rename() has no file to fall back on when the system refuses the rename. */
class RenameOnlyFile : public QFile
{
public:
    using QFile::QFile;
    bool open(OpenMode /*mode*/) override { return false; }
};

} // namespace

std::error_code Disk::flushFile(const QString &path)
{
    if (const std::error_code error = Descriptor(path).flushWith(::fsync))
        return error;
    return Descriptor(QFileInfo(path).absolutePath()).flushWith(::fsync);
}

std::error_code Disk::flushFileSystems(const QStringList &paths)
{
    std::error_code firstError;
    std::set<dev_t> flushed;
    for (const QString &path : paths) {
        struct stat status = {};
        if (::stat(QFile::encodeName(path).constData(), &status) != 0)
            continue;
        if (!flushed.insert(status.st_dev).second)
            continue;
        const std::error_code error = Descriptor(path).flushWith(::syncfs);
        if (!firstError)
            firstError = error;
    }
    return firstError;
}

bool Disk::renameFile(const QString &from, const QString &to)
{
    return RenameOnlyFile(from).rename(to);
}
