// Reads any PID file: what counts as a process is a number that a signal reaches one process by.

#include "Input.h"
#include "voice/PidFile.h"

#include <QByteArray>

using namespace ostrelle;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    const std::string_view content = textOf(data, size);
    const auto pid = processNamedBy(content);
    require(!pid || *pid >= 1); // 0 and less mean groups
    if (pid) {
        require(processNamedBy(QByteArray::number(*pid).toStdString()) == pid);
    }
    return 0;
}
