#include "tracker/AgentSyncService.h"

#include "core/ExpandPath.h"
#include "platform/FileWriting.h"
#include "tracker/SessionList.h"

#include <QDateTime>

namespace ostrelle
{

using namespace Qt::StringLiterals;

namespace
{

void syncAgents(const GatewayTool &tool, const QString &statusFile, const std::stop_token &stop)
{
    const QString cli = tool.findDuskrell();
    if (cli.isEmpty()) {
        return;
    }
    const QString output = tool.runCommand(
        cli, {u"sessions"_s, u"--all-agents"_s, u"--active"_s, u"2"_s, u"--json"_s}, stop);
    const auto document =
        agentStatusFromSessions(output.toStdString(), QDateTime::currentDateTime());
    if (document) {
        static_cast<void>(writeInPlace(expandPath(statusFile), *document));
    }
}

} // namespace

AgentSyncService::AgentSyncService(const OstrelleConfig &config, const GatewayTool &tool,
                                   QObject *parent)
    : SyncService(
          [tool, config](const std::stop_token &stop) {
              OstrelleConfig::ensureTrackerFiles(config); // also later: a home may go and come back
              syncAgents(tool, config.paths.statusFile, stop);
          },
          parent)
{
}

} // namespace ostrelle

#include "moc_AgentSyncService.cpp"
