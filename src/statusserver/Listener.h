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

// Listens on every interface. The error is the whole log line.
std::expected<Listener, QString> listenOn(qint64 port);

// What the system says about an errno value.
QString systemText(int error);

} // namespace ostrelle
