#include "control/Question.h"

#include "core/BackgroundWork.h"
#include "core/WhenDone.h"
#include "platform/Heap.h"

#include <utility>

namespace ostrelle
{

Question::Question(QJsonObject arguments, QObject *asker, Writer write,
                   std::function<void(const QByteArray &line)> reply)
    : QObject(asker)
    , m_arguments(std::move(arguments))
    , m_write(std::move(write))
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

void Question::answerFromBackground(std::function<QJsonObject()> make)
{
    auto work = [write = m_write, make = std::move(make)]() mutable {
        QByteArray line = write(std::exchange(make, nullptr)());
        trimHeap(); // of all that the line was made from
        return line;
    };
    whenDone(userInitiatedPool().run(std::move(work)), this,
             [this](const QByteArray &line) { reply(line); });
}

void Question::fail(const QString &why)
{
    reply(m_write(std::unexpected(ControlProblem{ControlProblem::Kind::Failed, why})));
}

void Question::reply(const QByteArray &line)
{
    if (const auto reply = std::exchange(m_reply, nullptr)) {
        reply(line);
        deleteLater();
    }
}

} // namespace ostrelle

#include "moc_Question.cpp"
