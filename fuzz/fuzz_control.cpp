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
    const ControlAnswer answer = readAnswer(line);
    const QByteArray again = answer.toLine();
    require(!again.contains('\n'));
    const ControlAnswer same = readAnswer(again);
    require(same.isRunning == answer.isRunning && same.version == answer.version);
    require(same.content == answer.content);
    return 0;
}
