// File installation: a list of files copied from one directory tree into another.

#include "core/updatermanager.h"
#include "fs/disk.h"

#include <QFile>
#include <QFileInfo>

#include <cstdio>
#include <map>

namespace {

struct Copy
{
    QString source;
    QString destination;
};

/**
 * New files, which replaced none, to be compared with their sources after the flush. By inode: if
 * e links to c in the destination, a list's "e/d" replaces its own new "c/d", compared no more.
 */
using NewFiles = std::map<Disk::FileId, Copy>;

const QLatin1String replacementSuffix(".new");

bool replaceFile(const UpdaterManager &manager, const Copy &copy)
{
    const QString replacementCopy = copy.destination + replacementSuffix;
    manager.info() << "Destination file already exists";
    QFile::remove(replacementCopy);
    manager.info() << "Copying into" << replacementCopy;
    const QString error = Disk::copyFileOntoDisk(copy.source, replacementCopy);
    if (!manager.logOutcome("Copy", error.isNull(), QStringLiteral(" with error: '%1'").arg(error)))
        return false;
    // rename() alone would replace the old file too, but the report names both steps, and a
    // removal that is refused must be seen.
    manager.info() << "Removing old file" << copy.destination;
    if (!manager.logOutcome("Removal", QFile::remove(copy.destination)))
        return false;
    manager.info() << "Renaming new file into" << copy.destination;
    // Where the system refuses to rename, QFile::rename() would copy in place, unchecked.
    const bool renamed = std::rename(QFile::encodeName(replacementCopy).constData(),
                                     QFile::encodeName(copy.destination).constData()) == 0;
    return manager.logOutcome("Rename", renamed);
}

bool installFile(const UpdaterManager &manager, const Copy &copy, NewFiles &newFiles)
{
    QFileInfo(copy.destination).dir().mkpath(QStringLiteral("."));
    manager.info() << "Copying" << copy.source << "into" << copy.destination;
    if (QFile::exists(copy.destination)) {
        newFiles.erase(Disk::fileId(copy.destination));
        newFiles.erase(Disk::fileId(copy.destination + replacementSuffix));
        return replaceFile(manager, copy);
    }
    if (!manager.logOutcome("Copy", Disk::copyFile(copy.source, copy.destination).isNull()))
        return false;
    newFiles[Disk::fileId(copy.destination)] = copy;
    return true;
}

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
        const Copy copy = {resolvePath(from, file), resolvePath(to, file)};
        changed.insert(QFileInfo(copy.destination).absolutePath());
        if (!installFile(*this, copy, newFiles))
            return false;
    }
    QString problem = Disk::flushFileSystems(changed);
    for (const auto &[id, copy] : newFiles)
        if (problem.isNull())
            problem = Disk::compareCopy(copy.source, copy.destination);
    return checkNoProblem("The files", problem);
}
