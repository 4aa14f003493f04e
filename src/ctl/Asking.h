#pragma once

#include "control/ControlProtocol.h"

#include <chrono>

namespace ostrelle
{

// What ostrellectl ends with.
enum ExitStatus {
    Well = 0,
    SomethingIsWrong = 1,
    WrongUsage = 2,
    NotRunning = 3,
};

// What became of a request: the answer, and, where the running program has not given it, why.
struct Asked {
    ControlAnswer answer = {};
    QString notRunning = {}; // for people; empty: it runs
};

enum class Otherwise { Nothing, FilesTell };

// Asks the running program. One that is there and says nothing at all is given up within 1.5 s;
// one that works on it has the time that is given. Without one the files may tell, or the answer is
// empty.
Asked ask(const ControlRequest &request,
          std::chrono::milliseconds within = std::chrono::milliseconds(1500),
          Otherwise otherwise = Otherwise::Nothing);

} // namespace ostrelle
