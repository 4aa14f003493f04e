#pragma once

#include <QString>

namespace ostrelle
{

// The whole standard input as text, without blanks around it; as far as a request may hold.
QString readInput();

// Its first line, without blanks around it. At a terminal the user is asked for it and does not see
// what he types.
QString readSecret(const QString &question);

// Whether the user, at a terminal, says yes. True where nobody can be asked.
bool isAgreed(const QString &question);

} // namespace ostrelle
