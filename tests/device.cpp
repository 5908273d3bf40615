#include "tests/device.h"

#include <QDir>
#include <QDirIterator>
#include <QRegularExpression>
#include <QtTest>

#include <csignal>

#include <unistd.h>

void Process::setupChildProcess()
{
    ::setpgid(0, 0);
    for (const int number : {SIGHUP, SIGINT, SIGQUIT, SIGTERM, SIGTSTP})
        std::signal(number, SIG_DFL);
}

Device::Device()
    : scratch(QDir::tempPath() + "/ostrel tëst XXXXXX"), otherDisk("/dev/shm/ostrel-test-XXXXXX")
{
    for (const char *directory : {"root", "tmp", "state"})
        QDir(path(directory)).mkpath(".");
}

QString Device::path(const QString &relative) const
{
    return QDir(scratch.path()).absoluteFilePath(relative);
}

QString Device::config() const { return path("root") + path("home/.local/share/.ostrelsmart"); }

void Device::write(const QString &below, const QString &files) const
{
    for (const QString &entry : files.split("; ")) {
        QFile file(path(below) + "/" + entry.section('=', 0, 0));
        QFileInfo(file).dir().mkpath(".");
        QVERIFY2(file.open(QIODevice::WriteOnly), qPrintable(file.fileName()));
        file.write(entry.section('=', 1).toUtf8());
    }
}

QString Device::files(const QString &below) const
{
    QStringList found;
    const QDir directory(path(below));
    QDirIterator entries(directory.path(), QDir::Files | QDir::Hidden,
                         QDirIterator::Subdirectories);
    while (entries.hasNext()) {
        QFile file(entries.next());
        file.open(QIODevice::ReadOnly);
        QString content = file.readAll();
        if (content.startsWith("PK")) {
            const QTemporaryDir unpacked(path("unpacked"));
            runIn(unpacked.path(), "unzip", {"-q", file.fileName()});
            content = "{" + files(unpacked.path()) + "}";
        }
        found << normalized(directory.relativeFilePath(file.fileName()) + "=" + content);
    }
    found.sort();
    return found.join("; ");
}

Run Device::run(const QStringList &arguments, const QString &setup) const
{
    Process tool;
    start(tool, arguments, setup);
    return finish(tool);
}

void Device::start(QProcess &tool, const QStringList &arguments, const QString &setup) const
{
    const QString script = "source='" OSTREL_SOURCE "' faketime='" OSTREL_FAKETIME "'\n"
                           "OTHER_DISK='%1'\n. \"$source/tests/prelude.sh\"\n"
                           "%2\nIFS='\n'\nexec $LAUNCHER \"$@\"";
    const QStringList command = QString(OSTREL_TOOL "|--root|root|--report|report").split('|');
    tool.setWorkingDirectory(scratch.path());
    tool.start("sh",
               QStringList{"-c", script.arg(otherDisk.path(), setup), "sh"} + command + arguments);
}

Run Device::finish(QProcess &tool) const
{
    const auto group = static_cast<pid_t>(tool.processId());
    if (!tool.waitForFinished(60000) && group > 0) {
        ::kill(-group, SIGKILL);
        tool.waitForFinished();
    }
    const int sign = tool.exitStatus() == QProcess::CrashExit ? -1 : 1;
    const QRegularExpression listing(" *(adding|updating|inflating|extracting|creating):.*\n");
    QFile report(path("report"));
    const QByteArray text = report.open(QIODevice::ReadOnly) ? report.readAll() : QByteArray();
    return {sign * tool.exitCode(), tool.readAllStandardError(), normalized(text).remove(listing)};
}

QString Device::normalized(QString text) const
{
    QString directory;
    QDebug(&directory) << QDir(config());
    text.replace(directory.trimmed(), "QDIR").replace(config(), "CONFIG");
    text.replace(QDir(path("root")).relativeFilePath(config()), "CONFIG");
    text.replace(scratch.path(), "@");
    text.replace(QSysInfo::currentCpuArchitecture(), "ARCH");
    text.replace(QRegularExpression("@/tmp/Ostrel Updater-\\w{6}"), "TMP");
    const QRegularExpression safetyBackup("ostrel_backup_\\d{4}-\\d\\d-\\d\\dT[\\d:]{8}\\.osb2");
    return text.replace(safetyBackup, "SAFETY");
}

void runIn(const QString &directory, const QString &program, const QStringList &arguments)
{
    Process process;
    process.setWorkingDirectory(directory);
    process.start(program, arguments);
    QVERIFY2(process.waitForFinished() && process.exitCode() <= 1, qPrintable(program));
}
