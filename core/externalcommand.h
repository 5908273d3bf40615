// The one way to run an external program: it is started and waited for, and ended if it exceeds its
// time limit.

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
    /** How long its start alone is waited for; 0: only its end is waited for. */
    int startLimit = 10000;
    /** How long its end is waited for, after that. */
    int finishLimit = 600000;
    /** Makes the command ignore SIGPIPE, so that it can clean up after the tool has ended. */
    bool ignoresSigpipe = false;
};

/** How a command ended, and what it wrote. */
struct CommandResult
{
    bool started = false;
    /** Qt's reason for a failed start. */
    QProcess::ProcessError error = QProcess::UnknownError;
    /** For the log, when the command failed to start or ran out of time: what happened. */
    QString problem;
    /** The signal's number if a signal ended the command. Meaningless after a problem. */
    int exitCode = -1;
    QByteArray standardOutput;
    QByteArray standardError;

    /** True when the command ran to its own end with exit code 0, and in no other case. */
    bool succeeded() const { return problem.isNull() && exitCode == 0; }
};

/**
 * Runs `program`, found on the search path, with `arguments` and waits for its end. Its standard
 * input is the null device, so that a command that asks fails at once or continues. A command that
 * runs out of time gets SIGABRT and, if it has not ended a few seconds later, SIGKILL.
 */
CommandResult runCommand(const QString &program, const QStringList &arguments,
                         const CommandSettings &settings = CommandSettings());
