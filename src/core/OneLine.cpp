#include "core/OneLine.h"

#include <algorithm>

namespace ostrelle
{

QString oneLine(const QString &text, qsizetype most)
{
    QString line = text.left(4 * most); // the rest would not be seen, whatever spaces go
    std::ranges::replace_if(
        line, [](QChar c) { return c.category() == QChar::Other_Control; }, u' ');
    line = line.simplified();
    if (line.size() > most) {
        line.truncate(line.at(most - 1).isHighSurrogate() ? most - 1 : most);
        line += u'…';
    }
    return line;
}

} // namespace ostrelle
