#include "platform/Log.h"

#include <QByteArray>

#include <cstdio>

namespace ostrelle
{

void logLine(const QString &line)
{
    const QByteArray text = line.toUtf8() + '\n';
    // One call a line, so that the lines of two threads never mix.
    std::fwrite(text.constData(), 1, static_cast<std::size_t>(text.size()), stdout);
    std::fflush(stdout);
}

} // namespace ostrelle
