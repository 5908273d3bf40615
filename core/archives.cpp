// Archives: packing the configuration with zip, unpacking any archive with unzip.

#include "core/externalcommand.h"
#include "core/outcome.h"
#include "core/updatermanager.h"
#include "fs/disk.h"

#include <QFileInfo>

namespace {

/**
 * zip and unzip would take such a path for one of their options, or for no archive at all, and
 * could end with exit code 0 without having touched the archive that was meant.
 */
bool checkArchivePath(const UpdaterManager &manager, const QString &archivePath)
{
    if (archivePath.isEmpty()) {
        manager.info() << "The archive path is empty";
        return false;
    }
    if (archivePath.startsWith(QLatin1Char('-'))) {
        manager.info() << "The archive path must not begin with a hyphen, write ./ before it:"
                       << archivePath;
        return false;
    }
    return true;
}

QString zipStartProblem(QProcess::ProcessError error, const QStringList &arguments)
{
    const QString joined = arguments.join(QLatin1Char(' '));
    if (error == QProcess::FailedToStart)
        return QStringLiteral("Zip process failed to start (%1)").arg(joined);
    if (error == QProcess::Crashed)
        return QStringLiteral("Zip process crashed (%1)").arg(joined);
    // One call: a path that holds a place marker of its own must come out as it is.
    return QStringLiteral("Zip has some unknown error: %2 (%1)")
        .arg(joined, QString::number(static_cast<int>(error)));
}

bool checkZipResult(const UpdaterManager &manager, const CommandResult &zip,
                    const QStringList &arguments)
{
    if (zip.end == CommandResult::End::FailedToStart) {
        manager.info() << zipStartProblem(zip.error, arguments);
        return false;
    }
    for (const QByteArray &output : {zip.standardOutput, zip.standardError})
        if (!output.isEmpty())
            manager.info() << output;
    if (zip.end == CommandResult::End::OutOfTime) {
        manager.info() << zip.problem;
        return false;
    }
    if (!zip.succeeded()) {
        manager.info() << "zip failed with exit code" << zip.exitCode;
        return false;
    }
    return true;
}

} // namespace

bool UpdaterManager::makeBackup(const QString &archivePath, bool withStatistics)
{
    info() << "CREATING BACKUP" << archivePath << (withStatistics ? "with" : "without")
           << "statistics";
    if (!checkArchivePath(*this, archivePath))
        return false;

    const QDir configDirectory = getConfigPath();
    info() << "Firmware config path:" << configDirectory;
    const QString workingDirectory = configDirectory.canonicalPath();
    info() << "Setting zip working dir to" << workingDirectory;

    QStringList directories = configurationDirectories();
    if (!withStatistics)
        directories.removeLast();
    const QStringList arguments =
        QStringList{QStringLiteral("-r"), QStringLiteral("-1"), archivePath} + directories;
    info() << "Starting zip with arguments:" << arguments;

    // zip itself flushes nothing. The archive's directory stands for the archive, since zip may add
    // ".zip" to its name; one that is a link elsewhere is rewritten where it leads.
    const QString archive = QDir(workingDirectory).absoluteFilePath(archivePath);
    Disk::FileSystems changed;
    changed.add(QFileInfo(archive).absolutePath());
    changed.add(archive);

    constexpr CommandLimits limits = {0, 120000};
    const CommandResult zip =
        runCommand(QStringLiteral("zip"), arguments, limits, workingDirectory);
    if (!checkZipResult(*this, zip, arguments))
        return false;
    if (!flushToDisk(*this, "The archive", changed))
        return false;
    info() << "zip finished successfully, created file:" << archivePath;
    return true;
}

std::unique_ptr<QTemporaryDir> UpdaterManager::unzipToTemp(const QString &archivePath)
{
    if (!checkArchivePath(*this, archivePath))
        return nullptr;

    info() << "Creating temporary directory";
    auto directory = std::make_unique<QTemporaryDir>();
    if (!directory->isValid()) {
        info() << "Failed to create directory";
        return nullptr;
    }
    info() << "Directory created at" << directory->path();

    constexpr CommandLimits limits = {10000, 600000};
    const CommandResult unzip = runCommand(
        QStringLiteral("unzip"), {QStringLiteral("-d"), directory->path(), archivePath}, limits);
    info() << QString::fromUtf8(unzip.standardOutput);
    if (unzip.succeeded())
        return directory;
    if (!unzip.problem.isEmpty())
        info() << unzip.problem;
    info() << "unzip failed";
    return nullptr;
}
