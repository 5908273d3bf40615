#include "fs/disk.h"

#include <QFile>
#include <QFileInfo>

#include <cerrno>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

std::error_code outcomeOf(int result)
{
    if (result == 0)
        return {};
    return {errno, std::generic_category()};
}

/** A QFile whose rename() has no file to fall back on when the system refuses the rename. */
class RenameOnlyFile : public QFile
{
public:
    using QFile::QFile;
    bool open(OpenMode /*mode*/) override { return false; }
};

/** Qt's copy drops a failure to set the mode; for root it sets one that allows more. */
bool hasModeOf(const QFile &copy, const QFile &source)
{
    // Qt's view of what the current user may do, beside the mode's own bits.
    const QFile::Permissions ofThisUser = QFile::ReadUser | QFile::WriteUser | QFile::ExeUser;
    return (source.permissions() & ~copy.permissions() & ~ofThisUser) == 0;
}

} // namespace

Disk::Descriptor::Descriptor(const QString &path)
    : number(::open(QFile::encodeName(path).constData(), O_RDONLY | O_NONBLOCK | O_CLOEXEC)),
      openError(number < 0 ? errno : 0)
{
}

Disk::Descriptor::~Descriptor()
{
    if (number >= 0)
        ::close(number);
}

std::error_code Disk::Descriptor::flush() const
{
    if (openError != 0)
        return {openError, std::generic_category()};
    return outcomeOf(::fsync(number));
}

std::error_code Disk::Descriptor::flushFileSystem() const
{
    if (openError != 0)
        return {openError, std::generic_category()};
    return outcomeOf(::syncfs(number));
}

void Disk::FileSystems::add(const QString &path)
{
    struct stat status = {};
    if (::stat(QFile::encodeName(path).constData(), &status) == 0)
        opened.try_emplace(status.st_dev, path);
}

std::error_code Disk::FileSystems::flush() const
{
    std::error_code firstError;
    for (const auto &[device, descriptor] : opened) {
        const std::error_code error = descriptor.flushFileSystem();
        if (!firstError)
            firstError = error;
    }
    return firstError;
}

std::error_code Disk::flushFile(const QString &path)
{
    if (const std::error_code error = Descriptor(path).flush())
        return error;
    return Descriptor(QFileInfo(path).absolutePath()).flush();
}

QString Disk::copyFile(const QString &from, const QString &to)
{
    QFile source(from);
    if (!source.copy(to))
        return source.errorString();
    QFile copy(to);
    if (hasModeOf(copy, source) || copy.setPermissions(source.permissions()))
        return QString();
    QFile::remove(to);
    return copy.errorString();
}

QString Disk::copyFileOntoDisk(const QString &from, const QString &to, const FileSystems &changed)
{
    const QString copyError = copyFile(from, to);
    if (!copyError.isNull())
        return copyError;
    std::error_code error = Descriptor(to).flush();
    if (!error)
        error = changed.flush();
    if (!error)
        return QString();
    QFile::remove(to);
    return QString::fromStdString(error.message());
}

bool Disk::renameFile(const QString &from, const QString &to)
{
    return RenameOnlyFile(from).rename(to);
}
