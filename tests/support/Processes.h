#pragma once

#include <QByteArray>
#include <QDir>
#include <QFile>
#include <QString>

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

// Of this process.
inline qsizetype openDescriptors()
{
    return QDir(QStringLiteral("/proc/self/fd")).entryList(QDir::Files | QDir::System).size();
}
