#pragma once

#include <QByteArray>
#include <QString>

namespace ostrelle
{

// What the chat shows for the body of a successful answer: the reply of a chat completion, else the
// body itself, else that there is none that could be shown.
QString chatReply(const QByteArray &body);

} // namespace ostrelle
