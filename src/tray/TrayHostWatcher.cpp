#include "tray/TrayHostWatcher.h"

#include "tray/DesktopBus.h"

#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusReply>
#include <QDBusVariant>
#include <QGuiApplication>

#include <X11/Xlib.h>

namespace ostrelle
{

using namespace Qt::StringLiterals;

namespace
{

const QString watcherService = u"org.kde.StatusNotifierWatcher"_s;
const QString watcherPath = u"/StatusNotifierWatcher"_s;

constexpr std::chrono::seconds untilNextAttempt{10}; // to reach a bus that has ended

// Qt hears of an X11 tray over a connection of its own. An icon that is made before it has heard is
// docked, taken back and docked again, which not every tray follows.
constexpr std::chrono::milliseconds toolkitHearsIn{50};

// Plasma begins with an X11 tray that hands icons on to the real one, which comes later. An icon
// that goes that way has no tooltip, no sharpness, and no state in words.
constexpr std::chrono::seconds busHostPatience{10};

// A watcher that hung may be well again.
constexpr std::chrono::seconds hungIsAskedAgainIn{10};

bool hasBusHostOfItsOwn()
{
    return qEnvironmentVariable("XDG_CURRENT_DESKTOP").split(u':').contains(u"KDE"_s);
}

// Within the process.
QString connectionName(int number)
{
    return u"ostrelle_tray_%1"_s.arg(number);
}

Atom trayAtom(Display *display)
{
    const QByteArray name = "_NET_SYSTEM_TRAY_S" + QByteArray::number(DefaultScreen(display));
    return XInternAtom(display, name.constData(), False);
}

} // namespace

TrayHostWatcher::TrayHostWatcher(QObject *parent)
    : QObject(parent)
    , m_busHostComes(hasBusHostOfItsOwn())
{
    QTimer::singleShot(busHostPatience, this, [this] {
        m_busHostComes = false;
        update();
    });
    withSessionBus(this, [this](const QDBusConnection &bus) { watchBus(bus); });
    if (QGuiApplication::platformName() == "xcb"_L1) {
        watchX11();
    }
}

TrayHostWatcher::~TrayHostWatcher() = default;

void TrayHostWatcher::watchBus(const QDBusConnection &bus)
{
    if (!bus.isConnected()) {
        m_busHost = false;
        update();
        return;
    }
    m_watcherService = std::make_unique<QDBusServiceWatcher>(watcherService, bus);
    connect(m_watcherService.get(), &QDBusServiceWatcher::serviceOwnerChanged, this,
            &TrayHostWatcher::askBus);
    QDBusConnection connection = bus;
    for (const QString &signal :
         {u"StatusNotifierHostRegistered"_s, u"StatusNotifierHostUnregistered"_s}) {
        connection.connect(watcherService, watcherPath, watcherService, signal, this,
                           SLOT(askBus()));
    }
    connection.connect(QString(), u"/org/freedesktop/DBus/Local"_s, u"org.freedesktop.DBus.Local"_s,
                       u"Disconnected"_s, this, SLOT(handleBusEnd()));
    askBus();
}

void TrayHostWatcher::handleBusEnd()
{
    m_watcherService.reset();
    m_busHost = false;
    update();
    QTimer::singleShot(untilNextAttempt, this, &TrayHostWatcher::connectAgain);
}

// The process's own connection stays closed for good.
void TrayHostWatcher::connectAgain()
{
    QDBusConnection::disconnectFromBus(connectionName(m_connections)); // to the bus that has ended
    const auto connect = [name = connectionName(++m_connections)] {
        return QDBusConnection::connectToBus(QDBusConnection::SessionBus, name);
    };
    whenDone(utilityPool().run(connect), this, [this](QDBusConnection bus) {
        if (bus.isConnected()) {
            Q_EMIT busCameBack();
            watchBus(bus);
        } else {
            QTimer::singleShot(untilNextAttempt, this, &TrayHostWatcher::connectAgain);
        }
    });
}

void TrayHostWatcher::askBus()
{
    if (!m_watcherService) {
        return; // a last word of a bus that has ended
    }
    QDBusMessage question = QDBusMessage::createMethodCall(
        watcherService, watcherPath, u"org.freedesktop.DBus.Properties"_s, u"Get"_s);
    question << watcherService << u"IsStatusNotifierHostRegistered"_s;
    question.setAutoStartService(false);
    auto *const asked =
        new QDBusPendingCallWatcher(m_watcherService->connection().asyncCall(question), this);
    m_question = asked;
    connect(asked, &QDBusPendingCallWatcher::finished, this, [this, asked] {
        asked->deleteLater();
        if (asked == m_question) {
            takeAnswer(asked->reply());
        }
    });
}

void TrayHostWatcher::takeAnswer(const QDBusMessage &answer)
{
    const QDBusReply<QDBusVariant> reply(answer);
    // Qt will ask the same and wait for the answer: not of one who gives none.
    if (reply.error().type() == QDBusError::NoReply) {
        m_busHost.reset();
        QTimer::singleShot(hungIsAskedAgainIn, this, &TrayHostWatcher::askBus);
    } else {
        m_busHost = reply.isValid() && reply.value().variant().toBool();
    }
    update();
}

void TrayHostWatcher::watchX11()
{
    m_x11 = X11Connection::open([this](XEvent &event) {
        // A tray tells the root window that it has come; its own window's end tells that it went.
        if (event.type == ClientMessage || event.type == DestroyNotify) {
            QTimer::singleShot(toolkitHearsIn, this, &TrayHostWatcher::lookForX11Tray);
        }
    });
    if (m_x11) {
        XSelectInput(m_x11->display(), DefaultRootWindow(m_x11->display()), StructureNotifyMask);
        lookForX11Tray();
    }
}

void TrayHostWatcher::lookForX11Tray()
{
    Display *const display = m_x11->display();
    const Window tray = XGetSelectionOwner(display, trayAtom(display));
    m_x11Host = tray != None;
    if (m_x11Host) {
        XSelectInput(display, tray, StructureNotifyMask);
        XFlush(display);
    }
    update();
}

void TrayHostWatcher::update()
{
    const bool takesX11 = m_x11Host && !m_busHostComes;
    m_hostPresent = m_busHost.has_value() && (*m_busHost || takesX11);
}

} // namespace ostrelle

#include "moc_TrayHostWatcher.cpp"
