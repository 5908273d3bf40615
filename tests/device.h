// A scratch device for tests, with a scripted systemctl, and runs of the built tool on it.

#pragma once

#include <QProcess>
#include <QString>
#include <QStringList>
#include <QTemporaryDir>

/**
 * Starts a program as a shell does: in a process group of its own, with no signal ignored. Under
 * qemu's user emulation processId() of a plain QProcess is -1: it uses clone() with a pidfd, a
 * class derived from it fork().
 */
class Process : public QProcess
{
protected:
    void setupChildProcess() override;
};

/** The result of a run of the tool. */
struct Run
{
    /** Negative: the number of the signal that ended it. */
    int exitStatus;
    QString console;
    /** Without the lists of files that zip and unzip print, whose order is the file system's. */
    QString report;
};

// Trees of files are texts here, "a/b=content; c=", with the placeholders of cases.txt when read.
// Relative paths count from a directory with blanks and non-ASCII letters in its name.
class Device
{
public:
    Device();

    QString path(const QString &relative) const;
    /** The configuration directory, as seen below the root directory "root". */
    QString config() const;

    void write(const QString &below, const QString &files) const;
    QString files(const QString &below) const;

    /** Runs the tool from a shell that has run `setup`; through $LAUNCHER, if that is set. */
    Run run(const QStringList &arguments, const QString &setup = QString()) const;
    void start(QProcess &tool, const QStringList &arguments, const QString &setup) const;
    Run finish(QProcess &tool) const;

private:
    QString normalized(QString text) const;

    QTemporaryDir scratch;
    QTemporaryDir otherDisk;
};

/** Runs another program in a directory. */
void runIn(const QString &directory, const QString &program, const QStringList &arguments);
