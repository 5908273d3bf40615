// The built tool as its callers see it: reports, exit status, what is on the device afterwards.

#include "tests/device.h"

#include <QDir>
#include <QFile>
#include <QRegularExpression>
#include <QSysInfo>
#include <QtTest>

#include <csignal>

using Case = QMap<QString, QStringList>;

namespace {

const QStringList update = {"--update-firmware", "package.zip"};

QString testData(const QString &name)
{
    QFile file(QFINDTESTDATA(name));
    return file.open(QIODevice::ReadOnly) ? QString(file.readAll()).chopped(1) : QString();
}

/** What a line of a case stands for. */
QString plain(QString text) { return text.replace("\\n", "\n").replace("\\r", "\r"); }

void prepare(const Device &device, const QString &package = {})
{
    device.write("root/opt/ostrel", "a=old; b=old");
    device.write(device.config(), "backend/1=1; configurator/2=2; old.osb2=");
    if (package.isEmpty())
        device.pack("version.txt=1; bin/a=new; bin/b=new; udev/c.rules=new");
    else
        device.pack(package.section(' ', 1), package.section(' ', 0, 0));
}

/** Each of the two old files is there, or the new one is, maybe beside it or beside nothing. */
bool isWhole(const QString &files)
{
    const QString whole =
        "(opt/ostrel/%1\\.new=new(; opt/ostrel/%1=(old|new))?|opt/ostrel/%1=(old|new))";
    const QRegularExpression pattern(whole.arg("a") + "; " + whole.arg("b"));
    return pattern.match(files).hasMatch();
}

bool canRun(const QString &setup)
{
    const bool emulated = qstrlen(OSTREL_EMULATOR) != 0;
    if (setup.contains("clock "))
        return !emulated && qstrlen(OSTREL_FAKETIME) != 0;
    const QStringList trial = {"-qq", "-o", "/dev/null", "true"};
    return !setup.contains("inject ") || (!emulated && QProcess::execute("strace", trial) == 0);
}

} // namespace

class TestEndToEnd : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void configurationGoesRoundTrip();
    void caseEndsAsItShould_data();
    void caseEndsAsItShould();
    void signalEndsOnlyWhatMayEnd_data();
    void signalEndsOnlyWhatMayEnd();
    void killedUpdateIsRepairedByTheNext();
};

void TestEndToEnd::configurationGoesRoundTrip()
{
    const Device device;
    const QString others = "; other/x=x; top=t";
    const QString small = "backend/.h=h; backend/o.OSB2=; backend/é b/1=1; configurator/2=2";
    const QString full = small + "; db/3=3";
    device.write(device.config(), full + others);
    QCOMPARE(device.run({"--make-backup", "full.osb2"}).exitStatus, 0);
    QCOMPARE(device.files(device.config()), full + "; full.osb2={" + full + "}" + others);
    const Run backup = device.run({"--make-backup", device.path("small.osb2"), "--no-statistics"});
    QCOMPARE(backup.report.split('\n'), testData("reports/backup.txt").split('\n'));
    QVERIFY(device.files(".").contains("; small.osb2={" + small + "}"));

    device.write(device.config(), "backend/é b/1=changed; db/3=changed");
    const QString changed = small + "; db/3=changed";
    const Run restore = device.run({"--restore-backup", "small.osb2"});
    QCOMPARE(restore.exitStatus, 0);
    QCOMPARE(restore.report.split('\n'), testData("reports/restore.txt").split('\n'));
    QCOMPARE(device.files(device.config()),
             changed + "; full.osb2={" + full + "}; ostrel_backup_NOW.osb2={" +
                 QString(changed).replace("/1=1", "/1=changed") + "}" + others);

    const Run removal = device.run({"--remove-configuration"});
    QCOMPARE(removal.exitStatus, 0);
    QCOMPARE(removal.report.split('\n'), testData("reports/removal.txt").split('\n'));
    QCOMPARE(device.files(device.config()), "ostrel_backup_NOW.osb2={" + changed + "}" + others);
}

void TestEndToEnd::caseEndsAsItShould_data()
{
    QTest::addColumn<Case>("wanted");
    QString text;
    for (const char *name : {"packages", "commands", "disk"})
        text += testData(QString("cases/%1.txt").arg(name)) + "\n";
    for (const QString &lines : text.split("\n[").mid(1)) {
        Case wanted;
        for (const QString &line : lines.section('\n', 1).split('\n'))
            wanted[line.section(": ", 0, 0)] << plain(line.section(": ", 1));
        QTest::newRow(qPrintable(lines.section(']', 0, 0))) << wanted;
    }
}

void TestEndToEnd::caseEndsAsItShould()
{
    QFETCH(Case, wanted);
    const QString setup = wanted["setup"].join('\n');
    if (!canRun(setup))
        QSKIP("strace or libfaketime does not work here");
    const Device device;
    QString package = wanted["package"].join("");
    package.replace("ARCH", QSysInfo::currentCpuArchitecture());
    prepare(device, package);
    const QString before = device.files("root");
    const QString arguments = wanted.value("run", {update.join(' ')}).constFirst();
    const Run run = device.run(arguments.split(' '), setup);

    QVERIFY2(wanted["exit"] == QStringList(QString::number(run.exitStatus)),
             qPrintable(run.report + run.console));
    QVERIFY2(!run.console.contains("still running"), qPrintable(run.console));
    int position = 0;
    for (const QString &line : wanted["log"]) {
        position = ("\n" + run.report).indexOf("\n" + line, position);
        QVERIFY2(position >= 0, qPrintable(line + " is not in its place in\n" + run.report));
    }
    if (wanted.contains("report"))
        QCOMPARE(run.report.split('\n'), testData(wanted["report"].constFirst()).split('\n'));
    QVERIFY(QDir(device.path("tmp")).isEmpty());
    QVERIFY(QDir(device.config()).entryList({"zi??????"}).isEmpty());
    const QString after = device.files("root") + device.files("state");
    QVERIFY2(isWhole(after), qPrintable(after));
    if (run.report.startsWith("UPDATE FAILURE") && !run.report.contains("\nStopping"))
        QCOMPARE(after, before);
    for (const QString &part : wanted["after"])
        QVERIFY2(after.contains(part), qPrintable(part + " is not in\n" + after));
}

void TestEndToEnd::signalEndsOnlyWhatMayEnd_data()
{
    QTest::addColumn<int>("exitStatus");
    QTest::newRow("--remove-configuration") << 0;
    QTest::newRow("--make-backup b.osb2") << -SIGINT;
}

void TestEndToEnd::signalEndsOnlyWhatMayEnd()
{
    QFETCH(int, exitStatus);
    const Device device;
    prepare(device);
    Process tool;
    // In a process group of its own, as a shell starts it on a terminal.
    device.start(tool, QString(QTest::currentDataTag()).split(' '),
                 "mkdir \"$CONFIG/db\"; truncate -s 1G \"$CONFIG/db/big\"; TRACE=setsid");
    const QDir config(device.config());
    QTRY_VERIFY(!config.entryList({"zi??????"}).isEmpty());
    const QVector<int> numbers = {SIGHUP, SIGQUIT, SIGTERM, SIGTSTP};
    for (const int number : QVector<int>{SIGINT} + (exitStatus == 0 ? numbers : QVector<int>()))
        ::kill(-static_cast<pid_t>(tool.processId()), number);
    const Run run = device.finish(tool);
    QCOMPARE(run.exitStatus, exitStatus);
    QCOMPARE(run.report.contains("\nzip finished successfully"), exitStatus == 0);
    QCOMPARE(run.report.endsWith("Configurator restarted successfuly "), exitStatus == 0);
    QTRY_VERIFY(config.entryList({"zi??????", "b.osb2"}).isEmpty());
}

void TestEndToEnd::killedUpdateIsRepairedByTheNext()
{
    const QString setup = "inject %1 signal=KILL:when=%2";
    if (!canRun(setup))
        QSKIP("strace does not work here");
    for (const QString call :
         {"linkat", "chmod", "fsync", "unlink", "renameat2", "syncfs", "mkdir"}) {
        int exitStatus = -SIGKILL;
        for (int nth = 1; exitStatus == -SIGKILL; ++nth) {
            const Device device;
            prepare(device);
            exitStatus = device.run(update, setup.arg(call).arg(nth)).exitStatus;
            QVERIFY2(exitStatus == -SIGKILL || (nth > 1 && exitStatus == 0), qPrintable(call));
            QVERIFY2(isWhole(device.files("root")), qPrintable(call + device.files("root")));
            QCOMPARE(device.run(update).exitStatus, 0);
            QString after = device.files("root/etc") + "; " + device.files("root/opt");
            QVERIFY2(after.count(".new=new; ") <= (call == "renameat2" ? 1 : 0), qPrintable(call));
            after.remove(QRegularExpression(" ostrel/.\\.new=new;"));
            QCOMPARE(after, QString("udev/rules.d/c.rules=new; ostrel/a=new; ostrel/b=new"));
        }
    }
}

QTEST_GUILESS_MAIN(TestEndToEnd)
#include "tst_endtoend.moc"
