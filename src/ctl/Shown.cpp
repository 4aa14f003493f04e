#include "ctl/Shown.h"

#include <poll.h>
#include <unistd.h>

namespace ostrelle
{

using namespace Qt::StringLiterals;

std::optional<int> complaint(const Asked &asked)
{
    if (!asked.notRunning.isEmpty()) {
        complain(asked.notRunning);
    }
    if (asked.answer) {
        return std::nullopt;
    }
    if (const QString why = asked.answer.error(); why != asked.notRunning) {
        complain(why);
    }
    return asked.notRunning.isEmpty() ? SomethingIsWrong : NotRunning;
}

int statusOf(const Asked &asked, int otherwise)
{
    return asked.notRunning.isEmpty() ? otherwise : NotRunning;
}

QJsonObject withRunning(const Asked &asked)
{
    QJsonObject data = *asked.answer;
    data.insert("running"_L1, asked.notRunning.isEmpty());
    return data;
}

void printJson(const QJsonObject &data, const Shown &shown, QJsonDocument::JsonFormat format)
{
    QString text = QString::fromUtf8(QJsonDocument(data).toJson(format));
    if (!text.endsWith(u'\n')) {
        text += u'\n';
    }
    // JSON is UTF-8 whatever the locale is.
    Terminal terminal = shown.terminal;
    terminal.isUtf8 = true;
    print(terminal.isTerminal ? printableLines(text) : text, terminal);
}

bool pauseWhileSomebodyReads()
{
    constexpr int milliseconds = 1000;
    pollfd output{.fd = STDOUT_FILENO, .events = 0, .revents = 0};
    return ::poll(&output, 1, milliseconds) <= 0;
}

} // namespace ostrelle
