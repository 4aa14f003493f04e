#include "app/Program.h"

#include "support/Processes.h"

#include <QFile>
#include <QTest>

#include <csignal>

using namespace Qt::StringLiterals;

void skipWhereThereAre(const QStringList &realTools)
{
    for (const QString &tool : realTools) {
        if (QFile::exists(tool)) {
            QSKIP(qPrintable(u"a real tool is installed: "_s + tool));
        }
    }
}

Program::Program(const QStringList &arguments)
{
    m_process.setProcessChannelMode(QProcess::MergedChannels);
    m_process.start(builtProgram(u"ostrelle"_s), arguments);
    m_process.waitForStarted();
}

Program::~Program()
{
    if (m_process.state() != QProcess::NotRunning) {
        m_process.kill();
        m_process.waitForFinished();
    }
}

QByteArray Program::waitForLine(const QByteArray &text)
{
    const auto find = [&]() -> QByteArray {
        m_output += m_process.readAll();
        for (const QByteArray &line : m_output.split('\n')) {
            if (line.contains(text)) {
                return line;
            }
        }
        return {};
    };
    static_cast<void>(QTest::qWaitFor(
        [&] { return !find().isEmpty() || m_process.state() == QProcess::NotRunning; },
        patienceMilliseconds));
    return find();
}

quint16 Program::waitForPort()
{
    return waitForLine("[StatusServer] Listening on port ").split(' ').last().toUShort();
}

int Program::endWith(int signal)
{
    ::kill(pid(), signal);
    return waitForEnd();
}

int Program::waitForEnd()
{
    if (m_process.state() != QProcess::NotRunning &&
        !m_process.waitForFinished(patienceMilliseconds)) {
        return -1;
    }
    m_output += m_process.readAll();
    return m_process.exitStatus() == QProcess::NormalExit ? m_process.exitCode() : -1;
}
