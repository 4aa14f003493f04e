#include "support/SimulatedGateway.h"

#include "support/Patience.h"
#include "support/Processes.h"

#include <QJsonDocument>

#include <algorithm>

using namespace Qt::StringLiterals;

SimulatedGateway::SimulatedGateway(const ScratchHome &home)
    : m_home(home)
{
    m_process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    m_process.start(builtProgram(u"duskrell"_s), {u"serve"_s, u"--port"_s, u"0"_s});
    while (!m_process.canReadLine()) {
        if (!m_process.waitForReadyRead(patienceMilliseconds)) {
            qFatal("the gateway simulator does not start");
        }
    }
    m_port = m_process.readLine().trimmed().split(':').last().toUShort();
}

SimulatedGateway::~SimulatedGateway()
{
    m_process.terminate();
    m_process.waitForFinished();
}

QByteArray SimulatedGateway::token() const
{
    const auto config = QJsonDocument::fromJson(m_home.read(u".duskrell/duskrell.json"_s));
    return config["gateway"_L1]["auth"_L1]["token"_L1].toString().toUtf8();
}

bool SimulatedGateway::wasAsked(const QString &target) const
{
    const QByteArray record = m_home.read(u".duskrell/simulator-record.jsonl"_s);
    return std::ranges::any_of(record.split('\n'), [&](const QByteArray &line) {
        return QJsonDocument::fromJson(line)["target"_L1] == target;
    });
}

void playSimulator(const ScratchHome &home, const QJsonObject &settings)
{
    home.write(u".duskrell/simulator.json"_s, QJsonDocument(settings).toJson());
}
