#pragma once

#include "HttpMessage.h"

#include <QString>

#include <chrono>

namespace ostrelle::simulator
{

// How a reply goes over the wire; the connection is closed behind it.
struct Delivery {
    QByteArray bytes;
    QByteArray filler = {};             // sent again and again behind them
    qint64 fillerBytes = 0;             // how much of it in all
    std::chrono::milliseconds pause{0}; // between single bytes; 0: all at once
    bool isSilent = false;              // sends nothing and leaves the connection open
};

Delivery deliver(const Reply &reply);

// What a mode makes of a well-behaved reply; a mode that is not known behaves.
Delivery deliverInMode(const QString &mode, const Reply &reply);

} // namespace ostrelle::simulator
