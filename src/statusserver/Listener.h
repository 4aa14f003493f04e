#pragma once

#include "platform/Files.h"

#include <QString>

#include <expected>

namespace ostrelle
{

struct Listener {
    Descriptor socket; // non-blocking, not inherited by children
    int port;          // the one that the kernel chose when 0 was asked for
};

struct ListenProblem {
    QString logLine;
    bool portTaken = false; // by another program, which may end
};

// Listens on every interface.
std::expected<Listener, ListenProblem> listenOn(qint64 port);

// What the system says about an errno value.
QString systemText(int error);

} // namespace ostrelle
