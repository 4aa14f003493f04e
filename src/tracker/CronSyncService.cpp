#include "tracker/CronSyncService.h"

#include "platform/ChildProcess.h"
#include "platform/FileWriting.h"
#include "platform/Log.h"
#include "tracker/JobList.h"
#include "tracker/TrackerDocument.h"

#include <QDateTime>

namespace ostrelle
{

using namespace Qt::StringLiterals;

namespace
{

// A pass with the tool that it asks.
struct CronPass {
    GatewayTool tool;
    std::stop_token stop;

    QString listJobs(const QString &cli, const QStringList &options = {}) const
    {
        return tool.runCommand(cli, QStringList{u"cron"_s, u"list"_s, u"--json"_s} + options, stop);
    }
};

void write(const QString &file, const QByteArray &content)
{
    static_cast<void>(writeInPlace(file, content));
}

// Stores what the tool says when we do not understand it.
void syncFromCLI(const CronPass &pass, const QString &cronFile)
{
    const QString cli = pass.tool.findDuskrell();
    if (cli.isEmpty()) {
        return;
    }
    const QByteArray raw = pass.listJobs(cli).toUtf8();
    if (!programEnds() && !pass.stop.stop_requested()) { // else the tool was cut short
        write(cronFile, raw);
    }
}

void processOutput(const CronPass &pass, const QString &cronFile, const QString &output)
{
    const auto document = cronTrackerFromJobs(output.toStdString(), QDateTime::currentDateTime());
    if (document) {
        write(cronFile, *document);
    } else {
        syncFromCLI(pass, cronFile);
    }
}

void syncCronJobs(const CronPass &pass, const QString &cronFile)
{
    const QString cli = pass.tool.findDuskrell();
    if (cli.isEmpty()) {
        logLine(u"[CronSync] duskrell CLI not found"_s);
        return;
    }
    QString output = pass.listJobs(cli, {u"--all"_s});
    if (output.isEmpty()) {
        output = pass.listJobs(cli); // an older tool knows no --all
    }
    if (!output.isEmpty()) {
        processOutput(pass, cronFile, output);
    }
}

} // namespace

CronSyncService::CronSyncService(const OstrelleConfig &config, const GatewayTool &tool,
                                 QObject *parent)
    : SyncService([tool, file = cronFilePathOf(config)](
                      const std::stop_token &stop) { syncCronJobs({tool, stop}, file); },
                  parent)
{
}

} // namespace ostrelle

#include "moc_CronSyncService.cpp"
