#include "ui/Fixture.h"

#include <QClipboard>
#include <QDir>
#include <QGuiApplication>

using namespace ostrelle;
using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace
{

// Where nobody answers: the port is reserved for a service that throws away what it gets.
constexpr auto nobody = "http://127.0.0.1:9";
constexpr quint16 nobodysPort = 9;

// Tests say themselves when to poll the gateway, and do not wait for the voice agent.
constexpr auto gatewayPollInterval = 1h;
constexpr auto voicePollInterval = 20ms;

} // namespace

Fixture::Fixture()
{
    reset();
}

Fixture::~Fixture()
{
    m_models.reset();
}

void Fixture::reset()
{
    m_models.reset();
    m_gateway.reset();
    m_voiceAgent.reset();
    m_home.reset(); // first, because it waits for what still works in it
    m_home = std::make_unique<SetupHome>();
    qputenv("PATH", m_home->path(u"bin"_s).toUtf8() + ":/usr/bin:/bin");
    writeConfig();
    restart();
}

void Fixture::restart()
{
    const OstrelleConfig config = OstrelleConfig::load();
    auto models = std::make_unique<Models>();
    models->gatewayVM = std::make_unique<GatewayViewModel>(
        GatewaySurroundings{.tailscale = {.tools = {m_home->path(u"bin/tailscale"_s)},
                                          .application = {},
                                          .applicationTool = {}},
                            .pollInterval = gatewayPollInterval});
    models->serviceManager = std::make_unique<ServiceManager>(
        config, SupervisorSurroundings{.resources = {}, .logFile = m_home->path(u"agent.log"_s)});
    models->voiceVM = std::make_unique<VoiceViewModel>(models->serviceManager.get(),
                                                       VoicePolling{.interval = voicePollInterval});
    models->setupManager = std::make_unique<SetupManager>(config, m_home->surroundings());
    m_models.swap(models);
    Q_EMIT madeAnew();
}

void Fixture::write(const QString &relative, const QString &content) const
{
    static_cast<void>(m_home->write(relative, content.toUtf8()));
}

QString Fixture::read(const QString &relative) const
{
    return QString::fromUtf8(m_home->read(relative));
}

void Fixture::tool(const QString &name, const QString &body) const
{
    if (body.isEmpty()) {
        QFile::remove(m_home->path(u"bin/"_s + name));
    } else {
        m_home->addTool(name, body.toUtf8());
    }
}

void Fixture::startGateway()
{
    m_gateway = std::make_unique<StandInGateway>();
    m_gateway->answer("/health", StandInGateway::response(200));
    writeConfig();
}

void Fixture::answerChat(const QString &body)
{
    m_gateway->answer("/v1/chat/completions",
                      body.isEmpty() ? QByteArray() : StandInGateway::response(200, body.toUtf8()));
}

void Fixture::startVoiceAgent(const QString &status)
{
    if (!m_voiceAgent) {
        m_voiceAgent = std::make_unique<FakeControlPort>();
        writeConfig();
    }
    m_voiceAgent->body = status.toUtf8();
}

QStringList Fixture::voiceCommands() const
{
    return m_voiceAgent->commands;
}

QString Fixture::clipboard()
{
    return QGuiApplication::clipboard()->text();
}

void Fixture::writeConfig() const
{
    OstrelleConfig config = OstrelleConfig::defaults();
    config.gateway.url = m_gateway ? m_gateway->url() : QString::fromLatin1(nobody);
    config.ports.voiceAgent = m_voiceAgent ? m_voiceAgent->serverPort() : nobodysPort;
    config.voice.enabled = true;
    config.save();
}
