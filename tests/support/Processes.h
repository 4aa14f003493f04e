#pragma once

#include <QByteArray>
#include <QDir>
#include <QFile>
#include <QProcess>
#include <QString>
#include <QStringList>

#include <csignal>
#include <sys/types.h>

// Whether the process runs. One that has ended and waits for its parent does not; orphans may wait
// for a while.
inline bool isAlive(pid_t pid)
{
    QFile status(QStringLiteral("/proc/%1/stat").arg(pid));
    if (!status.open(QIODevice::ReadOnly)) {
        return false;
    }
    const QByteArray line = status.readAll();
    return line.mid(line.lastIndexOf(')') + 2, 1) != "Z";
}

// Asks the process to end, and kills one that does not. A frozen one runs again before.
inline void endProcess(QProcess &process)
{
    if (process.state() == QProcess::Running) {
        ::kill(static_cast<pid_t>(process.processId()), SIGCONT);
        process.terminate();
        if (!process.waitForFinished(5000)) {
            process.kill();
            process.waitForFinished();
        }
    }
}

// What the program prints on its standard output, once it has ended.
inline QByteArray outputOf(const QString &program, const QStringList &arguments)
{
    QProcess process;
    process.start(program, arguments);
    process.waitForFinished();
    return process.readAllStandardOutput();
}

// One of the programs that were built.
inline QString builtProgram(const QString &name)
{
    return qEnvironmentVariable("OSTRELLE_BINARY_DIR") + QLatin1Char('/') + name;
}

// Of this process.
inline qsizetype openDescriptors()
{
    return QDir(QStringLiteral("/proc/self/fd")).entryList(QDir::Files | QDir::System).size();
}
