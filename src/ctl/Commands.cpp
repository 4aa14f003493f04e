#include "ctl/Commands.h"

#include "ctl/Input.h"
#include "ctl/PairingCode.h"
#include "ctl/StatusText.h"
#include "ctl/Tables.h"

#include <QJsonArray>
#include <QJsonDocument>

#include <algorithm>
#include <poll.h>
#include <unistd.h>

namespace ostrelle
{

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace
{

constexpr std::chrono::milliseconds watchInterval = 1s;

// False as soon as nobody reads the output any more.
bool pauseWhileSomebodyReads()
{
    pollfd output{.fd = STDOUT_FILENO, .events = 0, .revents = 0};
    return ::poll(&output, 1, static_cast<int>(watchInterval.count())) <= 0;
}

// Complains where there is no answer; the exit status then, or nothing.
std::optional<int> complaint(const Asked &asked)
{
    if (!asked.notRunning.isEmpty()) {
        complain(asked.notRunning);
    }
    if (asked.answer.content) {
        return std::nullopt;
    }
    if (const QString why = asked.answer.content.error().text; why != asked.notRunning) {
        complain(why);
    }
    return asked.notRunning.isEmpty() ? SomethingIsWrong : NotRunning;
}

// Where the files have told, that is not all.
int statusOf(const Asked &asked, int otherwise = Well)
{
    return asked.notRunning.isEmpty() ? otherwise : NotRunning;
}

QJsonObject withRunning(const Asked &asked)
{
    QJsonObject data = *asked.answer.content;
    data.insert("running"_L1, asked.notRunning.isEmpty());
    return data;
}

void printJson(const QJsonObject &data, const Shown &shown,
               QJsonDocument::JsonFormat format = QJsonDocument::Indented)
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

Asked askOrRead(const QString &command)
{
    return ask({.command = command}, Otherwise::FilesTell);
}

// But for what changes all the time.
QJsonObject whatMatters(QJsonObject status)
{
    if (!status.contains("documents"_L1)) {
        return status;
    }
    QJsonArray documents = status["documents"_L1].toArray();
    for (QJsonValueRef document : documents) {
        QJsonObject object = document.toObject();
        object.remove("age"_L1);
        object.remove("ageSeconds"_L1);
        document = object;
    }
    status.insert("documents"_L1, documents);
    return status;
}

void printStatus(const Asked &asked, const Shown &shown, QJsonDocument::JsonFormat format)
{
    if (shown.asJson) {
        printJson(withRunning(asked), shown, format);
    } else {
        print(statusText(*asked.answer.content, shown.terminal), shown.terminal);
    }
}

} // namespace

int showStatus(const Shown &shown)
{
    const Asked asked = askOrRead(u"status"_s);
    if (const auto status = complaint(asked)) {
        return *status;
    }
    printStatus(asked, shown, QJsonDocument::Indented);
    return statusOf(asked);
}

int watchStatus(const Shown &shown)
{
    std::optional<QJsonObject> before;
    do {
        const Asked asked = ask({.command = u"status"_s});
        const bool isThere = asked.answer.content.has_value();
        QJsonObject now =
            whatMatters(isThere ? withRunning(asked) : QJsonObject{{"running"_L1, false}});
        if (before == now) {
            continue;
        }
        if (isThere) {
            printStatus(asked, shown, QJsonDocument::Compact);
        } else if (shown.asJson) {
            printJson(now, shown, QJsonDocument::Compact);
        } else {
            complain(asked.answer.content.error().text);
        }
        if (isThere && !shown.asJson) {
            print(u"\n"_s, shown.terminal);
        }
        before = std::move(now);
    } while (pauseWhileSomebodyReads());
    return EXIT_SUCCESS;
}

int showHealth(const Shown &shown)
{
    const Asked asked = ask({.command = u"status"_s});
    QStringList problems;
    if (!asked.answer.content) {
        problems.append(asked.answer.content.error().text);
    } else if (!asked.answer.content->value("problems"_L1).isArray()) {
        problems.append(u"Ostrelle does not say whether anything is wrong"_s);
    } else {
        problems = problemsIn(*asked.answer.content);
    }
    const QString summary = asked.answer.content
                                ? printable(asked.answer.content->value("summary"_L1).toString())
                                : QString();
    if (shown.asJson) {
        printJson({{"running"_L1, asked.notRunning.isEmpty()},
                   {"well"_L1, problems.isEmpty()},
                   {"summary"_L1, summary},
                   {"problems"_L1, QJsonArray::fromStringList(problems)}},
                  shown, QJsonDocument::Compact);
    } else {
        print((problems.isEmpty() ? summary : printable(problems.join(u"; "_s))) + u'\n',
              shown.terminal);
    }
    return statusOf(asked, problems.isEmpty() ? Well : SomethingIsWrong);
}

int showList(const QString &command, const Shown &shown,
             QString (*text)(const QJsonObject &data, const Terminal &terminal))
{
    const Asked asked = ask({.command = command}, Otherwise::FilesTell);
    if (const auto status = complaint(asked)) {
        return *status;
    }
    if (shown.asJson) {
        printJson(withRunning(asked), shown);
    } else {
        print(text(*asked.answer.content, shown.terminal), shown.terminal);
    }
    const bool isWrong = asked.answer.content->contains("problem"_L1);
    return statusOf(asked, isWrong ? SomethingIsWrong : Well);
}

int showSetup(const Shown &shown)
{
    bool isComplete = true;
    const Asked asked = ask({.command = u"setup"_s}, Otherwise::FilesTell);
    if (const auto status = complaint(asked)) {
        return *status;
    }
    const QJsonObject data = withRunning(asked);
    for (const QJsonValue check : data["checks"_L1].toArray()) {
        isComplete = isComplete && check["ok"_L1].toBool();
    }
    if (shown.asJson) {
        printJson(data, shown);
    } else {
        print(setupText(data, shown.terminal), shown.terminal);
    }
    return statusOf(asked, isComplete ? Well : SomethingIsWrong);
}

int showGateways(const Shown &shown)
{
    const Asked asked = ask({.command = u"gateways"_s});
    if (const auto status = complaint(asked)) {
        return *status;
    }
    if (shown.asJson) {
        printJson(withRunning(asked), shown);
    } else {
        print(gatewaysText(*asked.answer.content, shown.terminal), shown.terminal);
    }
    return Well;
}

int pairPhone(const Shown &shown, const Pairing &pairing)
{
    if (pairing.asLink && shown.terminal.isTerminal && !pairing.linkOnTerminal) {
        complain(u"the link carries a token: pipe it on, or say --show-token"_s);
        return WrongUsage;
    }
    const QString form = pairing.asLink ? u"link"_s : u"code"_s;
    const Asked asked = ask({.command = u"pair"_s, .arguments = {{"form"_L1, form}}});
    if (const auto status = complaint(asked)) {
        return *status;
    }
    const QJsonObject data = *asked.answer.content;
    if (pairing.asLink) {
        print(printable(data["link"_L1].toString()) + u'\n', shown.terminal);
        return Well;
    }
    QStringList rows;
    for (const QJsonValue row : data["rows"_L1].toArray()) {
        rows.append(row.toString());
    }
    const auto code =
        pairingCode(rows, shown.terminal, pairing.onLight ? Background::Light : Background::Dark);
    if (!code) {
        complain(u"the terminal is too narrow for the code"_s);
        return SomethingIsWrong;
    }
    print(*code, shown.terminal);
    return Well;
}

int chat(const QString &text)
{
    const QString question = text == "-"_L1 ? readInput() : text;
    if (question.trimmed().isEmpty()) {
        complain(u"there is nothing to ask"_s);
        return WrongUsage;
    }
    const Asked asked = ask({.command = u"chat"_s, .arguments = {{"text"_L1, question}}});
    if (const auto status = complaint(asked)) {
        return *status;
    }
    print(printableLines(asked.answer.content->value("reply"_L1).toString()) + u'\n',
          Terminal::ofOutput());
    return Well;
}

int setToken(const QString &gateway)
{
    const QString token = readSecret(u"Token: "_s);
    if (token.isEmpty()) {
        complain(u"there is no token on the standard input"_s);
        return WrongUsage;
    }
    QJsonObject arguments{{"token"_L1, token}};
    if (!gateway.isEmpty()) {
        arguments.insert("gateway"_L1, gateway);
    }
    return act({.command = u"token-set"_s, .arguments = arguments});
}

int act(const ControlRequest &request, const QString &done, QLatin1StringView member)
{
    const Asked asked = ask(request);
    if (const auto status = complaint(asked)) {
        return *status;
    }
    if (!done.isEmpty()) {
        print(done.arg(printable(asked.answer.content->value(member).toString())) + u'\n',
              Terminal::ofOutput());
    }
    return Well;
}

} // namespace ostrelle
