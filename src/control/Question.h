#pragma once

#include "control/ControlProtocol.h"

#include <QObject>

#include <functional>

namespace ostrelle
{

// One request while it is being answered. It ends with the answer, or with whoever asks; what works
// for it ends with it. Main thread only.
class Question : public QObject
{
    Q_OBJECT

public:
    using Answer = std::expected<QJsonObject, ControlProblem>;

    // Makes the line that tells an answer; on any thread.
    using Writer = std::function<QByteArray(const Answer &answer)>;

    // The asker owns the question; `reply` is called once, with the line.
    Question(QJsonObject arguments, QObject *asker, Writer write,
             std::function<void(const QByteArray &line)> reply);

    bool has(QLatin1StringView argument) const { return m_arguments.contains(argument); }

    // An argument; empty when it was left out or is no text.
    QString text(QLatin1StringView argument) const;

    // 0 when it was left out or is no number.
    qint64 number(QLatin1StringView argument) const;

    void answer(const QJsonObject &data) { reply(m_write(data)); }

    // For data that takes long to put together: `make` is called, and the line written, on a
    // background thread.
    void answerFromBackground(std::function<QJsonObject()> make);

    // What was asked for could not be done; the text is for people.
    void fail(const QString &why);

private:
    void reply(const QByteArray &line);

    const QJsonObject m_arguments;
    const Writer m_write;
    std::function<void(const QByteArray &line)> m_reply; // null once it was called
};

} // namespace ostrelle
