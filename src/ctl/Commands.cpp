#include "ctl/Commands.h"

#include "ctl/Input.h"
#include "ctl/PairingCode.h"
#include "ctl/StatusText.h"
#include "ctl/Tables.h"

#include <QJsonArray>

#include <climits>

namespace ostrelle
{

using namespace Qt::StringLiterals;

namespace
{

// But for what changes all the time.
QJsonObject whatMatters(QJsonObject status)
{
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

// What the standard input brings, as the request's member of that name.
int handOver(const QString &secret, ControlRequest request)
{
    const QString typed = readSecret(secret.left(1).toUpper() + secret.mid(1) + u": "_s);
    if (typed.isEmpty()) {
        complain(u"there is no "_s + secret + u" on the standard input"_s);
        return WrongUsage;
    }
    request.arguments.insert(secret, typed);
    return act(request);
}

void printStatus(const Asked &asked, const Shown &shown, QJsonDocument::JsonFormat format)
{
    if (shown.asJson) {
        printJson(withRunning(asked), shown, format);
    } else {
        print(statusText(*asked.answer, shown.terminal), shown.terminal);
    }
}

} // namespace

int showStatus(const Shown &shown)
{
    const Asked asked = ask({.command = u"status"_s}, Otherwise::FilesTell);
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
        const bool isThere = asked.answer.has_value();
        QJsonObject now =
            isThere ? whatMatters(withRunning(asked)) : QJsonObject{{"running"_L1, false}};
        if (before == now) {
            continue;
        }
        if (isThere) {
            printStatus(asked, shown, QJsonDocument::Compact);
        } else if (shown.asJson) {
            printJson(now, shown, QJsonDocument::Compact);
        } else {
            complain(asked.answer.error());
        }
        if (isThere && !shown.asJson) {
            print(u"\n"_s, shown.terminal);
        }
        before = std::move(now);
    } while (pauseWhileSomebodyReads());
    return Well;
}

int showHealth(const Shown &shown)
{
    const Asked asked = ask({.command = u"status"_s});
    QStringList problems;
    if (!asked.answer) {
        problems.append(asked.answer.error());
    } else if (!asked.answer->value("problems"_L1).isArray()) {
        problems.append(u"Ostrelle does not say whether anything is wrong"_s);
    } else {
        problems = problemsIn(*asked.answer);
    }
    const QString summary =
        asked.answer ? printable(asked.answer->value("summary"_L1).toString()) : QString();
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
             QString (*text)(const QJsonObject &data, const Terminal &terminal),
             Otherwise otherwise)
{
    const Asked asked = ask({.command = command}, otherwise);
    if (const auto status = complaint(asked)) {
        return *status;
    }
    if (shown.asJson) {
        printJson(withRunning(asked), shown);
    } else {
        const auto toText = shown.namesOnly ? &namesText : text;
        print(toText(*asked.answer, shown.terminal), shown.terminal);
    }
    const bool isWrong = asked.answer->contains("problem"_L1);
    return statusOf(asked, isWrong ? SomethingIsWrong : Well);
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
    const QJsonObject data = *asked.answer;
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
        complain(u"the terminal is too narrow for the code"_s +
                 (shown.terminal.isUtf8 ? u""_s : u"; in a UTF-8 locale it is half as wide"_s));
        return SomethingIsWrong;
    }
    print(*code, shown.terminal);
    if (const auto needed = code->count(u'\n') + 1;
        needed > shown.terminal.lines.value_or(INT_MAX)) {
        complain(u"the code is seen whole in a terminal of %1 lines"_s.arg(needed));
    }
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
    print(printableLines(asked.answer->value("reply"_L1).toString()) + u'\n', Terminal::ofOutput());
    return Well;
}

int setToken(const std::optional<QString> &gateway)
{
    ControlRequest request{.command = u"token-set"_s};
    if (gateway) {
        request.arguments.insert("gateway"_L1, *gateway);
    }
    return handOver(u"token"_s, request);
}

int setGeminiKey()
{
    return handOver(u"key"_s, {.command = u"gemini-key-set"_s});
}

int act(const ControlRequest &request, const QString &done, QLatin1StringView member)
{
    const Asked asked = ask(request);
    if (const auto status = complaint(asked)) {
        return *status;
    }
    if (!done.isEmpty()) {
        print(done.arg(printable(asked.answer->value(member).toString())) + u'\n',
              Terminal::ofOutput());
    }
    return Well;
}

} // namespace ostrelle
