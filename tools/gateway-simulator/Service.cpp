#include "Service.h"

#include "Api.h"
#include "Connection.h"
#include "CronJobs.h"
#include "ProjectTracker.h"
#include "SessionLog.h"
#include "platform/Log.h"

#include <QTcpSocket>

namespace ostrelle::simulator
{

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace
{

constexpr qsizetype maxConnections = 256;

void recordRequest(const Request &request)
{
    QJsonObject headers;
    for (const auto &[name, value] : request.headers) {
        headers[QString::fromLatin1(name)] = QString::fromUtf8(value);
    }
    record({{u"method"_s, QString::fromLatin1(request.method)},
            {u"target"_s, QString::fromUtf8(request.target)},
            {u"headers"_s, headers},
            {u"body"_s, QString::fromUtf8(request.body)}});
}

} // namespace

Service::Service(ServiceOptions options, QObject *parent)
    : QObject(parent)
    , m_options(std::move(options))
{
    connect(&m_server, &QTcpServer::newConnection, this, &Service::accept);
    m_clock.callOnTimeout(this, &Service::tick);
}

Done Service::start()
{
    if (!m_server.listen(m_options.bind, m_options.port)) {
        return std::unexpected(u"Cannot listen on %1:%2: %3"_s.arg(m_options.bind.toString())
                                   .arg(m_options.port)
                                   .arg(m_server.errorString()));
    }
    if (auto added = addMissingConfig(m_server.serverPort()); !added) {
        return added;
    }
    const World world = Settings::load().world;
    sessionlog::begin(world);
    m_lastTickMs = world.nowMs;
    m_clock.start(1s);
    logLine(u"[Gateway] Listening on http://%1:%2"_s.arg(m_options.bind.toString())
                .arg(m_server.serverPort()));
    return {};
}

void Service::accept()
{
    while (QTcpSocket *socket = m_server.nextPendingConnection()) {
        if (findChildren<Connection *>(Qt::FindDirectChildrenOnly).size() >= maxConnections) {
            socket->abort();
            socket->deleteLater();
            continue;
        }
        new Connection(socket, [this](const Request &request) { return serve(request); }, this);
    }
}

Delivery Service::serve(const Request &request) const
{
    const Settings settings = Settings::load();
    if (settings.record) {
        recordRequest(request);
    }
    return deliverInMode(settings.serviceMode, answer(settings.world, request));
}

void Service::tick()
{
    const World world = Settings::load().world;
    sessionlog::play(world, m_lastTickMs);
    for (const QJsonValue job : listCronJobs(world)) {
        if (job["name"_L1] == projectTrackerJob &&
            job["state"_L1]["lastRunAtMs"_L1].toInteger() > m_lastTickMs) {
            static_cast<void>(writeProjectTracker(world));
        }
    }
    m_lastTickMs = world.nowMs;
}

} // namespace ostrelle::simulator

#include "moc_Service.cpp"
