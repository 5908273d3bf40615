// A scratch device for runs of the built tool, with a scripted systemctl.

#pragma once

#include <QProcess>
#include <QString>
#include <QStringList>
#include <QTemporaryDir>

/**
 * In a process group of its own, with no signal ignored. Under qemu, which lacks clone() with a
 * pidfd, only a class derived from QProcess has a processId().
 */
class Process : public QProcess
{
protected:
    void setupChildProcess() override;
};

struct Run
{
    /** Negative: the number of the signal that ended it. */
    int exitStatus;
    QString console;
    /** Without the files that zip and unzip list in the file system's order. */
    QString report;
};

// Trees of files are texts here, "a/b=content; c=", with the placeholders of cases.txt when read.
// Relative paths count from a directory with blanks and non-ASCII letters in its name.
class Device
{
public:
    Device();

    QString path(const QString &relative) const;
    /** The configuration directory below "root". */
    QString config() const;

    void write(const QString &below, const QString &files) const;
    QString files(const QString &below) const;

    /** Runs the tool from a shell that has run `setup`. */
    Run run(const QStringList &arguments, const QString &setup = QString()) const;
    void start(QProcess &tool, const QStringList &arguments, const QString &setup) const;
    Run finish(QProcess &tool) const;

private:
    QString normalized(QString text) const;

    QTemporaryDir scratch;
    QTemporaryDir otherDisk;
};

void runIn(const QString &directory, const QString &program, const QStringList &arguments);
