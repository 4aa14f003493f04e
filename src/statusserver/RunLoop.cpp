#include "statusserver/RunLoop.h"

#include "platform/Log.h"

#include <QString>

namespace ostrelle
{

using namespace Qt::StringLiterals;

void runUntilStopped(asio::io_context &loop)
{
    while (!loop.stopped()) {
        try {
            loop.run();
        } catch (const std::exception &error) {
            logDropped(error);
        }
    }
}

void logDropped(const std::exception &error)
{
    logLine(u"[StatusServer] Request dropped: "_s + QString::fromUtf8(error.what()));
}

} // namespace ostrelle
