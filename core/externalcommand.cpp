#include "core/externalcommand.h"

#include <csignal>
#include <cstdlib>

namespace {

// Long enough for zip to remove its temporary file.
constexpr int graceMilliseconds = 5000;

class Command : public QProcess
{
public:
    explicit Command(bool ignoreSigpipe) : ignoresSigpipe(ignoreSigpipe) {}

protected:
    void setupChildProcess() override
    {
        // zip and unzip take options from these variables: they could leave files out of a backup.
        for (const char *variable : {"ZIP", "ZIPOPT", "UNZIP", "UNZIPOPT"})
            ::unsetenv(variable);
        if (ignoresSigpipe)
            std::signal(SIGPIPE, SIG_IGN);
    }

private:
    const bool ignoresSigpipe;
};

/** Ends a running command. SIGTERM may be blocked in it; zip cleans up at SIGABRT as well. */
void endProcess(QProcess &process)
{
    const auto id = static_cast<pid_t>(process.processId());
    if (id <= 0 || (::kill(id, SIGABRT) == 0 && process.waitForFinished(graceMilliseconds)))
        return;
    process.kill();
    process.waitForFinished();
}

CommandResult runAndWait(QProcess &process, const CommandSettings &settings)
{
    process.start(QIODevice::ReadOnly);
    const bool launched = process.state() != QProcess::NotRunning;
    process.waitForStarted(settings.startLimit);
    process.waitForFinished(settings.finishLimit);

    CommandResult result;
    result.error = process.error();
    result.started = launched && process.error() != QProcess::FailedToStart;
    if (!result.started) {
        result.problem =
            QStringLiteral("%1 failed to start: %2").arg(process.program(), process.errorString());
    } else if (process.state() != QProcess::NotRunning) {
        result.problem = QStringLiteral("%1 did not finish within %2 ms and was ended")
                             .arg(process.program(), QString::number(settings.finishLimit));
        endProcess(process);
    }
    result.exitCode = process.exitCode();
    result.standardOutput = process.readAllStandardOutput();
    result.standardError = process.readAllStandardError();
    return result;
}

} // namespace

CommandResult runCommand(const QString &program, const QStringList &arguments,
                         const CommandSettings &settings)
{
    Command process(settings.ignoresSigpipe);
    process.setProgram(program);
    process.setArguments(arguments);
    process.setWorkingDirectory(settings.workingDirectory);
    process.setStandardInputFile(QProcess::nullDevice());
    return runAndWait(process, settings);
}
