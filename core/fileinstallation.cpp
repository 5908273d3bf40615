// File installation: a list of files copied from one directory tree into another.

#include "core/outcome.h"
#include "core/updatermanager.h"
#include "fs/disk.h"

#include <QFile>
#include <QFileInfo>

namespace {

bool logOutcome(const UpdaterManager &manager, const char *step, bool succeeded)
{
    manager.info() << step << outcomeWord(succeeded);
    return succeeded;
}

bool makePath(const UpdaterManager &manager, const QDir &directory)
{
    manager.info() << "Making path: " << directory.canonicalPath();
    return logOutcome(manager, "Making path", directory.mkpath(QStringLiteral(".")));
}

bool makeReplacementCopy(const UpdaterManager &manager, const QString &source, const QString &copy,
                         const Disk::FileSystems &changed)
{
    QFile::remove(copy);
    manager.info() << "Copying into" << copy;
    const QString error = Disk::copyFileOntoDisk(source, copy, changed);
    if (error.isNull())
        return logOutcome(manager, "Copy", true);
    manager.info() << "Copy"
                   << QStringLiteral("%1 with error: '%2'").arg(outcomeWord(false), error);
    return false;
}

bool replaceFile(const UpdaterManager &manager, const QString &source, const QString &destination,
                 const Disk::FileSystems &changed)
{
    const QString replacementCopy = destination + QStringLiteral(".new");
    manager.info() << "Destination file already exists";
    if (!makeReplacementCopy(manager, source, replacementCopy, changed))
        return false;
    manager.info() << "Removing old file" << destination;
    if (!logOutcome(manager, "Removal", QFile::remove(destination)))
        return false;
    manager.info() << "Renaming new file into" << destination;
    return logOutcome(manager, "Rename", Disk::renameFile(replacementCopy, destination));
}

bool installFile(const UpdaterManager &manager, const QString &source, const QString &destination,
                 Disk::FileSystems &changed)
{
    const QDir directory = QFileInfo(destination).absoluteDir();
    directory.mkpath(QStringLiteral("."));
    changed.add(directory.path());
    manager.info() << "Copying" << source << "into" << destination;
    if (QFile::exists(destination))
        return replaceFile(manager, source, destination, changed);
    return logOutcome(manager, "Copy", Disk::copyFile(source, destination).isNull());
}

} // namespace

bool UpdaterManager::copyAndReplaceFiles(const QDir &from, const FileList &files, const QDir &to)
{
    if (!makePath(*this, to))
        return false;

    // Below the destination, links and mounts may lead to other file systems than its own.
    Disk::FileSystems changed;
    changed.add(to.absolutePath());
    bool installed = true;
    for (const QString &file : files) {
        installed =
            installFile(*this, from.absoluteFilePath(file), to.absoluteFilePath(file), changed);
        if (!installed)
            break;
    }
    const bool flushed = flushToDisk(*this, "The files", changed);
    return installed && flushed;
}
