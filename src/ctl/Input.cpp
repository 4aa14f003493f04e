#include "ctl/Input.h"

#include "control/ControlProtocol.h"
#include "platform/Files.h"

#include <array>
#include <csignal>
#include <cstdio>
#include <functional>
#include <poll.h>
#include <sys/signalfd.h>
#include <termios.h>
#include <unistd.h>
#include <utility>

namespace ostrelle
{

using namespace Qt::StringLiterals;

namespace
{

enum class Until { EndOfLine, EndOfInput };

QString readUntil(Until end, const std::function<bool()> &mayRead = [] { return true; })
{
    QByteArray input;
    std::array<char, 4096> piece{};
    while (input.size() <= maxRequestBytes && mayRead()) {
        const ssize_t count = ::read(STDIN_FILENO, piece.data(), piece.size());
        if (count <= 0) {
            break;
        }
        input.append(piece.data(), count);
        if (const qsizetype line = input.indexOf('\n'); end == Until::EndOfLine && line >= 0) {
            input.truncate(line);
            break;
        }
    }
    return QString::fromUtf8(input).trimmed();
}

// While it lives the terminal does not show what is typed. It does again before a signal ends the
// program.
class HiddenTyping
{
public:
    HiddenTyping()
    {
        sigset_t ending;
        ::sigemptyset(&ending);
        for (const int signal : {SIGINT, SIGQUIT, SIGTERM, SIGHUP, SIGTSTP}) {
            ::sigaddset(&ending, signal);
        }
        ::sigprocmask(SIG_BLOCK, &ending, &m_signalsBefore);
        m_signals = Descriptor(::signalfd(-1, &ending, SFD_CLOEXEC));
        ::tcgetattr(STDIN_FILENO, &m_before);
        termios hidden = m_before;
        hidden.c_lflag &= ~static_cast<tcflag_t>(ECHO);
        ::tcsetattr(STDIN_FILENO, TCSAFLUSH, &hidden);
    }
    ~HiddenTyping()
    {
        ::tcsetattr(STDIN_FILENO, TCSAFLUSH, &m_before);
        ::sigprocmask(SIG_SETMASK, &m_signalsBefore, nullptr);
    }
    HiddenTyping(const HiddenTyping &) = delete;
    HiddenTyping &operator=(const HiddenTyping &) = delete;

    // Empty when a signal has come, whatever was typed before it.
    QString readLine() const
    {
        const QString line = readUntil(Until::EndOfLine, [this] { return waitForInput(forEver); });
        return waitForInput(notAtAll) ? line : QString();
    }

private:
    static constexpr int forEver = -1;
    static constexpr int notAtAll = 0;

    // False when a signal has come.
    bool waitForInput(int milliseconds) const
    {
        std::array<pollfd, 2> waiting{{{.fd = m_signals.get(), .events = POLLIN, .revents = 0},
                                       {.fd = STDIN_FILENO, .events = POLLIN, .revents = 0}}};
        return ::poll(waiting.data(), waiting.size(), milliseconds) >= 0 && waiting[0].revents == 0;
    }

    termios m_before{};
    sigset_t m_signalsBefore{};
    Descriptor m_signals;
};

void askFor(const QString &question)
{
    std::fputs(qPrintable(question), stderr);
}

} // namespace

QString readInput()
{
    return readUntil(Until::EndOfInput);
}

QString readSecret(const QString &question)
{
    if (::isatty(STDIN_FILENO) != 1) {
        return readUntil(Until::EndOfLine);
    }
    const HiddenTyping hidden;
    askFor(question);
    QString secret = hidden.readLine();
    askFor(u"\n"_s);
    return secret;
}

bool isAgreed(const QString &question)
{
    if (::isatty(STDIN_FILENO) != 1 || ::isatty(STDOUT_FILENO) != 1) {
        return true;
    }
    askFor(question);
    return readUntil(Until::EndOfLine).startsWith(u'y', Qt::CaseInsensitive);
}

} // namespace ostrelle
