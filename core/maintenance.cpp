// The maintenance operations: firmware update, backup restore and configuration removal.

#include "core/outcome.h"
#include "core/updatermanager.h"
#include "fs/disk.h"

#include <QCryptographicHash>
#include <QDateTime>
#include <QFile>
#include <QSysInfo>
#include <QThread>
#include <QVector>

namespace {

/** Files of an update archive's directory that are installed below the root directory. */
struct InstallGroup
{
    QString archiveDirectory;
    QString destination;
    QStringList namePatterns;
};

std::vector<InstallGroup> installGroups()
{
    const auto group = [](const char *archiveDirectory, const char *destination,
                          const char *pattern) {
        return InstallGroup{
            QLatin1String(archiveDirectory), QLatin1String(destination), {QLatin1String(pattern)}};
    };
    return {
        group("bin", "opt/ostrel", "*"),
        group("systemd-services", "lib/systemd/system", "*.service"),
        group("udev", "etc/udev/rules.d", "*.rules"),
        group("systemd-network", "etc/systemd/network", "*.network"),
        group("wireless", "opt/wireless", "*"),
        group("usr-local", "usr/local", "*"),
    };
}

/** The text of the package's version.txt; empty, with the reason in the log, if there is none. */
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

/** Checks "version[:target architecture[:...]]" against this machine, whatever the version. */
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

/** Checks the lines "path:digest" that follow the version line; passes over any other line. */
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
 * The path of a new safety backup, named by the second. zip would rewrite one made within the same
 * second, and with it perhaps the only copy of an older state: wait for the next second instead,
 * though not for a clock that stands still.
 */
QString safetyBackupPath(const QDir &configDirectory)
{
    constexpr int attempts = 3;
    for (int attempt = 1;; ++attempt) {
        const QString time = QDateTime::currentDateTime().toString(Qt::ISODate);
        const QString path =
            configDirectory.absoluteFilePath(QStringLiteral("ostrel_backup_%1.osb2").arg(time));
        if (attempt == attempts || !QFile::exists(path))
            return path;
        QThread::sleep(1);
    }
}

/** Removes those directories that exist, and that from the disk too. */
bool removeDirectories(const UpdaterManager &manager, const QDir &parent, const QStringList &names)
{
    Disk::FileSystems changed;
    changed.add(parent.path());
    bool removed = true;
    for (const QString &name : names)
        removed = QDir(parent.absoluteFilePath(name)).removeRecursively() && removed;
    const bool flushed = flushToDisk(manager, "The removal", changed);
    return removed && flushed;
}

} // namespace

bool UpdaterManager::updateFirmware(const QString &archivePath)
{
    info() << "UPDATING FIRMWARE";
    const std::unique_ptr<QTemporaryDir> extracted = unzipToTemp(archivePath);
    if (!extracted)
        return false;
    const QString extractionPath = extracted->path();
    const QDir extractionDirectory(extractionPath);
    if (!checkPackage(*this, extractionDirectory))
        return false;

    const auto installGroup = [this, extractionPath, extractionDirectory](
                                  const QString &archiveDirectory, const QString &destination,
                                  const QStringList &namePatterns) {
        const QDir searchDirectory(extractionPath + QLatin1Char('/') + archiveDirectory);
        const FileList files = FileManager::findFiles(searchDirectory, namePatterns);
        info() << archiveDirectory << "files:" << files;
        return copyAndReplaceFiles(QDir(extractionDirectory.absoluteFilePath(archiveDirectory)),
                                   files, QDir(rootDirectory.absoluteFilePath(destination)));
    };

    stopServices(productServices());
    bool installed = true;
    for (const InstallGroup &group : installGroups())
        installed = installGroup(group.archiveDirectory, group.destination, group.namePatterns) &&
                    installed;
    reloadSystemd();
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
    stopServices(productServices());

    const QStringList groups = configurationDirectories();
    const QStringList headings = {QStringLiteral("Found archived backend config:"),
                                  QStringLiteral("Found archived configurator config:"),
                                  QStringLiteral("Found archived databases:")};
    QVector<FileList> archivedFiles;
    const auto sourceDirectory = [&extracted](const QString &group) {
        return QDir(extracted->path() + QLatin1Char('/') + group);
    };
    for (int i = 0; i < groups.size(); ++i) {
        archivedFiles << FileManager::findFiles(sourceDirectory(groups[i]), {QStringLiteral("*")});
        info() << headings[i] << archivedFiles[i];
    }

    const QDir configDirectory = getConfigPath();
    info() << "Firmware config path:" << configDirectory;
    const QString safetyBackup = safetyBackupPath(configDirectory);
    info() << "Making backup:" << safetyBackup;
    const bool backedUp = makeBackup(safetyBackup, true);
    info() << "Backup" << outcomeWord(backedUp);

    bool restored = true;
    for (int i = 0; i < groups.size(); ++i) {
        const QDir destination(configDirectory.absoluteFilePath(groups[i]));
        restored = copyAndReplaceFiles(sourceDirectory(groups[i]), archivedFiles[i], destination) &&
                   restored;
    }
    restartServices(productServices());
    return restored;
}

bool UpdaterManager::removeConfiguration()
{
    info() << "REMOVING CONFIGURATION";
    stopServices(productServices());

    const QDir configDirectory = getConfigPath();
    info() << "Firmware config path:" << configDirectory;
    const FileList oldBackups = FileManager::findFiles(configDirectory, {QStringLiteral("*.osb2")});
    const QString safetyBackup = safetyBackupPath(configDirectory);
    makeBackup(safetyBackup, true);

    for (const QString &oldBackup : oldBackups) {
        const QString path = configDirectory.absoluteFilePath(oldBackup);
        // It had the new one's very name, and now holds the new one.
        if (path == safetyBackup)
            continue;
        info() << "Removing" << oldBackup;
        QFile::remove(path);
    }
    const bool removed = removeDirectories(*this, configDirectory, configurationDirectories());
    restartServices(productServices());
    return removed;
}
