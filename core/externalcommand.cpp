#include "core/externalcommand.h"

#include "core/signals.h"

#include <array>
#include <csignal>

namespace {

// Long enough for zip to remove its temporary file.
constexpr int graceMilliseconds = 5000;

// A command that was started behind Signals::holdBack() has SIGTERM blocked, lest whoever stops
// all processes around the tool ends it too; zip tidies up at SIGABRT just as well.
constexpr std::array<int, 3> waysToEnd = {SIGTERM, SIGABRT, SIGKILL};

class Command : public QProcess
{
protected:
    void setupChildProcess() override { Signals::prepareChild(); }
};

CommandResult::End waitFor(QProcess &process, const CommandLimits &limits)
{
    if (process.state() == QProcess::NotRunning)
        return CommandResult::End::FailedToStart;
    const bool started = limits.start == 0 || process.waitForStarted(limits.start);
    if (started)
        process.waitForFinished(limits.finish);
    if (process.state() != QProcess::NotRunning)
        return CommandResult::End::OutOfTime;
    return process.error() == QProcess::FailedToStart ? CommandResult::End::FailedToStart
                                                      : CommandResult::End::Finished;
}

QString problemOf(const QProcess &process, CommandResult::End end, const CommandLimits &limits)
{
    if (end == CommandResult::End::FailedToStart)
        return QStringLiteral("%1 failed to start: %2")
            .arg(process.program(), process.errorString());
    if (process.state() == QProcess::Starting)
        return QStringLiteral("%1 did not start within %2 ms")
            .arg(process.program(),
                 QString::number(limits.start == 0 ? limits.finish : limits.start));
    return QStringLiteral("%1 did not finish within %2 ms and was ended")
        .arg(process.program(), QString::number(limits.finish));
}

void endProcess(QProcess &process)
{
    // Anything else would name a whole group of processes.
    if (process.processId() <= 0)
        return;
    for (const int number : waysToEnd) {
        ::kill(static_cast<pid_t>(process.processId()), number);
        if (process.waitForFinished(number == SIGKILL ? -1 : graceMilliseconds))
            return;
    }
}

} // namespace

CommandResult runCommand(const QString &program, const QStringList &arguments,
                         const CommandLimits &limits, const QString &workingDirectory)
{
    Command process;
    process.setWorkingDirectory(workingDirectory);
    process.setStandardInputFile(QProcess::nullDevice());
    process.start(program, arguments, QIODevice::ReadOnly);

    CommandResult result;
    result.end = waitFor(process, limits);
    result.error = process.error();
    if (result.end != CommandResult::End::Finished)
        result.problem = problemOf(process, result.end, limits);
    if (result.end == CommandResult::End::OutOfTime)
        endProcess(process);

    result.exitStatus = process.exitStatus();
    result.exitCode = process.exitCode();
    result.standardOutput = process.readAllStandardOutput();
    result.standardError = process.readAllStandardError();
    return result;
}
