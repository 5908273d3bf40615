// File installation: a list of files copied from one directory tree into another.

#include "core/outcome.h"
#include "core/updatermanager.h"
#include "fs/disk.h"

#include <QFile>
#include <QFileInfo>

#include <algorithm>

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

bool makeReplacementCopy(const UpdaterManager &log, const QString &source, const QString &copy)
{
    QFile::remove(copy);
    log.info() << "Copying into" << copy;
    const QString error = Disk::copyFileOntoDisk(source, copy);
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

bool installFile(const UpdaterManager &log, const QString &source, const QString &destination,
                 Disk::FileSystems &changed)
{
    const QDir directory = QFileInfo(destination).absoluteDir();
    directory.mkpath(QStringLiteral("."));
    changed.add(directory.path());
    log.info() << "Copying" << source << "into" << destination;
    if (QFile::exists(destination))
        return replaceFile(log, source, destination);
    return logOutcome(log, "Copy", Disk::copyFile(source, destination).isNull());
}

} // namespace

bool UpdaterManager::copyAndReplaceFiles(const QDir &from, const FileList &files, const QDir &to)
{
    if (!makePath(*this, to))
        return false;

    // Below the destination, links and mounts may lead to other file systems than its own.
    Disk::FileSystems changed;
    changed.add(to.absolutePath());
    const bool installed = std::all_of(files.cbegin(), files.cend(), [&](const QString &file) {
        return installFile(*this, from.absoluteFilePath(file), to.absoluteFilePath(file), changed);
    });

    const std::error_code error = changed.flush();
    if (error)
        info() << "The files could not be written to the disk:"
               << QString::fromStdString(error.message());
    return installed && !error;
}
