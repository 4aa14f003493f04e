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

    // The asker owns the question; `reply` is called once.
    Question(QJsonObject arguments, QObject *asker, std::function<void(const Answer &)> reply);

    bool has(QLatin1StringView argument) const { return m_arguments.contains(argument); }

    // An argument; empty when it was left out or is no text.
    QString text(QLatin1StringView argument) const;

    // 0 when it was left out or is no number.
    qint64 number(QLatin1StringView argument) const;

    void answer(const QJsonObject &data) { reply(data); }

    // What was asked for could not be done; the text is for people.
    void fail(const QString &why);

private:
    void reply(const Answer &answer);

    const QJsonObject m_arguments;
    std::function<void(const Answer &)> m_reply; // null once it was called
};

} // namespace ostrelle
