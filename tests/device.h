// A scratch device for tests, with a scripted systemctl, and runs of the built tool on it.

#pragma once

#include <QProcess>
#include <QString>
#include <QStringList>
#include <QTemporaryDir>

// In place of QProcess: qemu refuses the way in which Qt starts a plain one, whose number is -1
// then, so that ending it ends every process of the machine.
class Process : public QProcess
{
};

/** What a run of the tool left for its caller. */
struct Run
{
    /** Negative: the number of the signal that ended it. */
    int exitStatus;
    QString console;
    /** Without zip's and unzip's listings, whose order is the file system's. */
    QString report;
};

// Trees of files are texts here: "a/b=content; c=", sorted by path, with the files of a backup in
// braces as its content. In what is read, @ stands for the device's own path, TMP for the
// extraction directory's, NOW for a time and ARCH for the architecture. Relative paths count from a
// directory with blanks and non-ASCII letters in its name.
class Device
{
public:
    Device();

    QString path(const QString &relative) const;
    /** The configuration directory, as seen below the root directory "root". */
    QString config() const;

    void write(const QString &below, const QString &files) const;
    QString files(const QString &below) const;
    /** Packs files with the real zip, given one more option, and returns the archive's path. */
    QString pack(const QString &files, const QString &option = "-q") const;

    /** Runs the tool from a shell that has run `setup`; with $TRACE before it, if that is set. */
    Run run(const QStringList &arguments, const QString &setup = QString()) const;
    void start(QProcess &tool, const QStringList &arguments, const QString &setup) const;
    Run finish(QProcess &tool) const;

private:
    QString normalized(QString text) const;

    QTemporaryDir scratch;
};
