#include "voice/PidFile.h"

#include "platform/Files.h"

#include <QFile>
#include <QFileInfo>
#include <QStringDecoder>

#include <chrono>
#include <condition_variable>
#include <csignal>
#include <ctime>
#include <mutex>
#include <thread>
#include <unistd.h>
#include <vector>

// glibc 2.36 declares these functions without C linkage.
extern "C" {
#include <sys/pidfd.h>
}

namespace ostrelle
{

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;
using std::chrono::system_clock;

namespace
{

constexpr auto grace = 1s;
constexpr std::size_t maxPidFileBytes = 4096;

// Processes that were asked to end and have a second to do so. At exit nobody waits for that.
class PendingKills
{
public:
    static PendingKills &instance()
    {
        static PendingKills kills;
        return kills;
    }

    void add(Descriptor process)
    {
        const std::scoped_lock lock(m_mutex);
        m_kills.emplace_back([target = std::move(process)](const std::stop_token &exit) {
            std::mutex mutex;
            std::unique_lock waiting(mutex);
            std::condition_variable_any().wait_for(waiting, exit, grace, [] { return false; });
            ::pidfd_send_signal(target.get(), SIGKILL, nullptr, 0);
        });
    }

    void finish()
    {
        std::vector<std::jthread> kills; // told to stop and waited for at the end of its scope
        const std::scoped_lock lock(m_mutex);
        kills.swap(m_kills);
    }

private:
    std::mutex m_mutex;
    std::vector<std::jthread> m_kills; // protected by m_mutex
};

std::optional<pid_t> readPid(const QString &path)
{
    const auto content = readFile(path, maxPidFileBytes);
    if (!content) {
        return std::nullopt;
    }
    QStringDecoder decoder(QStringDecoder::Utf8);
    const QString text = decoder(QByteArrayView(*content));
    bool isNumber = false;
    const int pid = text.trimmed().toInt(&isNumber);
    return !decoder.hasError() && isNumber && pid >= 1 ? std::optional<pid_t>(pid) : std::nullopt;
}

// When a process started, by the system's clock as it is set now; none once it is gone.
std::optional<system_clock::time_point> startTime(pid_t pid)
{
    const auto line = readFile(u"/proc/%1/stat"_s.arg(pid), maxPidFileBytes);
    if (!line) {
        return std::nullopt;
    }
    // The second field is the program's name in parentheses, which may hold blanks and parentheses
    // of its own. The start is the 22nd, in clock ticks since boot.
    const auto fields = QByteArray::fromStdString(line->substr(line->rfind(')') + 1)).split(' ');
    constexpr qsizetype startField = 22 - 2;
    if (fields.size() <= startField) {
        return std::nullopt;
    }
    const std::chrono::duration<double> sinceBoot(fields[startField].toDouble() /
                                                  static_cast<double>(::sysconf(_SC_CLK_TCK)));
    timespec uptime{};
    ::clock_gettime(CLOCK_BOOTTIME, &uptime);
    const auto age =
        std::chrono::seconds(uptime.tv_sec) + std::chrono::nanoseconds(uptime.tv_nsec) - sinceBoot;
    return system_clock::now() - std::chrono::duration_cast<system_clock::duration>(age);
}

bool startedAfter(pid_t pid, system_clock::time_point written)
{
    constexpr auto inaccuracy = 2s; // of clock ticks and file times, generously
    const auto start = startTime(pid);
    return start && *start > written + inaccuracy;
}

system_clock::time_point timeOfWriting(const QString &path)
{
    return system_clock::time_point(
        std::chrono::milliseconds(QFileInfo(path).lastModified().toMSecsSinceEpoch()));
}

} // namespace

void prepareKills()
{
    PendingKills::instance();
}

void killRemaining()
{
    PendingKills::instance().finish();
}

void writePidFile(const QString &path, qint64 pid)
{
    const QString draft = path + u".new"_s;
    if (!writeInPlace(draft, QByteArray::number(pid)) ||
        ::rename(QFile::encodeName(draft).constData(), QFile::encodeName(path).constData()) != 0) {
        QFile::remove(draft);
    }
}

void killFromPidFile(const QString &path)
{
    const auto written = timeOfWriting(path);
    const auto pid = readPid(path);
    if (!pid) {
        return;
    }
    // The descriptor names this one process for good, whatever becomes of its number.
    if (Descriptor process(::pidfd_open(*pid, 0)); process && !startedAfter(*pid, written)) {
        ::pidfd_send_signal(process.get(), SIGTERM, nullptr, 0);
        PendingKills::instance().add(std::move(process));
    }
    QFile::remove(path);
}

} // namespace ostrelle
