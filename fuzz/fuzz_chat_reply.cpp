// Feeds a text to the quick chat as the body of a successful answer.

#include "Input.h"
#include "gateway/ChatReply.h"

using namespace ostrelle;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    const QByteArray body = bytesOf(data, size);
    const QString reply = chatReply(body);
    require(body.isValidUtf8() || reply == QStringLiteral("No response"));
    require(reply.isValidUtf16());
    return 0;
}
