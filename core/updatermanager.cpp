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

bool UpdaterManager::logOutcome(const char *step, bool succeeded) const
{
    info() << step << (succeeded ? "successfull" : "failed");
    return succeeded;
}

bool UpdaterManager::logOnDisk(const char *what, const QString &error) const
{
    if (!error.isNull())
        info() << what << "could not be written to the disk:" << error;
    return error.isNull();
}

std::vector<UpdaterManager::ConfigurationGroup> UpdaterManager::configurationGroups()
{
    return {
        {QStringLiteral("backend"), QStringLiteral("Found archived backend config:")},
        {QStringLiteral("configurator"), QStringLiteral("Found archived configurator config:")},
        {QStringLiteral("db"), QStringLiteral("Found archived databases:")},
    };
}

QDir UpdaterManager::getConfigPath() const
{
    static FileManager manager(QStringLiteral("updater"), FileManager::DataRoot);
    const QString belowRoot = QLatin1Char('.') + manager.getParentDirectory().absolutePath();
    return QDir(QDir::cleanPath(rootDirectory.absoluteFilePath(belowRoot)));
}
