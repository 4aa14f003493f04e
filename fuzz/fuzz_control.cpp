// Feeds a line to the running program as what ostrellectl says, and to ostrellectl as the answer.

#include "Input.h"
#include "control/ControlProtocol.h"

using namespace ostrelle;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    const QByteArray line = bytesOf(data, size);
    const auto request = readRequest(line, QStringLiteral("1"));
    require(request || !request.error().text.isEmpty());
    if (request) {
        const QByteArray again = request->toLine();
        require(!again.contains('\n'));
        require(readRequest(again, {}).value() == *request);
    }
    const auto answer = readAnswer(line);
    require(answer || !answer.error().isEmpty());
    if (answer) {
        const QByteArray again = ControlAnswer{.content = *answer}.toLine();
        require(!again.contains('\n'));
        require(readAnswer(again) == answer);
    }
    return 0;
}
