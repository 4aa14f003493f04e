#pragma once

#include <QByteArray>

#include <chrono>
#include <expected>

namespace ostrelle
{

enum class Unreachable {
    NotRunning, // nobody listens
    NoAnswer,   // somebody does, and says nothing in time, or too much
    Stranger,   // who listens is another user
};

// Says one line to the running program, and returns the line that it answers, without its end.
// Nothing is said to a stranger. Waits no longer than that, and only 1.5 s for a program that is
// there and gives no sign of life.
std::expected<QByteArray, Unreachable> sayToProgram(const QByteArray &line,
                                                    std::chrono::milliseconds within);

} // namespace ostrelle
