#include "control/Question.h"

#include <utility>

namespace ostrelle
{

Question::Question(QJsonObject arguments, QObject *asker, std::function<void(const Answer &)> reply)
    : QObject(asker)
    , m_arguments(std::move(arguments))
    , m_reply(std::move(reply))
{
}

QString Question::text(QLatin1StringView argument) const
{
    return m_arguments.value(argument).toString();
}

qint64 Question::number(QLatin1StringView argument) const
{
    return m_arguments.value(argument).toInteger();
}

void Question::fail(const QString &why)
{
    reply(std::unexpected(ControlProblem{ControlProblem::Kind::Failed, why}));
}

void Question::reply(const Answer &answer)
{
    if (const auto reply = std::exchange(m_reply, nullptr)) {
        reply(answer);
        deleteLater();
    }
}

} // namespace ostrelle

#include "moc_Question.cpp"
