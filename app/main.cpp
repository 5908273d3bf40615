// The command line: options, choice of the one operation, report file and exit status.

#include "core/updatermanager.h"
#include "fs/disk.h"

#include <QCommandLineOption>
#include <QCommandLineParser>
#include <QCoreApplication>
#include <QFile>

#include <array>
#include <csignal>

namespace {

const QLatin1String updateFirmware("update-firmware");
const QLatin1String restoreBackup("restore-backup");
const QLatin1String makeBackup("make-backup");
const QLatin1String noStatistics("no-statistics");
const QLatin1String root("root");
const QLatin1String report("report");
const QLatin1String removeConfiguration("remove-configuration");
const QLatin1String verbose("verbose");

void addOptions(QCommandLineParser &parser)
{
    const auto option = [](QLatin1String name, const char *description, const char *valueName = "",
                           const char *defaultValue = "") {
        return QCommandLineOption(name, QLatin1String(description), QLatin1String(valueName),
                                  QLatin1String(defaultValue));
    };
    parser.addOptions({
        option(updateFirmware, "Update firmware from archive at <archive_path>", "archive_path"),
        option(restoreBackup, "Restore backup from archive at <archive_path>", "archive_path"),
        option(makeBackup, "Make backup and save it at <archive_path>", "archive_path"),
        option(noStatistics, "Do not save statistics when doing backup"),
        option(root, "Work with <root> as root directory", "root", "/"),
        option(report, "Save text file with operation log at <report_path>", "report_path"),
        option(removeConfiguration, "Clear all configuration files"),
        option(verbose, "Print actions taken step-by-step"),
    });
}

/** What one job option stands for. */
struct Job
{
    QLatin1String option;
    /** The first word of the report. */
    QLatin1String label;
    bool (*run)(UpdaterManager &manager, const QCommandLineParser &parser);
};

/** In order of precedence: the first whose option is set is the one that runs. */
const std::array<Job, 4> jobs = {{
    {updateFirmware, QLatin1String("UPDATE"),
     [](UpdaterManager &manager, const QCommandLineParser &parser) {
         return manager.updateFirmware(parser.value(updateFirmware));
     }},
    {restoreBackup, QLatin1String("RESTORE"),
     [](UpdaterManager &manager, const QCommandLineParser &parser) {
         return manager.restoreBackup(parser.value(restoreBackup));
     }},
    {makeBackup, QLatin1String("BACKUP"),
     [](UpdaterManager &manager, const QCommandLineParser &parser) {
         return manager.makeBackup(parser.value(makeBackup), !parser.isSet(noStatistics));
     }},
    {removeConfiguration, QLatin1String("CLEANUP"),
     [](UpdaterManager &manager, const QCommandLineParser & /*parser*/) {
         return manager.removeConfiguration();
     }},
}};

const Job *chosenJob(const QCommandLineParser &parser)
{
    for (const Job &job : jobs)
        if (parser.isSet(job.option))
            return &job;
    return nullptr;
}

/**
 * Saves the log under its heading and puts it on the disk, unless `path` is empty. A failure is
 * silent: the exit status stands for the operation alone.
 */
void writeReport(const QString &path, const QString &heading, const QStringList &log)
{
    QFile file(path);
    if (path.isEmpty() || !file.open(QIODevice::WriteOnly))
        return;
    file.write((QStringList(heading) + log).join(QLatin1Char('\n')).toUtf8());
    file.close();
    Disk::flushFileSystems({path});
}

/** Makes SIGPIPE and SIGCHLD independent of the caller's settings. */
void prepareSignals()
{
    // Writing to a console that has been closed must fail, and not end the tool.
    std::signal(SIGPIPE, SIG_IGN);
    // Where SIGCHLD is blocked, QProcess never notices the end of a command.
    sigset_t childEnd;
    sigemptyset(&childEnd);
    sigaddset(&childEnd, SIGCHLD);
    sigprocmask(SIG_UNBLOCK, &childEnd, nullptr);
}

} // namespace

int main(int argc, char *argv[])
{
    prepareSignals();
    const QCoreApplication application(argc, argv);
    QCoreApplication::setApplicationName(QStringLiteral("Ostrel Updater"));
    QCoreApplication::setApplicationVersion(QStringLiteral(OSTREL_VERSION));

    QCommandLineParser parser;
    parser.setApplicationDescription(QStringLiteral(OSTREL_DESCRIPTION));
    parser.addHelpOption();
    parser.addVersionOption();
    addOptions(parser);
    parser.process(QCoreApplication::arguments());

    UpdaterManager manager(parser.value(root), parser.isSet(verbose), nullptr);
    const Job *const job = chosenJob(parser);
    if (job == nullptr)
        parser.showHelp(0);

    const bool succeeded = job->run(manager, parser);
    manager.info() << "Finished"; // commits the last line; this one stays uncommitted and unseen
    const QLatin1String outcome(succeeded ? " SUCCESS" : " FAILURE");
    if (parser.isSet(report))
        writeReport(parser.value(report), job->label + outcome, manager.getOutputLog());
    return succeeded ? 0 : 1;
}
