#include "statusserver/StatusServer.h"

#include "core/BackgroundWork.h"
#include "core/LegacyAgent.h"
#include "platform/Paths.h"
#include "statusserver/ServerEngine.h"

namespace ostrelle
{

using namespace Qt::StringLiterals;

namespace
{

const QString legacyStatusLabel = u"com.duskrell.status-server"_s;

QString legacyStatusPlist()
{
    return homeDirectory() + u"/Library/LaunchAgents/com.duskrell.status-server.plist"_s;
}

} // namespace

StatusServer::StatusServer(const OstrelleConfig &config, std::shared_ptr<const Tokens> tokens,
                           const ServerLimits &limits, QObject *parent)
    : QObject(parent)
    , m_engine(std::make_shared<ServerEngine>(config, std::move(tokens), limits))
{
    m_engine->state().observe([this] {
        QMetaObject::invokeMethod(this, &StatusServer::tellState, Qt::QueuedConnection);
    });
    m_nextTry.setInterval(limits.untilNextTry);
    connect(&m_nextTry, &QTimer::timeout, this, &StatusServer::start);
    disableLegacyStatusServer();
}

StatusServer::~StatusServer()
{
    m_engine->state().observe({});
    m_engine->finish();
}

void StatusServer::start()
{
    if (m_engine->start()) {
        m_nextTry.stop();
    } else {
        m_nextTry.start();
    }
}

void StatusServer::stop()
{
    m_nextTry.stop();
    m_engine->stop();
}

bool StatusServer::running() const
{
    return m_engine->state().running();
}

bool StatusServer::startRequested() const
{
    return m_engine->state().startRequested();
}

int StatusServer::port() const
{
    return m_engine->state().port();
}

bool StatusServer::portTaken() const
{
    return m_engine->state().portTaken();
}

void StatusServer::disableLegacyStatusServer()
{
    utilityPool().start(
        [agent = LegacyAgent{.label = legacyStatusLabel, .plist = legacyStatusPlist()}] {
            disableLegacyAgent(agent);
        });
}

// A start and a stop that follow each other at once cancel out.
void StatusServer::tellState()
{
    if (const bool now = running(); now != m_toldRunning) {
        m_toldRunning = now;
        Q_EMIT runningChanged();
    }
    if (const bool now = portTaken(); now != m_toldPortTaken) {
        m_toldPortTaken = now;
        Q_EMIT portTakenChanged();
    }
}

} // namespace ostrelle

#include "moc_StatusServer.cpp"
