// File installation: a list of files copied from one directory tree into another.

#include "core/outcome.h"
#include "core/updatermanager.h"
#include "fs/disk.h"

#include <QFile>
#include <QFileInfo>

namespace {

bool logOutcome(const UpdaterManager &log, const char *step, bool succeeded)
{
    log.info() << step << outcomeWord(succeeded);
    return succeeded;
}

bool makePath(const UpdaterManager &log, const QDir &directory)
{
    log.info() << "Making path: " << directory.canonicalPath();
    return logOutcome(log, "Making path", directory.mkpath(QStringLiteral(".")));
}

/** Null when the copy is whole and on the disk; else the reason, with no copy left behind. */
QString copyOntoDisk(const QString &source, const QString &copy)
{
    QFile sourceFile(source);
    if (!sourceFile.copy(copy))
        return sourceFile.errorString();
    const std::error_code error = Disk::flushFile(copy);
    if (!error)
        return QString();
    QFile::remove(copy);
    return QString::fromStdString(error.message());
}

bool makeReplacementCopy(const UpdaterManager &log, const QString &source, const QString &copy)
{
    QFile::remove(copy);
    log.info() << "Copying into" << copy;
    const QString error = copyOntoDisk(source, copy);
    if (error.isNull())
        return logOutcome(log, "Copy", true);
    log.info() << "Copy" << QStringLiteral("%1 with error: '%2'").arg(outcomeWord(false), error);
    return false;
}

bool replaceFile(const UpdaterManager &log, const QString &source, const QString &destination)
{
    const QString replacementCopy = destination + QStringLiteral(".new");
    log.info() << "Destination file already exists";
    if (!makeReplacementCopy(log, source, replacementCopy))
        return false;
    log.info() << "Removing old file" << destination;
    if (!logOutcome(log, "Removal", QFile::remove(destination)))
        return false;
    log.info() << "Renaming new file into" << destination;
    return logOutcome(log, "Rename", Disk::renameFile(replacementCopy, destination));
}

bool installFile(const UpdaterManager &log, const QString &source, const QString &destination)
{
    QFileInfo(destination).absoluteDir().mkpath(QStringLiteral("."));
    log.info() << "Copying" << source << "into" << destination;
    if (QFile::exists(destination))
        return replaceFile(log, source, destination);
    return logOutcome(log, "Copy", QFile::copy(source, destination));
}

} // namespace

bool UpdaterManager::copyAndReplaceFiles(const QDir &from, const FileList &files, const QDir &to)
{
    if (!makePath(*this, to))
        return false;

    // Below the destination, links and mounts may lead to other file systems than its own.
    QStringList changedDirectories = {to.absolutePath()};
    bool installed = true;
    for (const QString &file : files) {
        const QString destination = to.absoluteFilePath(file);
        installed = installFile(*this, from.absoluteFilePath(file), destination);
        const QString directory = QFileInfo(destination).absolutePath();
        if (directory != changedDirectories.constLast())
            changedDirectories << directory;
        if (!installed)
            break;
    }

    const std::error_code error = Disk::flushFileSystems(changedDirectories);
    if (error)
        info() << "The files could not be written to the disk:"
               << QString::fromStdString(error.message());
    return installed && !error;
}
