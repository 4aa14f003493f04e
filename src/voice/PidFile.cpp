#include "voice/PidFile.h"

#include "platform/FileWriting.h"
#include "platform/NeverDestroyed.h"
#include "platform/ProcessDescriptor.h"

#include <QFile>
#include <QFileInfo>

#include <atomic>
#include <condition_variable>
#include <csignal>
#include <cstdlib>
#include <ctime>
#include <memory>
#include <mutex>
#include <system_error>
#include <thread>
#include <unistd.h>
#include <vector>

namespace ostrelle
{

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;
using std::chrono::system_clock;

namespace
{

constexpr std::size_t maxPidFileBytes = 4096;

// Processes that were asked to end and have some time to do so. At exit nobody waits for that.
class PendingKills
{
public:
    static PendingKills &instance()
    {
        static NeverDestroyed<PendingKills> kills;
        static const int registered = std::atexit([] { instance().exit(); });
        static_cast<void>(registered);
        return kills.object();
    }

    void add(Descriptor process, std::chrono::milliseconds grace)
    {
        const std::scoped_lock lock(m_mutex);
        if (m_exiting) {
            sendSignal(process, SIGKILL);
            return;
        }
        std::erase_if(m_kills, [](const Kill &kill) { return kill.isDone->load(); });
        auto isDone = std::make_shared<std::atomic<bool>>(false);
        const auto shared = std::make_shared<const Descriptor>(std::move(process));
        auto killLater = [isDone, grace, shared](const std::stop_token &exit) {
            std::mutex mutex;
            std::unique_lock waiting(mutex);
            std::condition_variable_any().wait_for(waiting, exit, grace, [] { return false; });
            sendSignal(*shared, SIGKILL);
            *isDone = true;
        };
        try {
            m_kills.push_back({isDone, std::jthread(std::move(killLater))});
        } catch (const std::system_error &) {
            sendSignal(*shared, SIGKILL); // no thread can be had that would wait
        }
    }

    // Kills at once whoever still has time left.
    void finish()
    {
        std::vector<Kill> kills; // told to stop and waited for at the end of its scope
        const std::scoped_lock lock(m_mutex);
        kills.swap(m_kills);
    }

private:
    struct Kill {
        std::shared_ptr<std::atomic<bool>> isDone;
        std::jthread thread;
    };

    void exit()
    {
        {
            const std::scoped_lock lock(m_mutex);
            m_exiting = true;
        }
        finish();
    }

    std::mutex m_mutex;
    // protected by m_mutex
    std::vector<Kill> m_kills;
    bool m_exiting = false;
};

struct ProcessOrigin {
    pid_t parent;
    system_clock::time_point start; // by the system's clock as it is set now
};

// None once the process is gone.
std::optional<ProcessOrigin> originOf(pid_t pid)
{
    const auto line = readFile(u"/proc/%1/stat"_s.arg(pid), maxPidFileBytes);
    if (!line) {
        return std::nullopt;
    }
    // The second field is the program's name in parentheses, which may hold blanks and parentheses
    // of its own. The parent is the 4th field; the start is the 22nd, in clock ticks since boot.
    const auto fields = QByteArray::fromStdString(line->substr(line->rfind(')') + 2)).split(' ');
    constexpr qsizetype parentField = 4 - 3;
    constexpr qsizetype startField = 22 - 3;
    const std::chrono::duration<double> sinceBoot(fields.value(startField).toDouble() /
                                                  static_cast<double>(::sysconf(_SC_CLK_TCK)));
    timespec uptime{};
    ::clock_gettime(CLOCK_BOOTTIME, &uptime);
    const auto age =
        std::chrono::seconds(uptime.tv_sec) + std::chrono::nanoseconds(uptime.tv_nsec) - sinceBoot;
    return ProcessOrigin{.parent = fields.value(parentField).toInt(),
                         .start = system_clock::now() -
                                  std::chrono::duration_cast<system_clock::duration>(age)};
}

bool isStranger(pid_t pid, system_clock::time_point written)
{
    constexpr auto inaccuracy = 2s; // of clock ticks and file times, generously
    const auto origin = originOf(pid);
    return origin && origin->parent != ::getpid() && origin->start > written + inaccuracy;
}

system_clock::time_point timeOfWriting(const QString &path)
{
    return system_clock::time_point(
        std::chrono::milliseconds(QFileInfo(path).lastModified().toMSecsSinceEpoch()));
}

} // namespace

std::optional<pid_t> processNamedBy(std::string_view content)
{
    const QByteArrayView text(content);
    const int pid = QString::fromUtf8(text).trimmed().toInt(); // 0 where it is no number
    return text.isValidUtf8() && pid >= 1 ? std::optional<pid_t>(pid) : std::nullopt;
}

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
    static_cast<void>(replaceFile(path, QByteArray::number(pid)));
}

void killFromPidFile(const QString &path, std::chrono::milliseconds grace)
{
    const auto written = timeOfWriting(path);
    const auto content = readFile(path, maxPidFileBytes);
    const auto pid = content ? processNamedBy(*content) : std::nullopt;
    if (!pid) {
        return;
    }
    // Where no descriptor can be had nothing is sent: by the time of the last signal the number
    // alone may be a stranger's.
    if (auto process = processDescriptor(*pid); process && !isStranger(*pid, written)) {
        sendSignal(process, SIGTERM);
        PendingKills::instance().add(std::move(process), grace);
    }
    QFile::remove(path);
}

} // namespace ostrelle
