#pragma once

#include <QByteArray>
#include <QJsonObject>
#include <QString>

#include <expected>
#include <optional>

namespace ostrelle
{

// What ostrellectl and the running program say to each other: a JSON object in a line each way.
// docs/control.md describes it for others. Any thread.

// Becomes another number when an older reader would take a line for something else. New commands
// and new members do not do that.
inline constexpr int controlProtocol = 1;

// A request is refused beyond this, its end of line included; an answer is not sent.
inline constexpr qsizetype maxRequestBytes = 65536;
inline constexpr qsizetype maxAnswerBytes = qsizetype{16} * 1024 * 1024;

struct ControlRequest {
    QString command;
    QJsonObject arguments = {};

    QByteArray toLine() const;

    friend bool operator==(const ControlRequest &, const ControlRequest &) = default;
};

// Why there is no answer to the question.
struct ControlProblem {
    enum class Kind {
        Protocol, // the two speak different ones
        Request,  // it cannot be understood
        Command,  // nobody here knows it
        Failed,   // it was tried
    };
    Kind kind;
    QString text; // for people

    friend bool operator==(const ControlProblem &, const ControlProblem &) = default;
};

struct ControlAnswer {
    QString version = {};  // of the program
    bool isRunning = true; // false: nobody was asked, this is what the files say
    std::expected<QJsonObject, ControlProblem> content = {};

    QByteArray toLine() const;
};

// One line, without its end. The version of the program is what the problem of another protocol
// names.
std::expected<ControlRequest, ControlProblem> readRequest(const QByteArray &line,
                                                          const QString &programVersion);

// The data of an answer, or why there is none, for people: also where it is no answer of this
// protocol.
std::expected<QJsonObject, QString> readAnswer(const QByteArray &line);

} // namespace ostrelle
