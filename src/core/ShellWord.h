#pragma once

#include <QString>

namespace ostrelle
{

// The text as one word of a shell's command line.
inline QString quoted(const QString &text)
{
    using namespace Qt::StringLiterals;
    return u'\'' + QString(text).replace(u"'"_s, u"'\\''"_s) + u'\'';
}

} // namespace ostrelle
