// The product's systemd services: stopping, querying and restarting them with systemctl.

#include "core/externalcommand.h"
#include "core/updatermanager.h"

namespace {

CommandResult runSystemctl(const QStringList &arguments)
{
    return runCommand(QStringLiteral("systemctl"), arguments);
}

} // namespace

std::vector<QString> UpdaterManager::productServices()
{
    return {QStringLiteral("OstrelBackend"), QStringLiteral("OstrelFrontend"),
            QStringLiteral("OstrelConfigurator")};
}

void UpdaterManager::stopServices(const std::vector<QString> &services)
{
    info() << "Stopping services";
    for (const QString &service : services) {
        const bool stopped = runSystemctl({QStringLiteral("stop"), service}).succeeded();
        info() << service << (stopped ? "stopped successfully" : "...failed to stop");
    }
}

bool UpdaterManager::isServiceEnabled(const QString &service) const
{
    const CommandResult result = runSystemctl({QStringLiteral("is-enabled"), service});
    return QString::fromUtf8(result.standardOutput).contains(QLatin1String("enabled"));
}

void UpdaterManager::restartServices(const std::vector<QString> &services)
{
    info() << "Restarting enabled services";
    for (const QString &service : services) {
        if (!isServiceEnabled(service)) {
            info() << service << "disabled, skipping...";
            continue;
        }
        const bool restarted = runSystemctl({QStringLiteral("restart"), service}).succeeded();
        info() << service << (restarted ? "restarted successfuly" : "...failed to restart");
    }
}
