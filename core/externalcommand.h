// The one way to run an external program: it is started, waited for, and has ended before the next
// step begins.

#pragma once

#include <QByteArray>
#include <QProcess>
#include <QString>
#include <QStringList>

/** How a command runs. The limits are in milliseconds; their defaults suit unzip and systemctl. */
struct CommandSettings
{
    /** Empty: the tool's own. */
    QString workingDirectory;
    /** How long its start alone is waited for; 0: no wait of its own. */
    int startLimit = 10000;
    /** How long its end is waited for, after that. */
    int finishLimit = 600000;
    /** For a command that has to outlive the tool: writing to it then fails instead of killing. */
    bool ignoresSigpipe = false;
};

/** How a command ended, and what it wrote. */
struct CommandResult
{
    enum class End {
        Exited,
        Crashed,
        FailedToStart,
        OutOfTime,
    };

    End end = End::FailedToStart;
    /** Qt's reason for a failed start. */
    QProcess::ProcessError error = QProcess::UnknownError;
    /** The signal's number for a command that crashed; meaningless for one that did not end. */
    int exitCode = -1;
    QByteArray standardOutput;
    QByteArray standardError;
    /** For the log, when the command failed to start or ran out of time: what happened. */
    QString problem;

    /** True when the command ran to its own end with exit code 0, and in no other case. */
    bool succeeded() const { return end == End::Exited && exitCode == 0; }
};

/**
 * Runs `program`, found on the search path, with `arguments` and waits for its end. Its standard
 * input is the null device, so that a command that asks fails at once or continues. A command that
 * runs out of time is aborted, after a few seconds killed, and has ended when this returns.
 */
CommandResult runCommand(const QString &program, const QStringList &arguments,
                         const CommandSettings &settings = CommandSettings());
