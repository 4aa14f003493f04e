#pragma once

#include "support/ScratchHome.h"

#include <QByteArray>
#include <QJsonObject>
#include <QStringList>

// What a run of a program left: what it printed, and its exit status, -1 when it did not end well.
struct Run {
    int status = -1;
    QByteArray out = {};
    QByteArray err = {};
};

// While it runs, what the test itself has at its sockets is served.
Run run(const QString &program, const QStringList &arguments, const QByteArray &input = {});

Run ctl(const QStringList &arguments, const QByteArray &input = {});

// A shell command that says "ctl" for ostrellectl, in a terminal of so many columns, where the
// input is typed.
Run inTerminal(const QString &command, int columns, const QByteArray &input = {});

// A home with documents, the voice agent's parts, a status server port that the kernel chooses, and
// tools that fail.
class CtlHome : public ScratchHome
{
public:
    CtlHome();

    // The one saved gateway, called Home, and the voice agent. Nobody is there before.
    void configure(const QString &gatewayURL, quint16 voicePort) const;

    // Of the program that runs here.
    QString socket() const;
};
