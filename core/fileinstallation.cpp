// File installation: a list of files copied from one directory tree into another.

#include "core/updatermanager.h"
#include "fs/disk.h"

#include <QFile>
#include <QFileInfo>

namespace {

/**
 * A file whose rename() only renames. Where the system refuses that, QFile writes a copy in place,
 * without the mode and with the last write unchecked, and removes the original.
 */
class ReplacementCopy : public QFile
{
public:
    using QFile::QFile;
    bool open(OpenMode /*mode*/) override { return false; }
};

} // namespace

bool UpdaterManager::copyAndReplaceFiles(const QDir &from, const FileList &files, const QDir &to)
{
    info() << "Making path: " << to.canonicalPath();
    if (!logOutcome("Making path", to.mkpath(QStringLiteral("."))))
        return false;

    // Links and mounts below the destination may lead to other file systems than its own.
    QSet<QString> changed;
    for (const QString &file : files) {
        const QString destination = resolvePath(to, file);
        changed.insert(QFileInfo(destination).absolutePath());
        if (!installFile(resolvePath(from, file), destination))
            return false;
    }
    return flushToDisk("The files", changed);
}

bool UpdaterManager::installFile(const QString &source, const QString &destination) const
{
    QFileInfo(destination).absoluteDir().mkpath(QStringLiteral("."));
    info() << "Copying" << source << "into" << destination;
    if (QFile::exists(destination))
        return replaceFile(source, destination);
    return logOutcome("Copy", Disk::copyFile(source, destination).isNull());
}

bool UpdaterManager::replaceFile(const QString &source, const QString &destination) const
{
    const QString replacementCopy = destination + QStringLiteral(".new");
    info() << "Destination file already exists";
    QFile::remove(replacementCopy);
    info() << "Copying into" << replacementCopy;
    const QString error = Disk::copyFileOntoDisk(source, replacementCopy);
    if (!logOutcome("Copy", error.isNull())) {
        logStream << QStringLiteral("with error: '%1'").arg(error);
        return false;
    }
    info() << "Removing old file" << destination;
    if (!logOutcome("Removal", QFile::remove(destination)))
        return false;
    info() << "Renaming new file into" << destination;
    return logOutcome("Rename", ReplacementCopy(replacementCopy).rename(destination));
}
