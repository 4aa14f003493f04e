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

struct Exchange {
    Request request;
    Reply reply;        // of a well-behaved gateway
    QString redirectTo; // an origin; empty: the service's own under its other name
};

Delivery deliver(const Reply &reply);

// What a mode makes of an exchange; a mode that is not known behaves.
Delivery deliverInMode(const QString &mode, const Exchange &exchange);

bool isServiceMode(const QString &mode);

} // namespace ostrelle::simulator
