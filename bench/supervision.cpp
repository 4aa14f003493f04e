// What the voice agent's supervisor and the installer's log cost. Usage: bench-supervision, in a
// home directory of its own, which it fills.

#include "Turns.h"
#include "core/BackgroundWork.h"
#include "platform/FileWriting.h"
#include "platform/Paths.h"
#include "settings/Settings.h"
#include "setup/SetupManager.h"
#include "voice/ServiceManager.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>

#include <cstdio>
#include <deque>
#include <sys/stat.h>

using namespace ostrelle;
using namespace std::chrono_literals;
using namespace Qt::StringLiterals;

namespace
{

constexpr int crashRounds = 1000;
constexpr int roundsBeforeCounting = 50;  // until what is made once is made
constexpr auto untilGuardsHaveEnded = 3s; // each looks after what its agent has left behind
constexpr int stops = 20;
constexpr int installerMegabytes = 100;

// Time that moves from one restart to the next at once.
struct RestartTime {
    SupervisorTime::Clock::time_point now;
    std::deque<std::function<void()>> scheduled;

    SupervisorTime asTime()
    {
        return {
            .now = [this] { return now; },
            .later =
                [this](std::chrono::milliseconds /*delay*/, QObject * /*owner*/,
                       std::function<void()> action) { scheduled.push_back(std::move(action)); }};
    }
};

void waitUntil(const std::function<bool()> &condition)
{
    while (!condition()) {
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    }
}

QString pathOf(const QString &name)
{
    return homeDirectory() + u'/' + name;
}

void writeScript(const QString &path, std::string_view body)
{
    static_cast<void>(writeInPlace(path, "#!/bin/sh\n" + std::string(body) + "\n", 0755));
}

struct Held {
    double megabytes = 0;
    qsizetype descriptors = 0;
    qsizetype children = 0;

    static Held now()
    {
        Held held;
        QFile rollup(u"/proc/self/smaps_rollup"_s);
        static_cast<void>(rollup.open(QFile::ReadOnly));
        for (const QByteArray &line : rollup.readAll().split('\n')) {
            if (line.startsWith("Private_Dirty:")) {
                held.megabytes = line.mid(14).trimmed().split(' ').first().toDouble() / 1024;
            }
        }
        held.descriptors = QDir(u"/proc/self/fd"_s).entryList(QDir::System | QDir::Files).size();
        QFile children(u"/proc/self/task/%1/children"_s.arg(QCoreApplication::applicationPid()));
        static_cast<void>(children.open(QFile::ReadOnly));
        // A blank follows each of them.
        held.children = children.readAll().count(' ');
        return held;
    }
};

void print(const char *when, const Held &held)
{
    std::printf("  %-18s %6.2f MB private, %lld descriptors, %lld children\n", when, held.megabytes,
                held.descriptors, held.children);
}

SupervisorSurroundings surroundings(const SupervisorTime &time)
{
    return {.time = time, .resources = std::nullopt, .logFile = pathOf(u"agent.log"_s)};
}

void measureCrashes(const OstrelleConfig &config)
{
    writeScript(pathOf(u".ostrelle/venv/bin/python"_s), "exit 1");
    RestartTime time;
    ServiceManager manager(config, Settings().preferences, surroundings(time.asTime()));
    std::printf("%d crashes and restarts\n", crashRounds);
    manager.startVoice();
    for (int round = 1; round <= crashRounds; ++round) {
        waitUntil([&] { return !time.scheduled.empty(); });
        if (round == roundsBeforeCounting) {
            wait(untilGuardsHaveEnded);
            print("after 50 rounds", Held::now());
        }
        time.now += 1h; // the series begins anew, so that no crash is the last
        const auto restart = std::move(time.scheduled.front());
        time.scheduled.pop_front();
        restart();
    }
    waitUntil([&] { return !time.scheduled.empty(); });
    wait(untilGuardsHaveEnded);
    print("after all", Held::now());
}

void measureStops(const OstrelleConfig &config)
{
    writeScript(pathOf(u".ostrelle/venv/bin/python"_s), "exec sleep 1000");
    ServiceManager manager(config, Settings().preferences, surroundings(SupervisorTime::real()));
    double longest = 0;
    for (int i = 0; i < stops; ++i) {
        manager.startVoice();
        waitUntil([&] { return manager.voiceRunning(); });
        QElapsedTimer clock;
        clock.start();
        manager.stopVoice();
        waitUntil([&] { return manager.voiceProcessId() == 0; });
        longest = std::max(longest, static_cast<double>(clock.nsecsElapsed()) / 1e6);
    }
    std::printf("stop of an agent that ends when asked, longest of %d: %.1f ms\n", stops, longest);
}

void measureInstaller()
{
    // Lines of 80 characters, with a short one now and then.
    static_cast<void>(
        writeInPlace(pathOf(u"resources/install-duskrell.sh"_s),
                     "yes 'npm http fetch GET 200 https://registry.invalid/some-package 12ms "
                     "(cache hit) abcdefg' "
                     "| head -c " +
                         std::to_string(installerMegabytes) + "000000\n"));
    writeScript(pathOf(u".ostrelle/venv/bin/python"_s), "exit 0");
    SetupManager manager(Settings(), {.resources = pathOf(u"resources"_s)});
    manager.setSudoPassword(u"x"_s);
    manager.runChecks(); // with the voice parts found, the installation ends with the installer
    waitUntil([&] { return manager.hasModels(); });
    wait(500ms);
    print("before", Held::now());
    QElapsedTimer clock;
    clock.start();
    const Heartbeat heartbeat;
    manager.installDuskrell();
    waitUntil([&] { return !manager.isInstallingDuskrell(); });
    std::printf(
        "%d MB of installer output, %lld messages, in %.1f s; main thread at once: %.2f ms CPU, "
        "%.2f ms on the clock\n",
        installerMegabytes, static_cast<long long>(manager.statusMessages()->messages().size()),
        static_cast<double>(clock.elapsed()) / 1000, heartbeat.longestCpu(),
        heartbeat.longestGap());
    print("with the log", Held::now());
}

} // namespace

int main(int argc, char **argv)
{
    const QCoreApplication application(argc, argv);
    QDir(homeDirectory()).mkpath(u".ostrelle/venv/bin"_s);
    QDir(homeDirectory()).mkpath(u".ostrelle/data/models"_s);
    QDir(homeDirectory()).mkpath(u"resources"_s);
    for (const QString &file :
         {u".ostrelle/voice_agent.py"_s, u".ostrelle/data/models/kokoro-v1.0.onnx"_s}) {
        static_cast<void>(writeInPlace(pathOf(file), std::string_view()));
    }
    OstrelleConfig config = OstrelleConfig::defaults();
    config.voice.enabled = true;
    config.save();
    measureCrashes(config);
    measureStops(config);
    measureInstaller();
    finishBackgroundWork(10s);
    return 0;
}
