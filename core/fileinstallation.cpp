// File installation: a list of files copied from one directory tree into another.

#include "core/updatermanager.h"

#include <QFile>
#include <QFileInfo>

#include <cstdio>

namespace {

const QLatin1String replacementSuffix(".new");

} // namespace

bool UpdaterManager::copyAndReplaceFiles(const QDir &from, const FileList &files, const QDir &to)
{
    info() << "Making path: " << to.canonicalPath();
    if (!logOutcome("Making path", to.mkpath(QStringLiteral("."))))
        return false;

    // Links and mounts below the destination may lead to other file systems than its own.
    std::set<QString> changed;
    NewFiles newFiles;
    for (const QString &file : files) {
        changed.insert(QFileInfo(resolvePath(to, file)).absolutePath());
        if (!installFile(from, file, to, newFiles))
            return false;
    }
    return logOnDisk("The files", Disk::flushFileSystems(changed)) &&
           compareNewFiles(from, to, newFiles);
}

bool UpdaterManager::installFile(const QDir &from, const QString &file, const QDir &to,
                                 NewFiles &newFiles) const
{
    const QString source = resolvePath(from, file);
    const QString destination = resolvePath(to, file);
    QFileInfo(destination).dir().mkpath(QStringLiteral("."));
    info() << "Copying" << source << "into" << destination;
    if (!QFile::exists(destination)) {
        const QString error = Disk::copyFile(source, destination);
        newFiles[Disk::fileId(destination)] = file;
        return logOutcome("Copy", error.isNull());
    }
    // What is replaced or removed here may be new in the same list, which can reach one directory
    // under two names.
    newFiles.erase(Disk::fileId(destination));
    newFiles.erase(Disk::fileId(destination + replacementSuffix));
    return replaceFile(source, destination);
}

bool UpdaterManager::compareNewFiles(const QDir &from, const QDir &to,
                                     const NewFiles &newFiles) const
{
    for (const auto &[id, file] : newFiles) {
        const QString copy = resolvePath(to, file);
        const QString error = Disk::compareCopy(resolvePath(from, file), copy);
        if (!error.isNull())
            return logOnDisk("The files", copy + QStringLiteral(": ") + error);
    }
    return true;
}

bool UpdaterManager::replaceFile(const QString &source, const QString &destination) const
{
    const QString replacementCopy = destination + replacementSuffix;
    info() << "Destination file already exists";
    QFile::remove(replacementCopy);
    info() << "Copying into" << replacementCopy;
    const QString error = Disk::copyFileOntoDisk(source, replacementCopy);
    if (!logOutcome("Copy", error.isNull())) {
        // Continues the line of the outcome.
        logStream << QStringLiteral("with error: '%1'").arg(error);
        return false;
    }
    info() << "Removing old file" << destination;
    if (!logOutcome("Removal", QFile::remove(destination)))
        return false;
    info() << "Renaming new file into" << destination;
    // Where the system refuses to rename, QFile::rename() would copy in place, unchecked.
    const bool renamed = std::rename(QFile::encodeName(replacementCopy).constData(),
                                     QFile::encodeName(destination).constData()) == 0;
    return logOutcome("Rename", renamed);
}
