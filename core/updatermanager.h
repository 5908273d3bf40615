// UpdaterManager: the engine of one run, with all its operations and the operation log.

#pragma once

#include "fs/filemanager.h"

#include <QDebug>
#include <QDir>
#include <QObject>
#include <QString>
#include <QStringList>
#include <QTemporaryDir>

#include <memory>
#include <vector>

/**
 * Carries out one maintenance operation below a root directory and writes each step to the
 * operation log. Operations and building blocks return false (or null) on failure and leave the
 * reason in the log; they throw nothing.
 */
class UpdaterManager : public QObject
{
    Q_OBJECT

public:
    /**
     * `rootPath`: the directory below which the device's files lie; stored unchanged, not tested.
     * `echo`: collect the log and print it on standard error when the manager goes.
     */
    UpdaterManager(const QString &rootPath, bool echo, QObject *parent);

    /**
     * Commits the line written since the last call and starts the next one, to be written to the
     * stream that this returns. Items are separated by one blank and unquoted: leave the stream's
     * settings alone. The first line of a run is therefore empty, the last needs one more call.
     */
    QDebug &info() const;

    /** The lines committed so far, oldest first. */
    QStringList getOutputLog() const;

    /** The firmware configuration directory as seen below the root directory; not created. */
    QDir getConfigPath() const;

    // Operations: one a run.

    /**
     * Installs the firmware update archive at `archivePath` below the root directory. False when
     * the package does not verify, with nothing changed, or when a file of it was not installed;
     * what was installed by then stays.
     */
    bool updateFirmware(const QString &archivePath);

    /**
     * Puts the files of the backup archive at `archivePath` back into the configuration directory,
     * after a safety backup. False when the archive cannot be unpacked, with nothing changed, or
     * when a file was not put back; files that the archive does not hold stay.
     */
    bool restoreBackup(const QString &archivePath);

    /**
     * Packs the configuration into a zip archive. A relative `archivePath` counts from the
     * configuration directory; an existing archive is updated in place. True when the archive is
     * on the disk. Also a building block of the other operations.
     */
    bool makeBackup(const QString &archivePath, bool withStatistics);

    /**
     * Removes the configuration and older backups, after a safety backup. True when the
     * configuration's directories are gone, from the disk too.
     */
    bool removeConfiguration();

    // Building blocks.

    /**
     * Unpacks the archive at `archivePath` (relative to the working directory) into a new
     * temporary directory that goes with its owner. Null unless the whole archive was unpacked.
     */
    std::unique_ptr<QTemporaryDir> unzipToTemp(const QString &archivePath);

    /**
     * Stops systemd services, in list order; only the log tells which failed. From here to the end
     * of the process, signals that would end it are held back, so that a restart is reached.
     */
    void stopServices(const std::vector<QString> &services);

    /** True when systemd's answer for `service` speaks of "enabled". Writes nothing to the log. */
    bool isServiceEnabled(const QString &service) const;

    /** Restarts those of the systemd services that are enabled; only the log tells of failures. */
    void restartServices(const std::vector<QString> &services);

    /**
     * Copies each of `files` from below `from` to the same path below `to`, which is created. An
     * existing file is given up only once its replacement beside it, ".new", is on the disk. Stops
     * at the first failure and returns false; true when every file, and all that changed with it,
     * is on the disk.
     */
    bool copyAndReplaceFiles(const QDir &from, const FileList &files, const QDir &to);

private:
    /** The product's services, in the order in which they are stopped and restarted. */
    static std::vector<QString> productServices();

    /** The configuration's directories in the configuration directory; the last: statistics. */
    static QStringList configurationDirectories();

    /** Makes systemd read its unit files again; a failure is not told. */
    void reloadSystemd() const;

    QDir rootDirectory;
    bool verbose;
    mutable QString pendingLine;
    mutable QDebug echoStream;
    mutable QDebug logStream;
    mutable QStringList logLines;
};
