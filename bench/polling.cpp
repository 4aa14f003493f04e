// What the polls cost, in this process and in the tools that it runs. Usage:
//     bench-polling GATEWAY-URL TAILSCALE-TOOL
// in a home directory of its own, which it fills.

#include "Turns.h"
#include "dashboards/AgentsTopologyViewModel.h"
#include "dashboards/CronViewModel.h"
#include "gateway/GatewayViewModel.h"
#include "platform/FileWriting.h"
#include "platform/Paths.h"
#include "settings/OstrelleConfig.h"

#include <QCoreApplication>
#include <QDir>
#include <QEventLoop>

#include <algorithm>
#include <array>
#include <cstdio>
#include <sys/resource.h>

using namespace ostrelle;
using namespace std::chrono_literals;
using namespace Qt::StringLiterals;

namespace
{

constexpr int cycles = 100;
constexpr auto cycleInterval = 200ms; // long enough for a cycle to end before the next begins
constexpr int loads = 50;

double milliseconds(const timeval &time)
{
    return static_cast<double>(time.tv_sec) * 1e3 + static_cast<double>(time.tv_usec) / 1e3;
}

struct Cost {
    double cpu = 0; // milliseconds
    long switches = 0;

    static Cost of(int who)
    {
        rusage usage{};
        ::getrusage(who, &usage);
        return {.cpu = milliseconds(usage.ru_utime) + milliseconds(usage.ru_stime),
                .switches = usage.ru_nvcsw};
    }

    Cost operator-(const Cost &earlier) const
    {
        return {.cpu = cpu - earlier.cpu, .switches = switches - earlier.switches};
    }
};

void measureGateway(const QString &url, const QString &tool)
{
    OstrelleConfig config = OstrelleConfig::defaults();
    config.gateway.url = url;
    config.save();
    const auto measure = [&](const QStringList &tools, const char *title) {
        GatewayViewModel gateway(Settings(),
                                 {.tailscale = {.tools = tools}, .pollInterval = cycleInterval});
        wait(2 * cycleInterval); // the first cycle warms what is made once
        const Cost own = Cost::of(RUSAGE_SELF);
        const Cost children = Cost::of(RUSAGE_CHILDREN);
        wait(cycles * cycleInterval);
        const Cost ownShare = Cost::of(RUSAGE_SELF) - own;
        const Cost childShare = Cost::of(RUSAGE_CHILDREN) - children;
        std::printf("%s\n", title);
        std::printf("  own CPU           %6.2f ms\n", ownShare.cpu / cycles);
        std::printf("  children's CPU    %6.2f ms\n", childShare.cpu / cycles);
        std::printf("  own waits         %6.1f   (voluntary context switches)\n",
                    static_cast<double>(ownShare.switches) / cycles);
    };
    measure({tool}, "one gateway cycle, Tailscale installed");
    measure({u"/nowhere/tailscale"_s}, "one gateway cycle, Tailscale missing");
}

std::string agents(int count, int round)
{
    QStringList entries;
    for (int i = 0; i < count; ++i) {
        entries.append(
            uR"("agent-%1":{"status":"active","activity":"step %2 of the work","model":"m-1","progress":%3})"_s
                .arg(i)
                .arg(i + round)
                .arg((i + round) % 100));
    }
    return u"{\"agents\":{%1}}"_s.arg(entries.join(u',')).toStdString();
}

std::string jobs(int count, int round)
{
    QStringList entries;
    for (int i = 0; i < count; ++i) {
        entries.append(
            uR"({"id":"job-%1","name":"Job %1","schedule":"0 9 * * *","status":"ok","enabled":true,"lastRun":"2026-01-01","payload":"%2"})"_s
                .arg(i)
                .arg(i + round));
    }
    return uR"({"version":1,"updated":"today","jobs":[%1]})"_s.arg(entries.join(u','))
        .toStdString();
}

// Loads until nothing is under way; the models' own polls may join in.
template<typename Model>
void load(Model &model)
{
    model.load();
    QEventLoop loop;
    QObject::connect(&model, &DashboardModel::isLoadingChanged, &loop, &QEventLoop::quit);
    loop.exec();
}

template<typename Model>
void measureLoads(const char *title, QString (Model::*file)() const, int count,
                  std::string (*document)(int count, int round))
{
    const std::array documents = {document(count, 0), document(count, 1)};
    Model model{Settings()};
    const QString path = (model.*file)();
    if constexpr (requires { model.jobList(); }) {
        model.jobList(); // as the panel does
    }
    static_cast<void>(writeInPlace(path, documents[0]));
    load(model);
    const auto measure = [&](const char *kind, bool isChanging) {
        double cpu = 0;
        const Heartbeat heartbeat;
        for (int i = 1; i <= loads; ++i) {
            if (isChanging) {
                static_cast<void>(writeInPlace(path, documents[static_cast<std::size_t>(i % 2)]));
            }
            const Cost before = Cost::of(RUSAGE_SELF);
            load(model);
            cpu += (Cost::of(RUSAGE_SELF) - before).cpu;
        }
        std::printf("  %-9s %7.2f ms CPU a load; main thread at once: %5.2f ms CPU, %5.2f ms on "
                    "the clock\n",
                    kind, cpu / loads, heartbeat.longestCpu(), heartbeat.longestGap());
    };
    std::printf("%s, %d entries, %.0f KB\n", title, count,
                static_cast<double>(documents[0].size()) / 1024);
    measure("equal", false);
    measure("changed", true);
}

} // namespace

int main(int argc, char **argv)
{
    const QCoreApplication application(argc, argv);
    if (argc != 3) {
        std::fprintf(stderr, "usage: bench-polling GATEWAY-URL TAILSCALE-TOOL\n");
        return 2;
    }
    QDir(homeDirectory()).mkpath(u".ostrelle"_s);
    measureGateway(QString::fromLocal8Bit(argv[1]), QString::fromLocal8Bit(argv[2]));
    for (const int count : {500, 5000}) {
        measureLoads<AgentsTopologyViewModel>("agents", &AgentsTopologyViewModel::statusFilePath,
                                              count, &agents);
        measureLoads<CronViewModel>("cron jobs", &CronViewModel::cronFilePath, count, &jobs);
    }
    return 0;
}
