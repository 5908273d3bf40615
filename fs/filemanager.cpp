#include "fs/filemanager.h"

#include <QCoreApplication>
#include <QDomDocument>
#include <QFile>
#include <QStandardPaths>

#include <functional>

namespace {

QString commonDataPath()
{
    return QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation) +
           QDir::separator() + QStringLiteral(".ostrelsmart");
}

} // namespace

QString resolvePath(const QDir &directory, const QString &path)
{
    if (!path.startsWith(QLatin1Char(':')))
        return directory.absoluteFilePath(path);
    return directory.absolutePath() + QLatin1Char('/') + path;
}

FileManager::FileManager(const QString &name, Root root) : directory(QString())
{
    if (root == DataRoot)
        directory.setPath(commonDataPath() + QDir::separator() + name);
    else if (root == ApplicationRoot)
        directory.setPath(QCoreApplication::applicationDirPath() + QDir::separator() + name);
}

QDir FileManager::getDirectory() const { return directory; }

QDir FileManager::getParentDirectory() { return QDir(commonDataPath()); }

void FileManager::createDirectory() const
{
    if (!directory.exists())
        directory.mkpath(QStringLiteral("."));
}

bool FileManager::exists(const QString &name) const { return directory.exists(name); }

FileList FileManager::findFiles(const QDir &start, const QStringList &patterns)
{
    // Only the directories from the start down to the current one: a tree that reaches one
    // directory by two links has no cycle, and its files belong in the list under both paths.
    QStringList enclosing;
    const std::function<FileList(const QDir &, const QStringList &)> recurse =
        [&, base = start](const QDir &current, const QStringList &namePatterns) {
            FileList found;
            const QString canonicalPath = current.canonicalPath();
            if (enclosing.contains(canonicalPath))
                return found;
            enclosing.append(canonicalPath);
            const QStringList subdirectories =
                current.entryList(QDir::Dirs | QDir::NoDotAndDotDot, QDir::NoSort);
            for (const QString &name : current.entryList(namePatterns, QDir::Files, QDir::NoSort))
                found.push_back(base.relativeFilePath(resolvePath(current, name)));
            for (const QString &name : subdirectories) {
                const FileList below = recurse(QDir(resolvePath(current, name)), namePatterns);
                found.insert(found.end(), below.cbegin(), below.cend());
            }
            enclosing.removeLast();
            return found;
        };
    return recurse(start, patterns);
}

bool FileManager::readFromFile(QDomDocument *document, const QString &fileName) const
{
    QFile file(directory.absoluteFilePath(fileName));
    if (!file.open(QIODevice::ReadOnly))
        return false;
    return document->setContent(&file);
}
