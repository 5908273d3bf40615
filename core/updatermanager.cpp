// The operation log and the configuration's location.

#include "core/updatermanager.h"

#include <QTextStream>

namespace {

// Qt 5.14 moved the manipulators into its namespace and deprecated the global ones.
#if QT_VERSION >= QT_VERSION_CHECK(5, 14, 0)
constexpr QTextStreamFunction endLine = Qt::endl;
constexpr QTextStreamFunction flushStream = Qt::flush;
#else
constexpr QTextStreamFunction endLine = ::endl;
constexpr QTextStreamFunction flushStream = ::flush;
#endif

} // namespace

UpdaterManager::UpdaterManager(const QString &rootPath, bool echo, QObject *parent)
    : QObject(parent),
      rootDirectory(rootPath),
      verbose(echo),
      echoStream(QtInfoMsg),
      logStream(&pendingLine)
{
    echoStream.noquote();
    logStream.noquote();
}

QDebug &UpdaterManager::info() const
{
    logLines.append(pendingLine);
    logStream << flushStream;
    if (verbose)
        echoStream << pendingLine << endLine;
    pendingLine = QString();
    return logStream;
}

QStringList UpdaterManager::getOutputLog() const { return logLines; }

bool UpdaterManager::logOutcome(const char *step, bool succeeded, const QString &failure) const
{
    info() << step
           << (succeeded ? QStringLiteral("successfull") : QStringLiteral("failed") + failure);
    return succeeded;
}

bool UpdaterManager::checkNoProblem(const char *what, const QString &problem) const
{
    if (!problem.isNull())
        info() << what << problem;
    return problem.isNull();
}

std::vector<UpdaterManager::ConfigurationDirectory> UpdaterManager::configurationDirectories()
{
    return {
        {QStringLiteral("backend"), QStringLiteral("Found archived backend config:")},
        {QStringLiteral("configurator"), QStringLiteral("Found archived configurator config:")},
        {QStringLiteral("db"), QStringLiteral("Found archived databases:")},
    };
}

QDir UpdaterManager::getConfigPath() const
{
    // Its name and root do not matter: the parent directory is the same for all.
    static FileManager manager(QStringLiteral("updater"), FileManager::DataRoot);
    const QString belowRoot = QLatin1Char('.') + manager.getParentDirectory().absolutePath();
    return QDir(QDir::cleanPath(rootDirectory.absoluteFilePath(belowRoot)));
}
