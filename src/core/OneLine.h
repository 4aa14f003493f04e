#pragma once

#include <QString>

namespace ostrelle
{

// A text from outside for where one short line has room, a menu or a word in a card say: spaces in
// place of line breaks and control characters, and no more than so many characters.
QString oneLine(const QString &text, qsizetype most = 100);

} // namespace ostrelle
