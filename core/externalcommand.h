// The one way to run an external program: started, waited for and gone before the next step.

#pragma once

#include <QByteArray>
#include <QProcess>
#include <QString>
#include <QStringList>

/** How long a command is waited for, in milliseconds. */
struct CommandLimits
{
    /** For its start alone; 0 leaves that to the check right after the start. */
    int start;
    /** For its end. */
    int finish;
};

/** What became of a command, and what it wrote. */
struct CommandResult
{
    enum class End {
        Finished,
        FailedToStart,
        OutOfTime,
    };

    End end = End::FailedToStart;
    QProcess::ProcessError error = QProcess::UnknownError;
    QProcess::ExitStatus exitStatus = QProcess::CrashExit;
    /** The signal's number when a signal ended the command; meaningless unless it finished. */
    int exitCode = -1;
    QByteArray standardOutput;
    QByteArray standardError;
    /** For the log, when the command did not finish: what happened, naming program and limit. */
    QString problem;

    /** True when the command ran to its own end with exit code 0, and in no other case. */
    bool succeeded() const
    {
        return end == End::Finished && exitStatus == QProcess::NormalExit && exitCode == 0;
    }
};

/**
 * Runs `program`, found on the search path, with `arguments` in `workingDirectory` (empty: the
 * tool's own) and waits for its end. Its standard input is at its end from the start, so whatever
 * it asks, it goes on or fails at once. A command that runs out of time is asked to end, killed if
 * it does not within a few seconds, and has ended when this returns.
 */
CommandResult runCommand(const QString &program, const QStringList &arguments,
                         const CommandLimits &limits, const QString &workingDirectory = QString());
