#include "support/DemoVoiceAgent.h"

#include <QDir>
#include <QFile>
#include <QTcpServer>

using namespace Qt::StringLiterals;

quint16 installDemoVoiceAgent(const ScratchHome &home)
{
    QDir().mkpath(home.path(u".ostrelle/venv/bin"_s));
    QFile::link(u"/usr/bin/python3"_s, home.path(u".ostrelle/venv/bin/python"_s));
    QFile::link(QStringLiteral(DEMO_VOICE_AGENT), home.path(u".ostrelle/voice_agent.py"_s));
    QTcpServer probe;
    probe.listen(QHostAddress::LocalHost);
    return probe.serverPort();
}
