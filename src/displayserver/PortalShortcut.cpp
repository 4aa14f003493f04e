#include "displayserver/PortalShortcut.h"

#include "platform/WorkPool.h"

#include <QDBusMetaType>
#include <QDBusPendingCallWatcher>
#include <QTimer>
#include <QUuid>

#include <utility>

namespace ostrelle
{

using namespace Qt::StringLiterals;

namespace
{

const QString portalService = u"org.freedesktop.portal.Desktop"_s;
const QString portalPath = u"/org/freedesktop/portal/desktop"_s;
const QString shortcutsInterface = u"org.freedesktop.portal.GlobalShortcuts"_s;
const QString sessionInterface = u"org.freedesktop.portal.Session"_s;
const QString requestInterface = u"org.freedesktop.portal.Request"_s;
const QString registryInterface = u"org.freedesktop.host.portal.Registry"_s;

const QString connectionName = u"ostrelle_shortcut"_s; // within the process
const QString applicationId = u"ai.duskrell.ostrelle"_s;
const QString creationToken = u"ostrelle_creation"_s;
const QString bindingToken = u"ostrelle_binding"_s;

using Shortcut = QPair<QString, QVariantMap>; // a name of ours and its properties

// The path of the object that will signal the answer to a call with this handle token.
QString requestPath(const QDBusConnection &bus, const QString &token)
{
    const QString sender = bus.baseService().mid(1).replace(u'.', u'_');
    return portalPath + u"/request/"_s + sender + u'/' + token;
}

QDBusMessage portalCall(const QString &interface, const QString &method)
{
    return QDBusMessage::createMethodCall(portalService, portalPath, interface, method);
}

} // namespace

PortalShortcut::PortalShortcut(WorkPool &background, std::chrono::milliseconds patience)
    : m_patience(patience)
{
    qDBusRegisterMetaType<Shortcut>();
    qDBusRegisterMetaType<QList<Shortcut>>();
    connect(&m_connecting, &QFutureWatcherBase::finished, this, [this] {
        if (!m_connecting.isCanceled()) {
            listenOn(m_connecting.future().takeResult());
        }
    });
    m_connecting.setFuture(background.run(&PortalShortcut::connectToBus));
}

PortalShortcut::Bus PortalShortcut::connectToBus()
{
    return Bus(new QDBusConnection(
        QDBusConnection::connectToBus(QDBusConnection::SessionBus, connectionName)));
}

void PortalShortcut::Disconnect::operator()(const QDBusConnection *bus) const
{
    delete bus;
    QDBusConnection::disconnectFromBus(connectionName);
}

void PortalShortcut::listenOn(Bus bus)
{
    if (!bus->isConnected()) {
        giveUp(u"no session bus"_s);
        return;
    }
    m_bus = std::move(bus);
    m_portal = std::make_unique<QDBusServiceWatcher>(portalService, *m_bus);
    connect(m_portal.get(), &QDBusServiceWatcher::serviceOwnerChanged, this,
            [this](const QString & /*service*/, const QString &oldOwner, const QString &newOwner) {
                followPortal(oldOwner, newOwner);
            });
    // Connected before anything is asked: an answer may arrive before its call has returned.
    m_bus->connect(portalService, requestPath(*m_bus, creationToken), requestInterface,
                   u"Response"_s, this, SLOT(adoptSession(uint, QVariantMap)));
    m_bus->connect(portalService, requestPath(*m_bus, bindingToken), requestInterface,
                   u"Response"_s, this, SLOT(handleBinding(uint)));
    m_bus->connect(portalService, portalPath, shortcutsInterface, u"Activated"_s, this,
                   SLOT(handleActivation(QDBusObjectPath)));
    const QString anySession;
    m_bus->connect(portalService, anySession, sessionInterface, u"Closed"_s, this,
                   SLOT(handleEnd(QDBusMessage)));
    begin();
}

void PortalShortcut::followPortal(const QString &oldOwner, const QString &newOwner)
{
    if (!oldOwner.isEmpty()) {
        m_attempt.reset();
        m_session = {};
        m_hasEnded = false;
    }
    // When our own call has started the portal, it is being asked already.
    if (!newOwner.isEmpty() && !m_attempt) {
        begin();
    }
}

void PortalShortcut::begin()
{
    m_attempt = std::make_unique<QObject>();
    QTimer::singleShot(m_patience, m_attempt.get(), [this] {
        if (m_session.path().isEmpty()) {
            logOnce(u"the desktop's portal does not answer"_s);
        }
    });
    // Must be the connection's first call to the portal. Older portals do not know this call, and
    // find out from the process which program it is.
    QDBusMessage registration = portalCall(registryInterface, u"Register"_s);
    registration << applicationId << QVariantMap{};
    call(registration, [this](bool /*failed*/) { createSession(); });
}

void PortalShortcut::createSession()
{
    // A new name each time: when the portal was restarted, the desktop behind it may still have the
    // old session.
    const QString session = u"ostrelle_"_s + QUuid::createUuid().toString(QUuid::Id128);
    QDBusMessage creation = portalCall(shortcutsInterface, u"CreateSession"_s);
    creation << QVariantMap{{u"handle_token"_s, creationToken},
                            {u"session_handle_token"_s, session}};
    call(creation, [this](bool failed) {
        if (failed) {
            giveUp(u"the desktop has no GlobalShortcuts portal"_s);
        }
    });
}

void PortalShortcut::adoptSession(uint response, const QVariantMap &results)
{
    if (!m_attempt) {
        return;
    }
    const QString handle = results.value(u"session_handle"_s).toString();
    if (response != 0 || handle.isEmpty()) {
        giveUp(u"the desktop's portal opens no session"_s);
        return;
    }
    m_session = QDBusObjectPath(handle);
    bindShortcut();
}

// Either the service behind the portal was restarted, or the user has taken the shortcut back. We
// ask once more; in the second case the answer is a refusal. A portal that ends one session after
// the other, before the shortcut was ever pressed, is asked no further until it is restarted.
void PortalShortcut::handleEnd(const QDBusMessage &end)
{
    if (!m_bus || end.path() != m_session.path()) {
        return; // it was refused, and asks no more; or a session from before has ended
    }
    m_session = {};
    if (std::exchange(m_hasEnded, true)) {
        giveUp(u"the desktop's portal has ended it"_s);
    } else {
        begin();
    }
}

void PortalShortcut::bindShortcut()
{
    const Shortcut mute{u"mute"_s,
                        {{u"description"_s, u"Mute or unmute the voice agent"_s},
                         {u"preferred_trigger"_s, u"LOGO+SHIFT+m"_s}}};
    const QString noParentWindow = u""_s;
    QDBusMessage binding = portalCall(shortcutsInterface, u"BindShortcuts"_s);
    binding << QVariant::fromValue(m_session) << QVariant::fromValue(QList<Shortcut>{mute})
            << noParentWindow << QVariantMap{{u"handle_token"_s, bindingToken}};
    call(binding, [this](bool failed) {
        if (failed) {
            giveUp(u"the desktop's portal does not bind it"_s);
        }
    });
}

void PortalShortcut::handleBinding(uint response)
{
    if (response != 0) {
        giveUp(u"the desktop's portal refused it"_s);
        m_portal.reset();
        m_bus.reset();
    } else {
        Q_EMIT bound();
    }
}

void PortalShortcut::handleActivation(const QDBusObjectPath &session)
{
    if (session == m_session) {
        m_hasEnded = false; // what serves, and ends later, may be asked for again
        Q_EMIT pressed();
    }
}

void PortalShortcut::call(const QDBusMessage &message, std::function<void(bool failed)> then)
{
    const auto *call = new QDBusPendingCallWatcher(m_bus->asyncCall(message), m_attempt.get());
    connect(call, &QDBusPendingCallWatcher::finished, m_attempt.get(),
            [then = std::move(then)](const QDBusPendingCallWatcher *finished) {
                then(finished->isError());
            });
}

void PortalShortcut::giveUp(const QString &reason)
{
    logOnce(reason);
    if (m_attempt) {
        m_attempt.release()->deleteLater(); // it may be a call of its own that has just failed
    }
}

void PortalShortcut::logOnce(const QString &reason)
{
    if (!std::exchange(m_logged, true)) {
        logNotHeard(reason);
        Q_EMIT notHeard();
    }
}

} // namespace ostrelle

#include "moc_PortalShortcut.cpp"
