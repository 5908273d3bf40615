// FileManager: a named directory of the device's applications, and the recursive file search.

#pragma once

#include <QDir>
#include <QString>
#include <QStringList>

#include <vector>

class QDomDocument;

/** "/"-separated file paths relative to the directory that was searched, in depth-first order. */
using FileList = std::vector<QString>;

/**
 * QDir::absoluteFilePath(), but for a name that begins with ":" too: that function takes it for the
 * path of a Qt resource.
 */
QString resolvePath(const QDir &directory, const QString &path);

/**
 * A named directory of the device's applications, below the common data directory of the user who
 * runs the program or below the directory that the program is installed in. This program uses
 * getParentDirectory() and findFiles() alone; the rest is for other programs of the device.
 */
class FileManager
{
public:
    enum Root : int { DataRoot = 0, ApplicationRoot = 1 };

    /**
     * Names the directory `name` (may hold separators) below the base that `root` selects, and
     * creates nothing. A `root` that is no enumerator gives the working directory.
     */
    FileManager(const QString &name, Root root);

    QDir getDirectory() const;

    /** The common data directory, whatever this object's own root and name are. */
    QDir getParentDirectory();

    /** Creates the directory with all missing parents; a failure is not reported. */
    void createDirectory() const;

    /** True if a file or directory `name` exists inside the directory. */
    bool exists(const QString &name) const;

    /**
     * Lists every file below `start`, at any depth, whose name matches one of the wildcard
     * `patterns` (case-insensitive; none: every file), relative to `start`. Hidden entries and
     * special files are left out; links are followed, but never back into a directory that the
     * search is already inside. A directory that is missing or unreadable contributes nothing.
     */
    static FileList findFiles(const QDir &start, const QStringList &patterns);

    /**
     * Parses the file `fileName` of the directory as XML into `document`. False if it is not
     * well-formed or cannot be read; `document` is unchanged if it cannot be opened.
     */
    bool readFromFile(QDomDocument *document, const QString &fileName) const;

private:
    QDir directory;
};
