// The built tool as its callers see it.

#include "tests/device.h"

#include <QDir>
#include <QFile>
#include <QRegularExpression>
#include <QStorageInfo>
#include <QSysInfo>
#include <QtTest>

#include <csignal>

using Case = QMap<QString, QStringList>;

namespace {

const QStringList update = {"--update-firmware", "package.zip"};
const QString updatePackage = "version.txt=1; bin/a=new; bin/b=new; udev/c.rules=new";

void prepare(const Device &device, const QString &package = updatePackage)
{
    device.write("root/opt/ostrel", "a=old; b=old");
    device.write(device.config(), "backend/1=1; configurator/2=2; old.osb2=");
    device.write("package", package);
    runIn(device.path("package"), "zip", {"-qr", "../package.zip", "."});
}

/** Each of the two files is old or new; the new one may be NAME.new, with or without the old. */
bool isWhole(const QString &files)
{
    const QString whole =
        "(opt/ostrel/%1\\.new=new(; opt/ostrel/%1=(old|new))?|opt/ostrel/%1=(old|new))";
    const QRegularExpression pattern(whole.arg("a") + ";.* " + whole.arg("b"));
    return pattern.match(files).hasMatch();
}

/** Whether this machine has what `setup` uses. */
bool canRun(const QString &setup)
{
    if (setup.contains("clock ") && !QFile::exists(OSTREL_FAKETIME))
        return false;
    if (setup.contains("OTHER_DISK") && QStorageInfo("/dev/shm").rootPath() != "/dev/shm")
        return false;
    // The cases name the system calls of x86_64.
    return !setup.contains(QRegularExpression("inject |strace ")) ||
           (QSysInfo::currentCpuArchitecture() == "x86_64" &&
            QProcess::execute("strace", {"-o", "/dev/null", "true"}) == 0);
}

/** What holds for every run. */
void checkInvariants(const Device &device, const Run &run, const QString &before)
{
    QVERIFY(QDir(device.path("tmp")).isEmpty());
    QVERIFY(QDir(device.config()).entryList({"zi??????"}).isEmpty());
    const QString after = device.files("root");
    QVERIFY2(isWhole(after), qPrintable(after));
    const QString calls = device.files("state");
    QCOMPARE(calls.count("is-enabled "), calls.count("stop "));
    const bool stopped = run.report.contains("\nStopping services \n");
    QCOMPARE(run.report.contains("\nRestarting enabled services \n"), stopped);
    const QString outcome = run.exitStatus == 0 ? "SUCCESS" : "FAILURE";
    const QRegularExpression heading("^$|^(UPDATE|RESTORE|BACKUP|CLEANUP) " + outcome + "\n\n");
    QVERIFY2(heading.match(run.report).hasMatch(), qPrintable(run.report));
    if (run.report.startsWith("UPDATE SUCCESS"))
        QVERIFY2(after.count(QRegularExpression("opt/ostrel/[ab]=new")) == 2, qPrintable(after));
    if (run.report.startsWith("UPDATE FAILURE") && !stopped)
        QCOMPARE(after, before);
}

/** The system calls below /opt in the file "trace", with the last part of their paths. */
QString flushes(const Device &device)
{
    QFile trace(device.path("trace"));
    trace.open(QIODevice::ReadOnly);
    const QRegularExpression call("^(\\w+)\\(.*/opt/(.*/)?([^/>]+)[>\"](\\)|.*DONTNEED)");
    QStringList found;
    for (const QString &line : QString(trace.readAll()).split('\n'))
        if (const auto match = call.match(line); match.hasMatch())
            found << match.captured(1) + " " + match.captured(3);
    return found.join(", ");
}

/** `wanted`: lines of a report as in cases.txt, with their keys. */
void checkReport(QString report, const QStringList &wanted)
{
    const QStringList lines = report.append('\n').replace(" \n", "\n").split('\n');
    int position = -1;
    for (const QString &line : wanted) {
        const QString text = line.section(' ', 1);
        position = line.startsWith('|') ? position + 1 : lines.indexOf(text, position + 1);
        QVERIFY2(position >= 0 && lines.value(position) == text,
                 qPrintable(line + " is not in its place in\n" + report));
    }
}

} // namespace

class TestEndToEnd : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void caseEndsAsItShould_data();
    void caseEndsAsItShould();
    void signalEndsOnlyWhatMayEnd();
    void killedUpdateIsRepairedByTheNext();
};

void TestEndToEnd::caseEndsAsItShould_data()
{
    const QString keys = "package: add: setup: run: help: log: | config: files: calls: flushes:";
    QTest::addColumn<Case>("wanted");
    QFile file(QFINDTESTDATA("cases.txt"));
    QVERIFY(file.open(QIODevice::ReadOnly));
    for (const QString &text : QString(file.readAll()).split("\n[").mid(1)) {
        const QString heading = text.section('\n', 0, 0);
        Case wanted = {{"exit", {heading.section("] ", 0, 0)}}};
        for (QString line : text.split('\n').mid(1)) {
            if (line.isEmpty() || line.startsWith('#'))
                continue;
            const QString key = line.section(' ', 0, 0);
            QVERIFY2(keys.split(' ').contains(key), qPrintable(line));
            line.replace("\\n", "\n").replace("\\r", "\r").replace("\\s", " ");
            if (key == "log:" || key == "|")
                wanted["report"] << line;
            else
                wanted[key.chopped(1)] << line.section(' ', 1);
        }
        QTest::newRow(qPrintable(heading.section("] ", 1))) << wanted;
    }
}

void TestEndToEnd::caseEndsAsItShould()
{
    QFETCH(Case, wanted);
    const QString setup = wanted["setup"].join('\n');
    if (!canRun(setup))
        QSKIP("strace, libfaketime or another disk cannot be had here");
    const Device device;
    QString package = wanted.value("package", {updatePackage}).join("; ");
    prepare(device, package.replace("ARCH", QSysInfo::currentCpuArchitecture()));
    const QString config = QDir(device.path("root")).relativeFilePath(device.config());
    if (wanted.contains("add"))
        device.write("root", wanted["add"].join("; ").replace("CONFIG", config));
    const QString before = device.files("root");
    const QString arguments = wanted.value("run", update).join(' ');
    const Run run = device.run(arguments.split(' '), setup);

    QVERIFY2(wanted["exit"] == QStringList(QString::number(run.exitStatus)),
             qPrintable(run.report + run.console));
    QVERIFY2(run.console.isEmpty() || arguments.contains("--verbose"), qPrintable(run.console));
    for (const QString &text : wanted["help"])
        QVERIFY2(run.console.simplified().contains(text), qPrintable(run.console));
    QCOMPARE(run.report.isEmpty(), arguments == "--verbose" || arguments.contains("--report"));
    checkInvariants(device, run, before);
    checkReport(run.report, wanted["report"]);
    if (wanted.contains("config"))
        QCOMPARE(device.files(device.config()), wanted["config"].join("; "));
    const QString files = device.files("root") + "; END";
    QVERIFY2(files.contains(wanted["files"].join("; ")), qPrintable(files));
    if (wanted.contains("flushes"))
        QCOMPARE(flushes(device), wanted["flushes"].join(", "));
    const QString calls = device.files("state").replace('\n', ", ") + ";";
    if (wanted.contains("calls"))
        QVERIFY2(calls.contains("calls=" + wanted["calls"].join(", ") + ", ;"), qPrintable(calls));
}

void TestEndToEnd::signalEndsOnlyWhatMayEnd()
{
    for (const QString arguments : {"--remove-configuration", "--make-backup b.osb2"}) {
        const int exitStatus = arguments.startsWith("--make") ? -SIGINT : 0;
        const Device device;
        prepare(device);
        Process tool;
        device.start(tool, arguments.split(' '),
                     "mkdir \"$CONFIG/db\"; truncate -s 500M \"$CONFIG/db/big\"");
        const auto group = static_cast<pid_t>(tool.processId());
        QVERIFY(group > 0);
        const QDir config(device.config());
        QTRY_VERIFY(!config.entryList({"zi??????"}).isEmpty());
        ::kill(group, SIGINT);
        if (exitStatus == 0)
            for (const int number : {SIGINT, SIGHUP, SIGQUIT, SIGTERM, SIGTSTP})
                ::kill(-group, number);
        const Run run = device.finish(tool);
        // zip is alone in the group now, and nobody reads what it writes.
        if (exitStatus != 0)
            ::kill(-group, SIGINT);
        QCOMPARE(run.exitStatus, exitStatus);
        QCOMPARE(run.report.contains("\nzip finished successfully"), exitStatus == 0);
        QTRY_VERIFY(config.entryList({"zi??????", "b.osb2"}).isEmpty());
    }
}

void TestEndToEnd::killedUpdateIsRepairedByTheNext()
{
    const QString setup = "inject %1 signal=KILL:when=%2";
    if (!canRun(setup))
        QSKIP("strace cannot be had here");
    for (const QString call : {"linkat", "chmod", "unlink", "rename", "mkdir", "syncfs", "fsync"}) {
        int exitStatus = -SIGKILL;
        QString report;
        for (int nth = 1; exitStatus == -SIGKILL; ++nth) {
            const Device device;
            prepare(device);
            const Run run = device.run(update, setup.arg(call).arg(nth));
            exitStatus = run.exitStatus;
            if (exitStatus == -SIGKILL)
                report = run.report;
            QVERIFY2(exitStatus == -SIGKILL || (nth > 1 && exitStatus == 0), qPrintable(call));
            QVERIFY2(isWhole(device.files("root")), qPrintable(call + device.files("root")));
            QCOMPARE(device.run(update).exitStatus, 0);
            QString after = device.files("root/etc") + "; " + device.files("root/opt");
            // A kill before the rename leaves NAME.new, which no later update needs.
            QVERIFY2(after.count(".new=new; ") <= (call == "rename" ? 1 : 0), qPrintable(call));
            after.remove(QRegularExpression(" ostrel/.\\.new=new;"));
            QCOMPARE(after, QString("udev/rules.d/c.rules=new; ostrel/a=new; ostrel/b=new"));
        }
        // The last kill is at its flush.
        if (call == "syncfs" || call == "fsync")
            QVERIFY2(report.startsWith("UPDATE SUCCESS"), "the report is not flushed");
    }
}

QTEST_GUILESS_MAIN(TestEndToEnd)
#include "tst_endtoend.moc"
