#pragma once

#include <QByteArray>

// What a server on the loopback interface answers to these bytes until it closes the connection, or
// is silent for too long.
QByteArray exchange(quint16 port, const QByteArray &request);
