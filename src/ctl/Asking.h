#pragma once

#include "control/ControlProtocol.h"

namespace ostrelle
{

// What ostrellectl ends with.
enum ExitStatus {
    Well = 0,
    SomethingIsWrong = 1,
    WrongUsage = 2,
    NotRunning = 3,
};

// What became of a request, and, where the running program has not given it, why.
struct Asked {
    std::expected<QJsonObject, QString> answer = {}; // the data, or why there is none
    QString notRunning = {};                         // for people; empty: it runs
};

enum class Otherwise { Nothing, FilesTell };

// Asks the running program; one that is there and gives no sign of life is given up within 1.5 s.
// Without one the files may tell, or the answer is that there is none.
Asked ask(const ControlRequest &request, Otherwise otherwise = Otherwise::Nothing);

} // namespace ostrelle
