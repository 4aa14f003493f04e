#include "ui/Fixture.h"

#include "platform/ChildProcess.h"
#include "platform/FileWriting.h"
#include "ui/FieldAccessibility.h"

#include <QAccessible>
#include <QClipboard>
#include <QGuiApplication>
#include <QQmlEngine>
#include <QTest>

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

void Fixture::reset()
{
    QTest::failOnWarning(QRegularExpression(u"\\.qml:"_s)); // of a view's own code
    m_panel.reset();
    m_models.reset();
    m_gateway.reset();
    m_peer.reset();
    m_voiceAgent.reset();
    m_home.reset(); // first, because it waits for what still works in it
    m_home = std::make_unique<SetupHome>();
    qputenv("PATH", m_home->path(u"bin"_s).toUtf8() + ":/usr/bin:/bin");
    writeConfig();
    restart();
}

ostrelle::Models Fixture::Models::all() const
{
    return {settings,      gatewayVM.get(),      gatewayInUse.get(), settingsModel.get(),
            voiceVM.get(), serviceManager.get(), setupManager.get(), statusServer.get()};
}

void Fixture::restart()
{
    const TailscalePlaces tailscale{
        .tools = {m_home->path(u"bin/tailscale"_s)}, .application = {}, .applicationTool = {}};
    auto models = std::make_unique<Models>(m_home->settings());
    const Settings &settings = models->settings;
    const OstrelleConfig config = settings.config->current();
    models->gatewayVM = std::make_unique<GatewayViewModel>(
        settings, GatewaySurroundings{.tailscale = tailscale, .pollInterval = gatewayPollInterval});
    models->serviceManager = std::make_unique<ServiceManager>(
        config, settings.preferences,
        SupervisorSurroundings{.resources = {}, .logFile = m_home->path(u"agent.log"_s)});
    models->voiceVM =
        std::make_unique<VoiceViewModel>(models->serviceManager.get(), config.ports.voiceAgent,
                                         VoicePolling{.interval = voicePollInterval});
    models->setupManager = std::make_unique<SetupManager>(settings, m_home->surroundings());
    models->statusServer = std::make_unique<StatusServer>(config, settings.tokens);
    models->gatewayInUse = std::make_unique<GatewayInUse>(settings, models->gatewayVM.get());
    models->settingsModel = std::make_unique<GatewaySettings>(
        settings.preferences, QStringList{m_home->path(u"bin/duskrell"_s)});
    models->panel = std::make_unique<PanelModels>(models->all());
    models->profiles = std::make_unique<GatewayProfiles>(settings, models->gatewayVM.get(),
                                                         models->gatewayInUse.get());
    models->peers = std::make_unique<TailscalePeersModel>(models->profiles.get(), tailscale);
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

ProjectsViewModel *Fixture::projectsVM() const
{
    return new ProjectsViewModel(
        m_models->settings,
        [file = m_home->path(u"asked"_s)](const QString &program, const QStringList &args) {
            static_cast<void>(writeInPlace(file, (program + u' ' + args.join(u' ')).toUtf8()));
            return QString();
        }); // the engine owns it
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
        m_voiceAgent = std::make_unique<StandInGateway>();
        writeConfig();
    }
    m_voiceAgent->answer("/status", StandInGateway::response(200, status.toUtf8()));
}

void Fixture::saveGateways(const QStringList &urls) const
{
    OstrelleConfig config = OstrelleConfig::load();
    config.gateway.url = urls.first();
    config.gateway.saved = QList<SavedGateway>();
    for (const QString &url : urls) {
        config.gateway.saved->append({.name = hostOf(url).value_or(url), .url = url});
    }
    config.save();
}

void Fixture::followLink(const QString &url) const
{
    m_models->gatewayInUse->adopt(url, std::nullopt, [] {});
}

QString Fixture::startPeer(int status)
{
    // Probes ask a fixed port, so that each test process needs an address of its own.
    const qint64 process = QCoreApplication::applicationPid();
    const QString ip = u"127.78.%1.%2"_s.arg(process / 256 % 256).arg(process % 256);
    m_peer.reset();
    m_peer = std::make_unique<StandInGateway>(QHostAddress(ip), 18789);
    m_peer->answer("/health", StandInGateway::response(status));
    return ip;
}

void Fixture::rejectTokens()
{
    m_gateway->answer("/v1/models", StandInGateway::response(401));
}

QString Fixture::storedToken(const QString &key) const
{
    return m_home->storedToken(key).value_or(QString());
}

void Fixture::storeToken(const QString &token, const QString &key) const
{
    m_home->storeToken(token, key);
}

QString Fixture::scan(const QString &image)
{
    const auto scanner =
        runChild({.program = u"zbarimg"_s, .arguments = {u"--quiet"_s, u"--raw"_s, image}});
    return scanner ? QString::fromUtf8(scanner->output).trimmed() : scanner.error().text;
}

QQuickWindow *Fixture::openPanel(const QRect &place)
{
    if (!m_panel) {
        m_panel = std::make_unique<Panel>(m_models->all(), PanelEvents(), 50ms);
        QQmlEngine::setObjectOwnership(&m_panel->view(), QQmlEngine::CppOwnership);
    }
    m_panel->open(place.isEmpty() ? std::nullopt : std::optional(place));
    return &m_panel->view();
}

QVariantMap Fixture::accessible(QObject *item)
{
    QAccessibleInterface *const interface = QAccessible::queryAccessibleInterface(item);
    QAccessibleTextInterface *const text = interface->textInterface();
    interface->actionInterface()->doAction(QAccessibleActionInterface::setFocusAction());
    text->addSelection(1, 3);
    int start = 0;
    int end = 0;
    text->selection(0, &start, &end);
    const QAccessible::State state = interface->state();
    const QAccessibleTextUpdateEvent change(item, 0, u"before"_s, u"after"_s);
    QAccessibleEvent harmless(item, QAccessible::Focus);
    QAccessible::updateAccessibility(&harmless); // after which changes are looked at as before
    const auto looksAtChanges = QAccessible::installUpdateHandler(nullptr);
    QAccessible::installUpdateHandler(looksAtChanges);
    return {{u"hearsChanges"_s, looksAtChanges == nullptr || !tellsSecret(change)},
            {u"name"_s, interface->text(QAccessible::Name)},
            {u"value"_s, interface->text(QAccessible::Value)},
            {u"state"_s,
             QVariantList{state.focusable == 1, state.focused == 1, state.disabled == 1,
                          state.invisible == 1, state.selectableText == 1, state.editable == 1,
                          state.passwordEdit == 1, interface->role() == QAccessible::EditableText}},
            {u"selected"_s, QVariantList{text->selectionCount(), start, end}},
            {u"hasPlace"_s, interface->window() != nullptr &&
                                interface->rect().contains(text->characterRect(1)) &&
                                text->offsetAtPoint({}) < 0 && interface->childCount() == 0},
            {u"text"_s, text->text(0, text->characterCount())},
            {u"isReachable"_s, interface->parent()->indexOfChild(interface) >= 0}};
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

#include "moc_Fixture.cpp"
