// The maintenance operations: firmware update, backup restore and configuration removal.

#include "core/externalcommand.h"
#include "core/updatermanager.h"
#include "fs/disk.h"

#include <QCryptographicHash>
#include <QDateTime>
#include <QFile>
#include <QSysInfo>
#include <QThread>

#include <array>
#include <csignal>
#include <map>

namespace {

/** A directory of an update archive, and where its files are installed below the root directory. */
struct InstallGroup
{
    const char *archiveDirectory;
    const char *destination;
    const char *pattern;
};

const std::array<InstallGroup, 6> installGroups = {{
    {"bin", "opt/ostrel", "*"},
    {"systemd-services", "lib/systemd/system", "*.service"},
    {"udev", "etc/udev/rules.d", "*.rules"},
    {"systemd-network", "etc/systemd/network", "*.network"},
    {"wireless", "opt/wireless", "*"},
    {"usr-local", "usr/local", "*"},
}};

/** The text of the package's version.txt; empty on failure, with the reason in the log. */
QString readVersionText(const UpdaterManager &manager, const QDir &package)
{
    const QString path = package.absoluteFilePath(QStringLiteral("version.txt"));
    if (!QFile::exists(path)) {
        manager.info() << "version.txt not found! Aborting";
        return QString();
    }
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        manager.info() << "Could not read version.txt";
        return QString();
    }
    const QString text = QString::fromUtf8(file.readAll());
    if (text.isEmpty())
        manager.info() << "version.txt is empty!";
    return text;
}

/** Checks "version[:architecture[:...]]" for this machine. The version is compared with nothing. */
bool checkArchitecture(const UpdaterManager &manager, const QString &versionLine)
{
    const QStringList fields = versionLine.split(QLatin1Char(':'));
    manager.info() << "New firmware version:" << fields.constFirst();
    if (fields.size() < 2)
        return true;
    const QString &target = fields.at(1);
    const QString machine = QSysInfo::currentCpuArchitecture();
    const bool matches = machine.indexOf(target, 0, Qt::CaseSensitive) != -1;
    manager.info() << "Firmware target architecture" << target
                   << (matches ? "matches current" : "does not match current one") << machine;
    return matches;
}

bool hasDigest(const QString &path, const QString &hexDigest)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return false;
    return QCryptographicHash::hash(file.readAll(), QCryptographicHash::Sha1) ==
           QByteArray::fromHex(hexDigest.toUtf8());
}

/** Checks the lines "path:digest" that follow the version line; skips any other line. */
bool checkChecksums(const UpdaterManager &manager, const QDir &package, const QStringList &lines)
{
    if (lines.size() < 2)
        return true;
    manager.info() << "Checking SHA-1 checksums...";
    for (const QString &line : lines.mid(1)) {
        const QStringList fields = line.split(QLatin1Char(':'));
        if (fields.size() != 2)
            continue;
        if (!hasDigest(package.absoluteFilePath(fields.at(0)), fields.at(1))) {
            manager.info() << fields.at(0) << "SHA-1 checksum check failed";
            return false;
        }
    }
    manager.info() << "SHA-1 Checksums OK";
    return true;
}

bool checkPackage(const UpdaterManager &manager, const QDir &package)
{
    const QString versionText = readVersionText(manager, package);
    if (versionText.isEmpty())
        return false;
    const QStringList lines = versionText.split(QLatin1Char('\n'));
    return checkArchitecture(manager, lines.constFirst()) &&
           checkChecksums(manager, package, lines);
}

/**
 * Blocks the signals that end or stop a program, for this process and the commands that it starts
 * from here on: zip sets handlers of its own and would end at a signal that is merely ignored.
 */
void blockEndingSignals()
{
    sigset_t ending;
    sigemptyset(&ending);
    for (const int number : {SIGHUP, SIGINT, SIGQUIT, SIGTERM, SIGTSTP})
        sigaddset(&ending, number);
    sigprocmask(SIG_BLOCK, &ending, nullptr);
}

/**
 * The path of a new safety backup, named by the second. zip would update one made within the same
 * second, which may be the only copy of an older state: the next second gives another name.
 */
QString safetyBackupPath(const QDir &configDirectory)
{
    for (;;) {
        const QString time = QDateTime::currentDateTime().toString(Qt::ISODate);
        const QString path =
            configDirectory.absoluteFilePath(QStringLiteral("ostrel_backup_%1.osb2").arg(time));
        if (!QFile::exists(path))
            return path;
        QThread::sleep(1);
    }
}

} // namespace

bool UpdaterManager::updateFirmware(const QString &archivePath)
{
    info() << "UPDATING FIRMWARE";
    const std::unique_ptr<QTemporaryDir> extracted = unzipToTemp(archivePath);
    if (!extracted)
        return false;
    const QDir extractionDirectory(extracted->path());
    if (!checkPackage(*this, extractionDirectory))
        return false;

    const auto installGroup = [this, extractionDirectory](const InstallGroup &group) {
        const QLatin1String name(group.archiveDirectory);
        const QDir source(extractionDirectory.absoluteFilePath(name));
        const QDir destination(rootDirectory.absoluteFilePath(QLatin1String(group.destination)));
        const FileList files = FileManager::findFiles(source, {QLatin1String(group.pattern)});
        info() << name << "files:" << files;
        return copyAndReplaceFiles(source, files, destination);
    };

    blockEndingSignals();
    stopServices(productServices());
    bool installed = true;
    for (const InstallGroup &group : installGroups)
        if (!installGroup(group))
            installed = false;
    runCommand(QStringLiteral("systemctl"), {QStringLiteral("daemon-reload")});
    restartServices(productServices());
    return installed;
}

bool UpdaterManager::restoreBackup(const QString &archivePath)
{
    info() << "RESTORING BACKUP" << archivePath;
    const std::unique_ptr<QTemporaryDir> extracted = unzipToTemp(archivePath);
    if (!extracted)
        return false;
    info() << "Extracted " << archivePath << "into" << extracted->path();
    blockEndingSignals();
    stopServices(productServices());

    const QDir extractionDirectory(extracted->path());
    std::map<QString, FileList> archivedFiles;
    for (const ConfigurationDirectory &directory : configurationDirectories()) {
        const QDir source(extractionDirectory.absoluteFilePath(directory.name));
        archivedFiles[directory.name] = FileManager::findFiles(source, {QStringLiteral("*")});
        info() << directory.heading << archivedFiles[directory.name];
    }

    const QDir configDirectory = getConfigPath();
    info() << "Firmware config path:" << configDirectory;
    const QString safetyBackup = safetyBackupPath(configDirectory);
    info() << "Making backup:" << safetyBackup;
    logOutcome("Backup", makeBackup(safetyBackup, true));

    bool restored = true;
    for (const ConfigurationDirectory &directory : configurationDirectories()) {
        const QDir source(extractionDirectory.absoluteFilePath(directory.name));
        const QDir destination(configDirectory.absoluteFilePath(directory.name));
        if (!copyAndReplaceFiles(source, archivedFiles[directory.name], destination))
            restored = false;
    }
    restartServices(productServices());
    return restored;
}

bool UpdaterManager::removeConfiguration()
{
    info() << "REMOVING CONFIGURATION";
    blockEndingSignals();
    stopServices(productServices());

    const QDir configDirectory = getConfigPath();
    info() << "Firmware config path:" << configDirectory;
    const FileList oldBackups = FileManager::findFiles(configDirectory, {QStringLiteral("*.osb2")});
    // Whether it succeeds or not: the operator has asked for the removal.
    makeBackup(safetyBackupPath(configDirectory), true);

    for (const QString &oldBackup : oldBackups) {
        info() << "Removing" << oldBackup;
        QFile::remove(resolvePath(configDirectory, oldBackup));
    }
    bool removed = true;
    for (const ConfigurationDirectory &directory : configurationDirectories())
        if (!QDir(configDirectory.absoluteFilePath(directory.name)).removeRecursively())
            removed = false;
    if (!checkNoProblem("The removal", Disk::flushFileSystems({configDirectory.path()})))
        removed = false;
    restartServices(productServices());
    return removed;
}
