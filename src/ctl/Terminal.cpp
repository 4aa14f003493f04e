#include "ctl/Terminal.h"

#include "ctl/Asking.h"

#include <QHash>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <langinfo.h>
#include <sys/ioctl.h>
#include <unistd.h>
#include <wchar.h>

namespace ostrelle
{

using namespace Qt::StringLiterals;

namespace
{

constexpr int usualColumns = 80;
constexpr int usualLines = 24;

// Some terminals do not tell.
int orElse(int told, int otherwise)
{
    return told > 0 ? told : otherwise;
}

// The number of a colour in the terminal's own palette, which suits its background.
QString sgr(const QString &color)
{
    static const QHash<QString, QString> codes = {
        {u"green"_s, u"32"_s}, {u"red"_s, u"31"_s},  {u"yellow"_s, u"33"_s},
        {u"blue"_s, u"34"_s},  {u"teal"_s, u"36"_s}, {u"grey"_s, u"2"_s},
    };
    return codes.value(color);
}

bool isHarmless(char32_t character)
{
    const bool turnsDirection = (character >= 0x202A && character <= 0x202E) ||
                                (character >= 0x2066 && character <= 0x2069) ||
                                character == 0x200E || character == 0x200F;
    return !turnsDirection && QChar::category(character) != QChar::Other_Control;
}

QString cleaned(const QString &text, QLatin1StringView kept)
{
    QString clean;
    clean.reserve(text.size());
    for (const char32_t character : text.toUcs4()) {
        const QString one = QString::fromUcs4(&character, 1);
        clean += isHarmless(character) || kept.contains(one) ? one : u" "_s;
    }
    return clean;
}

int widthOf(char32_t character)
{
    return std::max(::wcwidth(static_cast<wchar_t>(character)), 0);
}

// What stands for a character where there are only those of ASCII.
QString inAscii(const QString &text)
{
    static const QHash<char32_t, QString> likes = {
        {U'—', u"-"_s}, {U'–', u"-"_s}, {U'…', u"..."_s}, {U'“', u"\""_s}, {U'”', u"\""_s},
        {U'‘', u"'"_s}, {U'’', u"'"_s}, {U'·', u"."_s},   {U'→', u"->"_s}, {U'✓', u"ok"_s},
    };
    QString ascii;
    for (const char32_t character : text.toUcs4()) {
        ascii += character < 0x80 ? QString(QChar(static_cast<ushort>(character)))
                                  : likes.value(character, u"?"_s);
    }
    return ascii;
}

} // namespace

bool writeAll(int descriptor, QByteArrayView rest)
{
    while (!rest.isEmpty()) {
        const ssize_t count =
            ::write(descriptor, rest.data(), static_cast<std::size_t>(rest.size()));
        if (count < 0 && errno != EINTR) {
            return false;
        }
        rest = rest.sliced(std::max<ssize_t>(count, 0));
    }
    return true;
}

Terminal Terminal::ofOutput()
{
    const bool isTerminal = ::isatty(STDOUT_FILENO) == 1;
    const char *const noColor = std::getenv("NO_COLOR");
    const bool isDumb = qgetenv("TERM") == "dumb";
    winsize size{};
    const bool hasSize = isTerminal && ::ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) == 0;
    return {.isTerminal = isTerminal,
            .hasColors = isTerminal && !isDumb && (noColor == nullptr || *noColor == '\0'),
            .isUtf8 = std::strcmp(::nl_langinfo(CODESET), "UTF-8") == 0,
            .columns = hasSize ? std::optional(orElse(size.ws_col, usualColumns)) : std::nullopt,
            .lines = hasSize ? std::optional(orElse(size.ws_row, usualLines)) : std::nullopt};
}

QString Terminal::colored(const QString &text, const QString &color) const
{
    const QString code = sgr(color);
    return hasColors && !code.isEmpty() ? u"\x1b["_s + code + u'm' + text + u"\x1b[0m"_s : text;
}

QString Terminal::bold(const QString &text) const
{
    return hasColors ? u"\x1b[1m"_s + text + u"\x1b[0m"_s : text;
}

QString Terminal::spelled(const QString &text) const
{
    return isUtf8 ? text : inAscii(text);
}

QString printable(const QString &text)
{
    return cleaned(text, {});
}

QString printableLines(const QString &text)
{
    return cleaned(text, "\n\t"_L1);
}

int widthOf(const QString &text)
{
    int width = 0;
    for (const char32_t character : text.toUcs4()) {
        width += widthOf(character);
    }
    return width;
}

QString elided(const QString &text, int columns, const Terminal &terminal)
{
    if (widthOf(text) <= columns) {
        return text;
    }
    QString begin;
    int width = 1; // of the mark
    for (const char32_t character : text.toUcs4()) {
        width += widthOf(character);
        if (width > columns) {
            break;
        }
        begin += QString::fromUcs4(&character, 1);
    }
    return begin + (terminal.isUtf8 ? u"…"_s : u"~"_s);
}

void print(const QString &text, const Terminal &terminal)
{
    if (writeAll(STDOUT_FILENO, terminal.spelled(text).toUtf8())) {
        return;
    }
    complain(QString::fromLocal8Bit(std::strerror(errno)));
    std::_Exit(SomethingIsWrong);
}

void complain(const QString &text)
{
    const QString line = u"ostrellectl: "_s + printable(text) + u'\n';
    writeAll(STDERR_FILENO, Terminal::ofOutput().spelled(line).toUtf8());
}

} // namespace ostrelle
