#include "ToolModes.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <thread>
#include <unistd.h>

namespace ostrelle::simulator
{

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace
{

constexpr int floodBlocks = 100'000; // of 1000 bytes
constexpr qsizetype nestingDepth = 100'000;
// Nothing that hangs on purpose outlives its test or demo by more than this.
constexpr std::chrono::milliseconds longestHang = 10min;

// False when nobody reads any more.
bool write(int fd, QByteArrayView text)
{
    while (!text.empty()) {
        const ssize_t count = ::write(fd, text.data(), static_cast<std::size_t>(text.size()));
        if (count < 0 && errno != EINTR) {
            return false;
        }
        text = text.sliced(qMax(count, ssize_t{0}));
    }
    return true;
}

int finish(const Outcome &outcome)
{
    write(STDERR_FILENO, outcome.errors);
    return write(STDOUT_FILENO, outcome.output) ? outcome.status : 1;
}

int print(const QByteArray &text)
{
    return finish({.output = text});
}

int hang(const Outcome & /*outcome*/)
{
    std::this_thread::sleep_for(longestHang);
    return 1;
}

int flood(const Outcome & /*outcome*/)
{
    const QByteArray block = QByteArray(999, 'x') + '\n';
    int sent = 0;
    while (sent < floodBlocks && write(STDOUT_FILENO, block)) {
        ++sent;
    }
    return sent == floodBlocks ? 0 : 1;
}

struct ToolMode {
    QLatin1StringView name;
    int (*finish)(const Outcome &);
};

constexpr std::array toolModes = {
    ToolMode{"hang"_L1, &hang},
    ToolMode{"stubborn"_L1, // hangs and does not care for requests to end
             [](const Outcome &outcome) {
                 std::signal(SIGTERM, SIG_IGN);
                 std::signal(SIGINT, SIG_IGN);
                 return hang(outcome);
             }},
    ToolMode{"flood"_L1, &flood},
    ToolMode{"die"_L1, // killed in the middle of its answer
             [](const Outcome &outcome) {
                 write(STDOUT_FILENO, outcome.output.first(outcome.output.size() / 2));
                 return std::raise(SIGKILL);
             }},
    ToolMode{"fail"_L1,
             [](const Outcome & /*outcome*/) {
                 return finish({.status = 1, .output = {}, .errors = "Error: gateway went away\n"});
             }},
    ToolMode{
        "garbage"_L1,
        [](const Outcome & /*outcome*/) { return print("Oops {\"sessions\": [, \"jobs\": it\n"); }},
    ToolMode{"other-shape"_L1, // JSON, but nothing that was asked for
             [](const Outcome & /*outcome*/) { return print("[]\n"); }},
    ToolMode{"not-utf8"_L1,
             [](const Outcome &outcome) { return print("\xff\xfe" + outcome.output + "\xc3("); }},
    ToolMode{"surrogates"_L1,
             [](const Outcome & /*outcome*/) {
                 return print(
                     R"({"sessions":[{"key":"agent:main:subagent:\ud83d","label":"\udc00"}],)"
                     R"("jobs":[{"id":"\udc00","name":"\ud83d"}]})");
             }},
    ToolMode{"deep"_L1,
             [](const Outcome & /*outcome*/) {
                 return print(QByteArray(nestingDepth, '[') + QByteArray(nestingDepth, ']'));
             }},
    ToolMode{"nothing"_L1, [](const Outcome & /*outcome*/) { return 0; }},
};

} // namespace

int finishInMode(const QString &mode, const Outcome &outcome)
{
    const auto known = std::ranges::find(toolModes, mode, &ToolMode::name);
    return known != toolModes.end() ? known->finish(outcome) : finish(outcome);
}

} // namespace ostrelle::simulator
