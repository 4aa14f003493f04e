#pragma once

#include "support/Patience.h"

#include <QByteArray>
#include <QProcess>
#include <QStringList>

// Skips all tests of the program where one of these tools is installed, which it would ask.
void skipWhereThereAre(const QStringList &realTools);

// The real program, started in the surrounding ScratchHome. Killed at the end if it still runs.
class Program
{
public:
    explicit Program(const QStringList &arguments = {});
    ~Program();
    Program(const Program &) = delete;
    Program &operator=(const Program &) = delete;

    // Waits for a line that contains the text and returns it; empty when the program ended first.
    QByteArray waitForLine(const QByteArray &text);

    // Waits for the status server and returns its port.
    quint16 waitForPort();

    // Sends the signal and waits for the end; the exit status, or -1 when it did not end in time.
    int endWith(int signal);

    // Waits for the end of a program that ends by itself.
    int waitForEnd();

    pid_t pid() const { return static_cast<pid_t>(m_process.processId()); }
    const QByteArray &output() const { return m_output; }

private:
    QProcess m_process;
    QByteArray m_output;
};
