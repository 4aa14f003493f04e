#include "ctl/Input.h"

#include "control/ControlProtocol.h"

#include <array>
#include <cerrno>
#include <cstdio>
#include <termios.h>
#include <unistd.h>
#include <utility>

namespace ostrelle
{

using namespace Qt::StringLiterals;

namespace
{

enum class Until { EndOfLine, EndOfInput };

QString readUntil(Until end)
{
    QByteArray input;
    std::array<char, 4096> piece{};
    while (input.size() <= maxRequestBytes) {
        const ssize_t count = ::read(STDIN_FILENO, piece.data(), piece.size());
        if (count == 0 || (count < 0 && errno != EINTR)) {
            break;
        }
        input.append(piece.data(), std::max<ssize_t>(count, 0));
        if (const qsizetype line = input.indexOf('\n'); end == Until::EndOfLine && line >= 0) {
            input.truncate(line);
            break;
        }
    }
    return QString::fromUtf8(input).trimmed();
}

// While it lives the terminal does not show what is typed.
class HiddenTyping
{
public:
    HiddenTyping()
    {
        ::tcgetattr(STDIN_FILENO, &m_before);
        termios hidden = m_before;
        hidden.c_lflag &= ~static_cast<tcflag_t>(ECHO);
        ::tcsetattr(STDIN_FILENO, TCSAFLUSH, &hidden);
    }
    ~HiddenTyping() { ::tcsetattr(STDIN_FILENO, TCSAFLUSH, &m_before); }
    HiddenTyping(const HiddenTyping &) = delete;
    HiddenTyping &operator=(const HiddenTyping &) = delete;

private:
    termios m_before{};
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
    askFor(question);
    const HiddenTyping hidden;
    QString secret = readUntil(Until::EndOfLine);
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
