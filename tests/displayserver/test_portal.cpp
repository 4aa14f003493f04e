#include "displayserver/PortalShortcut.h"
#include "platform/WorkPool.h"
#include "support/PrintedLines.h"
#include "support/PrivateSession.h"
#include "support/Rows.h"
#include "support/ScratchHome.h"

#include <QDBusConnectionInterface>
#include <QDBusVirtualObject>
#include <QSignalSpy>
#include <QTest>

using namespace ostrelle;
using namespace std::chrono_literals;
using namespace Qt::StringLiterals;

namespace
{

enum class Manner { Grants, Refuses, KnowsNothing, IsSilent, OpensNone, BindsNone, EndsEach };

const QString portalPath = u"/org/freedesktop/portal/desktop"_s;

// The desktop's portal, as far as the shortcut talks to it; on the bus while the object lives.
class Portal : public QDBusVirtualObject
{
public:
    explicit Portal(Manner manner)
        : m_manner(manner)
    {
        m_bus.registerVirtualObject(portalPath, this);
        m_bus.registerService(u"org.freedesktop.portal.Desktop"_s);
    }
    ~Portal() override { QDBusConnection::disconnectFromBus(m_bus.name()); }

    const QStringList &calls() const { return m_calls; }
    qsizetype bindings() const { return m_calls.count(portalPath + u"/session LOGO+SHIFT+m"_s); }
    bool clientIsThere() const { return m_bus.interface()->isServiceRegistered(m_client); }

    void activate(const QString &session) const
    {
        const QString interface = u"org.freedesktop.portal.GlobalShortcuts"_s;
        auto signal = QDBusMessage::createSignal(portalPath, interface, u"Activated"_s);
        signal << QVariant::fromValue(QDBusObjectPath(portalPath + session)) << u"mute"_s;
        m_bus.send(signal << qulonglong{1} << QVariantMap{});
    }

    void endSession() const
    {
        m_bus.send(QDBusMessage::createTargetedSignal(m_client, portalPath + u"/session"_s,
                                                      u"org.freedesktop.portal.Session"_s,
                                                      u"Closed"_s));
    }

    QString introspect(const QString & /*path*/) const override { return {}; }

    bool handleMessage(const QDBusMessage &message, const QDBusConnection & /*bus*/) override
    {
        m_client = message.service();
        m_calls << message.member();
        if (message.member() == "Register"_L1 || m_manner == Manner::KnowsNothing ||
            (message.member() == "BindShortcuts"_L1 && m_manner == Manner::BindsNone)) {
            m_bus.send(message.createErrorReply(QDBusError::UnknownMethod, {}));
        } else if (message.member() == "BindShortcuts"_L1) {
            const QVariantList given = message.arguments();
            const auto asked = qdbus_cast<QList<QPair<QString, QVariantMap>>>(given.at(1));
            m_calls << given.at(0).value<QDBusObjectPath>().path() + u' ' +
                           asked.value(0).second.value(u"preferred_trigger"_s).toString();
            respond(message, m_manner == Manner::Refuses ? 1 : 0);
            if (m_manner == Manner::Refuses || m_manner == Manner::EndsEach) {
                endSession(); // at once
            }
        } else if (m_manner != Manner::IsSilent) {
            respond(message, m_manner == Manner::OpensNone ? 2 : 0);
        }
        return true;
    }

private:
    // As early as it may come: the answer overtakes the reply to the call.
    void respond(const QDBusMessage &call, uint code)
    {
        const auto options = qdbus_cast<QVariantMap>(call.arguments().constLast());
        const QString path = portalPath + u"/request/"_s + m_client.mid(1).replace(u'.', u'_') +
                             u'/' + options.value(u"handle_token"_s).toString();
        auto answer = QDBusMessage::createTargetedSignal(
            m_client, path, u"org.freedesktop.portal.Request"_s, u"Response"_s);
        answer << code << QVariantMap{{u"session_handle"_s, portalPath + u"/session"_s}};
        m_bus.send(answer);
        m_bus.send(call.createReply(QVariant::fromValue(QDBusObjectPath(path))));
    }

    const Manner m_manner;
    QDBusConnection m_bus = QDBusConnection::connectToBus(QDBusConnection::SessionBus, u"portal"_s);
    QString m_client;
    QStringList m_calls;
};

} // namespace

class TestPortal : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void saysOnceWhyItIsNotHeard_data()
    {
        const Rows<std::optional<Manner>, QByteArray> row("manner", "reason");
        const QByteArray none = "the desktop has no GlobalShortcuts portal";
        row("no portal", {}, none);
        row("older portal", Manner::KnowsNothing, none);
        row("never answers", Manner::IsSilent, "the desktop's portal does not answer");
        row("opens none", Manner::OpensNone, "the desktop's portal opens no session");
        row("binds none", Manner::BindsNone, "the desktop's portal does not bind it");
        row("ends each", Manner::EndsEach, "the desktop's portal has ended it");
        row("the user refuses", Manner::Refuses, "the desktop's portal refused it");
    }

    void saysOnceWhyItIsNotHeard()
    {
        QFETCH(std::optional<Manner>, manner);
        QFETCH(QByteArray, reason);
        const PrintedLines lines;
        auto portal = manner ? std::make_unique<Portal>(*manner) : nullptr;
        const PortalShortcut shortcut(m_pool, manner == Manner::IsSilent ? 50ms : 20s);
        const QByteArray line = "[Ostrelle] Super+Shift+M is not heard: " + reason + '\n';
        QTRY_COMPARE(lines.text(), line);
        if (manner == Manner::Refuses) {
            QTRY_VERIFY(!portal->clientIsThere()); // and will not ask another one
            return;
        }
        portal.reset();
        portal = std::make_unique<Portal>(Manner::KnowsNothing);
        QTRY_VERIFY(portal->calls().contains(u"CreateSession"_s));
        portal.reset();
        portal = std::make_unique<Portal>(Manner::Grants);
        QTRY_COMPARE(portal->bindings(), 1);
        QCOMPARE(lines.text(), line);
    }

    void hearsWhatWasGrantedUntilTheBusEnds()
    {
        auto portal = std::make_unique<Portal>(Manner::Grants);
        PortalShortcut shortcut(m_pool);
        const QSignalSpy pressed(&shortcut, &GlobalShortcut::pressed);
        QTRY_COMPARE(portal->bindings(), 1);
        portal->endSession();
        QTRY_COMPARE(portal->bindings(), 2);
        portal->activate(u"/session_of_another_program"_s);
        portal->activate(u"/session"_s);
        QTRY_COMPARE(pressed.size(), 1);
        portal->endSession(); // of one that has served
        QTRY_COMPARE(portal->bindings(), 3);

        portal.reset();
        portal = std::make_unique<Portal>(Manner::Grants);
        QTRY_COMPARE(portal->bindings(), 1);
        QCOMPARE(portal->calls().mid(0, 2), QStringList({u"Register"_s, u"CreateSession"_s}));
        portal->endSession(); // of a portal that has ended none yet
        QTRY_COMPARE(portal->bindings(), 2);
        portal->activate(u"/session"_s);
        QTRY_COMPARE(pressed.size(), 2);

        m_session.endBus();
        QTRY_VERIFY(!QDBusConnection(u"portal"_s).isConnected());
    }

private:
    const ScratchHome m_home;
    PrivateSession m_session; // for all: a process knows one bus address
    WorkPool m_pool;
};

QTEST_GUILESS_MAIN(TestPortal)
#include "test_portal.moc"
