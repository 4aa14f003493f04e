#include "tracker/CronSyncService.h"

#include "platform/ChildProcess.h"
#include "platform/Files.h"
#include "platform/Log.h"
#include "tracker/JobList.h"
#include "tracker/TrackerDocument.h"

#include <QDateTime>

namespace ostrelle
{

using namespace Qt::StringLiterals;

namespace
{

QString listJobs(const GatewayTool &tool, const QString &cli, const QStringList &options = {})
{
    return tool.runCommand(cli, QStringList{u"cron"_s, u"list"_s, u"--json"_s} + options);
}

void write(const QString &file, const QByteArray &content)
{
    static_cast<void>(writeInPlace(file, content));
}

// Stores what the tool says when we do not understand it.
void syncFromCLI(const GatewayTool &tool, const QString &cronFile)
{
    const QString cli = tool.findDuskrell();
    if (cli.isEmpty()) {
        return;
    }
    const QByteArray raw = listJobs(tool, cli).toUtf8();
    if (!programEnds()) { // else the tool was cut short
        write(cronFile, raw);
    }
}

void processOutput(const GatewayTool &tool, const QString &cronFile, const QString &output)
{
    const auto document = cronTrackerFromJobs(output.toStdString(), QDateTime::currentDateTime());
    if (document) {
        write(cronFile, *document);
    } else {
        syncFromCLI(tool, cronFile);
    }
}

void syncCronJobs(const GatewayTool &tool, const QString &cronFile)
{
    const QString cli = tool.findDuskrell();
    if (cli.isEmpty()) {
        logLine(u"[CronSync] duskrell CLI not found"_s);
        return;
    }
    QString output = listJobs(tool, cli, {u"--all"_s});
    if (output.isEmpty()) {
        output = listJobs(tool, cli); // an older tool knows no --all
    }
    if (!output.isEmpty()) {
        processOutput(tool, cronFile, output);
    }
}

} // namespace

CronSyncService::CronSyncService(const OstrelleConfig &config, const GatewayTool &tool,
                                 QObject *parent)
    : SyncService([tool, file = cronFilePathOf(config)] { syncCronJobs(tool, file); }, parent)
{
}

} // namespace ostrelle

#include "moc_CronSyncService.cpp"
