// Feeds a text to the quick chat as the body of a successful answer.

#include "Input.h"
#include "gateway/ChatReply.h"
#include "gateway/Utf8.h"

using namespace ostrelle;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    const auto body = QByteArray(reinterpret_cast<const char *>(data), static_cast<int>(size));
    const QString reply = chatReply(body);
    require(textFromUtf8(body) || reply == QStringLiteral("No response"));
    require(reply.isValidUtf16());
    return 0;
}
