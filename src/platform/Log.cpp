#include "platform/Log.h"

#include "platform/NeverDestroyed.h"

#include <QByteArray>
#include <QTime>

#include <algorithm>
#include <cerrno>
#include <condition_variable>
#include <csignal>
#include <deque>
#include <mutex>
#include <poll.h>
#include <thread>
#include <unistd.h>

namespace ostrelle
{

using namespace Qt::StringLiterals;

namespace
{

// Enough for a start with everything wrong; what comes after that tells the same again.
constexpr std::size_t maxWaitingLines = 512;

// For a bug report.
constexpr std::size_t keptLines = 200;

struct Line {
    int descriptor;
    QByteArray text;
};

// Not through the C library's streams: those have locks, which the end of the program takes too.
void print(const Line &line)
{
    QByteArrayView rest = line.text;
    while (!rest.isEmpty()) {
        const ssize_t count =
            ::write(line.descriptor, rest.data(), static_cast<std::size_t>(rest.size()));
        if (count >= 0) {
            rest = rest.sliced(count);
        } else if (errno == EAGAIN) { // somebody else has made it non-blocking
            pollfd writable{.fd = line.descriptor, .events = POLLOUT, .revents = 0};
            ::poll(&writable, 1, -1);
        } else if (errno != EINTR) {
            return;
        }
    }
}

class Printer
{
public:
    static Printer &instance()
    {
        static NeverDestroyed<Printer> printer;
        return printer.object();
    }

    void add(Line line)
    {
        const std::scoped_lock lock(m_mutex);
        keep(line.text);
        if (m_isQuiet) {
            return;
        }
        if (m_waiting.size() >= maxWaitingLines || !ensureThread()) {
            ++m_dropped;
            return;
        }
        m_waiting.push_back(std::move(line));
        m_changed.notify_all();
    }

    void silence()
    {
        const std::scoped_lock lock(m_mutex);
        m_isQuiet = true;
    }

    QByteArrayList recent()
    {
        const std::scoped_lock lock(m_mutex);
        return {m_kept.begin(), m_kept.end()};
    }

    bool finish(std::chrono::milliseconds within)
    {
        std::unique_lock lock(m_mutex);
        return m_changed.wait_for(lock, within, [this] { return m_waiting.empty() && !m_prints; });
    }

private:
    void keep(const QByteArray &text)
    {
        constexpr qsizetype longest = 1000; // what a tool has said may be long
        m_kept.push_back(QTime::currentTime().toString(u"HH:mm:ss "_s).toLatin1() +
                         text.trimmed().left(longest));
        if (m_kept.size() > keptLines) {
            m_kept.pop_front();
        }
    }

    bool ensureThread()
    {
        if (m_hasThread) {
            return true;
        }
        // Signals are for the threads that expect them.
        sigset_t all;
        sigset_t before;
        ::sigfillset(&all);
        ::pthread_sigmask(SIG_SETMASK, &all, &before);
        try {
            std::thread([this] { run(); }).detach();
            m_hasThread = true;
        } catch (const std::system_error &) {
            m_hasThread = false; // the next line tries again
        }
        ::pthread_sigmask(SIG_SETMASK, &before, nullptr);
        return m_hasThread;
    }

    [[noreturn]] void run()
    {
        std::unique_lock lock(m_mutex);
        while (true) {
            m_changed.wait(lock, [this] { return !m_waiting.empty(); });
            Line line = std::move(m_waiting.front());
            m_waiting.pop_front();
            m_prints = true;
            lock.unlock();
            print(line);
            lock.lock();
            m_prints = false;
            tellDropped();
            m_changed.notify_all();
        }
    }

    // Once there is room again.
    void tellDropped()
    {
        if (m_dropped > 0 && m_waiting.size() < maxWaitingLines) {
            const QByteArray count = QByteArray::number(m_dropped);
            m_waiting.push_back(
                {STDOUT_FILENO, "[Ostrelle] " + count + " lines were dropped: nobody took them\n"});
            m_dropped = 0;
        }
    }

    std::mutex m_mutex;
    std::condition_variable m_changed;
    // protected by m_mutex
    std::deque<Line> m_waiting;
    std::deque<QByteArray> m_kept;
    bool m_prints = false;
    bool m_isQuiet = false;
    bool m_hasThread = false;
    qint64 m_dropped = 0;
};

// What a library says with every save, say, is told once, and again after much else.
class ToldMessages
{
public:
    static bool isNew(const QString &message)
    {
        static NeverDestroyed<ToldMessages> told;
        return told.object().add(message);
    }

private:
    bool add(const QString &message)
    {
        constexpr std::size_t most = 64;
        const std::scoped_lock lock(m_mutex);
        if (std::ranges::find(m_messages, message) != m_messages.end()) {
            return false;
        }
        m_messages.push_back(message);
        if (m_messages.size() > most) {
            m_messages.pop_front();
        }
        return true;
    }

    std::mutex m_mutex;
    std::deque<QString> m_messages; // protected by m_mutex
};

} // namespace

void logLine(const QString &line)
{
    Printer::instance().add({STDOUT_FILENO, line.toUtf8() + '\n'});
}

void logMessagesOfLibraries()
{
    qInstallMessageHandler([](QtMsgType type, const QMessageLogContext &context,
                              const QString &message) {
        // Debug messages are only there when somebody has asked for them, and then for each.
        if (type == QtDebugMsg || ToldMessages::isNew(message)) {
            Printer::instance().add(
                {STDERR_FILENO, qFormatLogMessage(type, context, message).toLocal8Bit() + '\n'});
        }
        if (type == QtFatalMsg) {
            static_cast<void>(finishLog(std::chrono::milliseconds(100))); // it ends with this
        }
    });
}

void onlyRememberLog()
{
    Printer::instance().silence();
}

QByteArrayList recentLogLines()
{
    return Printer::instance().recent();
}

bool finishLog(std::chrono::milliseconds within)
{
    return Printer::instance().finish(within);
}

} // namespace ostrelle
