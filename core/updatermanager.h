// UpdaterManager: the engine of one job, with all operations and the operation log.
//
// Others rely on the following, which does not change; all else is a choice and may be changed:
// - the options, the exit status, and the first line of a report;
// - the order of the steps, and the log's lines with their spelling ("successfull") and blanks;
// - the names of this class's members and FileManager's, of services and of directories;
// - the formats of archives, and that zip packs from the configuration directory;
// - that an old file is removed before its replacement is renamed;
// - that a restore and a removal continue after their safety backup has failed.

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
 * operation log. Operations and building blocks return false (or null) on failure, write the reason
 * to the log, and throw nothing.
 */
class UpdaterManager : public QObject
{
    Q_OBJECT

public:
    // updatermanager.cpp

    /**
     * `rootPath`: the directory below which the device's files are; stored unchanged, not tested.
     * `echo`: collect the log and print it on standard error when the manager is destroyed.
     */
    UpdaterManager(const QString &rootPath, bool echo, QObject *parent);

    /**
     * Commits the line written since the last call and returns the stream for the next one. Items
     * are separated by one blank and unquoted; callers do not change the stream's settings. The
     * first line of a log is therefore empty, and the last one needs one more call.
     */
    QDebug &info() const;

    /** The lines committed so far, oldest first. */
    QStringList getOutputLog() const;

    /** The firmware configuration directory as seen below the root directory; not created. */
    QDir getConfigPath() const;

    /** Logs whether `step` succeeded; `failure` is appended to "failed". Returns `succeeded`. */
    bool logOutcome(const char *step, bool succeeded, const QString &failure = QString()) const;

    /** True if `problem` is null. Else logs `what` and the problem, such as "could not ...". */
    bool checkNoProblem(const char *what, const QString &problem) const;

    // maintenance.cpp. Before they stop services, these operations block SIGHUP, SIGINT, SIGQUIT,
    // SIGTERM and SIGTSTP until the process exits, so that these do not prevent the restart.

    /**
     * Installs the firmware update archive at `archivePath` below the root directory. False when
     * the package does not verify, with nothing changed, or when one of its files was not
     * installed; files installed before that stay.
     */
    bool updateFirmware(const QString &archivePath);

    /**
     * Copies the files of the backup archive at `archivePath` into the configuration directory,
     * after a safety backup. False when the archive cannot be unpacked, with nothing changed, or
     * when a file was not restored; files that the archive does not contain stay.
     */
    bool restoreBackup(const QString &archivePath);

    /**
     * Removes the configuration and older backups, after a safety backup. True when the
     * configuration's directories are removed, and the removal is on the disk.
     */
    bool removeConfiguration();

    // archives.cpp

    /**
     * Packs the configuration into a zip archive. A relative `archivePath` counts from the
     * configuration directory; an existing archive is updated in place. True when the archive is
     * on the disk. Also a building block: it stops no services and blocks no signals.
     */
    bool makeBackup(const QString &archivePath, bool withStatistics);

    /**
     * Unpacks the archive at `archivePath` (relative to the working directory) into a new
     * temporary directory, which its owner deletes. Null unless the whole archive was unpacked.
     */
    std::unique_ptr<QTemporaryDir> unzipToTemp(const QString &archivePath);

    // services.cpp

    /** Stops systemd services, in list order; only the log reports a failure. */
    void stopServices(const std::vector<QString> &services);

    /** True when systemd's answer for `service` contains "enabled". Writes nothing to the log. */
    bool isServiceEnabled(const QString &service) const;

    /** Restarts those of the systemd services that are enabled; only the log reports a failure. */
    void restartServices(const std::vector<QString> &services);

    // fileinstallation.cpp

    /**
     * Copies each of `files` from below `from` to the same path below `to`, which is created. An
     * existing file is removed only once its replacement beside it, ".new", is on the disk. Stops
     * at the first failure and returns false; true when every file is installed and on the disk.
     */
    bool copyAndReplaceFiles(const QDir &from, const FileList &files, const QDir &to);

private:
    // updatermanager.cpp

    /** A directory of the configuration directory that backups contain. */
    struct ConfigurationDirectory
    {
        QString name;
        /** The log's words before the files that a restore finds. */
        QString heading;
    };

    /** In the order of their restore; the last one holds the statistics. */
    static std::vector<ConfigurationDirectory> configurationDirectories();

    // services.cpp

    /** The product's services, in the order in which they are stopped and restarted. */
    static std::vector<QString> productServices();

    // The state.

    QDir rootDirectory;
    bool verbose;
    mutable QString pendingLine;
    mutable QDebug echoStream;
    mutable QDebug logStream;
    mutable QStringList logLines;
};
