// Archives: packing the configuration with zip, unpacking any archive with unzip.

#include "core/externalcommand.h"
#include "core/updatermanager.h"
#include "fs/disk.h"

#include <QFileInfo>

namespace {

/**
 * False, with the reason in the log, for a path that zip and unzip would take for an option: they
 * could end with exit code 0 without having touched the archive.
 */
bool checkNoOption(const UpdaterManager &manager, const QString &archivePath)
{
    if (!archivePath.startsWith(QLatin1Char('-')))
        return true;
    manager.info() << "The archive path must not begin with a hyphen, write ./ before it:"
                   << archivePath;
    return false;
}

/** The path of the archive that zip writes: it adds ".zip" to a name without a dot. */
QString writtenPath(const QString &archivePath)
{
    const bool hasDot = archivePath.section(QLatin1Char('/'), -1).contains(QLatin1Char('.'));
    return hasDot ? archivePath : archivePath + QStringLiteral(".zip");
}

QString zipStartProblem(QProcess::ProcessError error, const QStringList &arguments)
{
    const QString joined = arguments.join(QLatin1Char(' '));
    if (error == QProcess::FailedToStart)
        return QStringLiteral("Zip process failed to start (%1)").arg(joined);
    if (error == QProcess::Crashed)
        return QStringLiteral("Zip process crashed (%1)").arg(joined);
    return QStringLiteral("Zip has some unknown error: %2 (%1)")
        .arg(joined)
        .arg(static_cast<int>(error));
}

bool runZip(const UpdaterManager &manager, const QStringList &arguments,
            const QString &workingDirectory)
{
    CommandSettings settings;
    settings.workingDirectory = workingDirectory;
    settings.startLimit = 0; // its limit includes the time that it takes to start
    settings.finishLimit = 120000;
    // Ctrl-C can end the tool first: zip reports its own end on standard error before it removes
    // its temporary file, and SIGPIPE would end it there.
    settings.ignoresSigpipe = true;
    const CommandResult zip = runCommand(QStringLiteral("zip"), arguments, settings);

    if (!zip.started) {
        manager.info() << zipStartProblem(zip.error, arguments);
        return false;
    }
    for (const QByteArray &output : {zip.standardOutput, zip.standardError})
        if (!output.isEmpty())
            manager.info() << output;
    if (!zip.problem.isNull())
        manager.info() << zip.problem;
    else if (!zip.succeeded())
        manager.info() << "zip failed with exit code" << zip.exitCode;
    return zip.succeeded();
}

bool runUnzip(const UpdaterManager &manager, const QString &archivePath, const QString &directory)
{
    if (!checkNoOption(manager, archivePath))
        return false;
    const CommandResult unzip =
        runCommand(QStringLiteral("unzip"), {QStringLiteral("-d"), directory, archivePath});
    manager.info() << QString::fromUtf8(unzip.standardOutput);
    if (!unzip.problem.isNull())
        manager.info() << unzip.problem;
    return unzip.succeeded();
}

} // namespace

bool UpdaterManager::makeBackup(const QString &archivePath, bool withStatistics)
{
    info() << "CREATING BACKUP" << archivePath << (withStatistics ? "with" : "without")
           << "statistics";
    const QDir configDirectory = getConfigPath();
    info() << "Firmware config path:" << configDirectory;
    const QString workingDirectory = configDirectory.canonicalPath();
    info() << "Setting zip working dir to" << workingDirectory;

    QStringList arguments = {QStringLiteral("-r"), QStringLiteral("-1"), archivePath};
    for (const ConfigurationDirectory &directory : configurationDirectories())
        arguments << directory.name;
    if (!withStatistics)
        arguments.removeLast();
    info() << "Starting zip with arguments:" << arguments;
    if (archivePath.isEmpty()) {
        info() << "The archive path is empty";
        return false;
    }
    if (!checkNoOption(*this, archivePath) || !runZip(*this, arguments, workingDirectory))
        return false;

    // zip itself flushes nothing.
    const QString archive = resolvePath(QDir(workingDirectory), writtenPath(archivePath));
    const std::set<QString> changed = {QFileInfo(archive).absolutePath(), archive};
    if (!checkNoProblem("The archive", Disk::flushFileSystems(changed)))
        return false;
    info() << "zip finished successfully, created file:" << archivePath;
    return true;
}

std::unique_ptr<QTemporaryDir> UpdaterManager::unzipToTemp(const QString &archivePath)
{
    info() << "Creating temporary directory";
    auto directory = std::make_unique<QTemporaryDir>();
    if (!directory->isValid()) {
        info() << "Failed to create directory";
        return nullptr;
    }
    info() << "Directory created at" << directory->path();
    if (runUnzip(*this, archivePath, directory->path()))
        return directory;
    info() << "unzip failed";
    return nullptr;
}
