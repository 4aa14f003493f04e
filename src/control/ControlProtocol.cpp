#include "control/ControlProtocol.h"

#include <QJsonDocument>

#include <array>
#include <utility>

namespace ostrelle
{

using namespace Qt::StringLiterals;

namespace
{

using Kind = ControlProblem::Kind;

// What a program says that knows only starts.
constexpr QByteArrayView answerToAStart = "received";

constexpr std::array<std::pair<Kind, QLatin1StringView>, 4> kinds{{
    {Kind::Protocol, "protocol"_L1},
    {Kind::Request, "request"_L1},
    {Kind::Command, "command"_L1},
    {Kind::Failed, "failed"_L1},
}};

QString nameOf(Kind kind)
{
    for (const auto &[each, name] : kinds) {
        if (each == kind) {
            return name;
        }
    }
    Q_UNREACHABLE();
}

QByteArray compact(const QJsonObject &object)
{
    return QJsonDocument(object).toJson(QJsonDocument::Compact);
}

// Which of the two has to be brought up to date.
QString otherProtocol(bool programIsOlder, const QString &version)
{
    const QString program = u"the running Ostrelle "_s + version;
    return programIsOlder ? program + u" is older than this ostrellectl; restart Ostrelle"_s
                          : program + u" is newer than this ostrellectl; update ostrellectl"_s;
}

} // namespace

QByteArray ControlRequest::toLine() const
{
    QJsonObject line = arguments;
    line.insert("protocol"_L1, controlProtocol);
    line.insert("command"_L1, command);
    return compact(line);
}

QByteArray ControlAnswer::toLine() const
{
    QJsonObject line{
        {"protocol"_L1, controlProtocol}, {"version"_L1, version}, {"running"_L1, isRunning}};
    if (content) {
        line.insert("data"_L1, *content);
    } else {
        line.insert("problem"_L1, QJsonObject{{"kind"_L1, nameOf(content.error().kind)},
                                              {"text"_L1, content.error().text}});
    }
    return compact(line);
}

std::expected<ControlRequest, ControlProblem> readRequest(const QByteArray &line,
                                                          const QString &programVersion)
{
    QJsonObject object = QJsonDocument::fromJson(line).object();
    const QJsonValue protocol = object.take("protocol"_L1);
    const QJsonValue command = object.take("command"_L1);
    if (!protocol.isDouble()) {
        return std::unexpected(ControlProblem{Kind::Request, u"this is no request"_s});
    }
    if (protocol.toDouble() != controlProtocol) {
        return std::unexpected(ControlProblem{
            Kind::Protocol, otherProtocol(protocol.toDouble() > controlProtocol, programVersion)});
    }
    if (!command.isString()) {
        return std::unexpected(ControlProblem{Kind::Request, u"the request has no command"_s});
    }
    return ControlRequest{.command = command.toString(), .arguments = object};
}

std::expected<QJsonObject, QString> readAnswer(const QByteArray &line)
{
    if (line.trimmed() == answerToAStart) {
        return std::unexpected(otherProtocol(true, {}));
    }
    const QJsonObject answer = QJsonDocument::fromJson(line).object();
    const QJsonValue protocol = answer.value("protocol"_L1);
    if (protocol.isDouble() && protocol.toDouble() != controlProtocol) {
        return std::unexpected(otherProtocol(protocol.toDouble() < controlProtocol,
                                             answer.value("version"_L1).toString()));
    }
    if (const QJsonValue problem = answer.value("problem"_L1); problem.isObject()) {
        const QString why = problem["text"_L1].toString();
        return std::unexpected(why.isEmpty() ? u"the answer does not say why not"_s : why);
    }
    const QJsonValue data = answer.value("data"_L1);
    if (!protocol.isDouble() || !data.isObject()) {
        return std::unexpected(u"the answer cannot be understood"_s);
    }
    return data.toObject();
}

} // namespace ostrelle
