#include "desktop/AccessibilityBus.h"

#include "support/Patience.h"
#include "support/Processes.h"

#include <QDBusArgument>
#include <QDBusMessage>
#include <QDBusVariant>
#include <QTest>

using namespace Qt::StringLiterals;

namespace
{

const QString accessibleInterface = u"org.a11y.atspi.Accessible"_s;
constexpr int deepest = 40;

} // namespace

AccessibilityBus::AccessibilityBus()
{
    m_launcher.start(u"/usr/libexec/at-spi-bus-launcher"_s, {u"--launch-immediately"_s});
    QString address;
    const bool isUp = QTest::qWaitFor(
        [&] {
            const QByteArray told =
                outputOf(u"dbus-send"_s,
                         {u"--session"_s, u"--print-reply=literal"_s, u"--dest=org.a11y.Bus"_s,
                          u"/org/a11y/bus"_s, u"org.a11y.Bus.GetAddress"_s});
            address = QString::fromUtf8(told).trimmed();
            return !address.isEmpty();
        },
        patienceMilliseconds);
    if (!isUp) {
        qFatal("no accessibility bus: %s", qPrintable(m_launcher.errorString()));
    }
    qputenv("QT_LINUX_ACCESSIBILITY_ALWAYS_ON", "1");
    m_bus = QDBusConnection::connectToBus(address, address);
}

AccessibilityBus::~AccessibilityBus()
{
    qunsetenv("QT_LINUX_ACCESSIBILITY_ALWAYS_ON");
    QDBusConnection::disconnectFromBus(m_bus->name());
    endProcess(m_launcher);
}

QList<AccessibilityBus::Control> AccessibilityBus::controls() const
{
    QList<Control> found;
    Control desktop;
    desktop.service = u"org.a11y.atspi.Registry"_s;
    desktop.path = u"/org/a11y/atspi/accessible/root"_s;
    for (const Control &application : children(desktop)) {
        collect(application, found, 0);
    }
    return found;
}

void AccessibilityBus::collect(const Control &parent, QList<Control> &found, int depth) const
{
    if (depth > deepest) {
        return;
    }
    for (Control control : children(parent)) {
        control.states =
            qdbus_cast<QList<uint>>(ask(control, accessibleInterface, u"GetState"_s)).value(0);
        if (!control.isShowing()) {
            continue;
        }
        control.role = ask(control, accessibleInterface, u"GetRoleName"_s).toString();
        const QVariant name = ask(control, u"org.freedesktop.DBus.Properties"_s, u"Get"_s,
                                  {accessibleInterface, u"Name"_s});
        control.name = name.value<QDBusVariant>().variant().toString();
        found.append(control);
        collect(control, found, depth + 1);
    }
}

std::optional<AccessibilityBus::Control> AccessibilityBus::focused() const
{
    std::optional<Control> found; // of those within one another the innermost
    for (const Control &control : controls()) {
        if (control.hasFocus()) {
            found = control;
        }
    }
    return found;
}

std::optional<QRect> AccessibilityBus::waitFor(const QString &name, const QString &role) const
{
    QRect found;
    const auto isThere = [&] {
        for (const Control &control : controls()) {
            if (control.name == name && (role.isEmpty() || control.role == role)) {
                const QRect last = std::exchange(found, place(control));
                return !found.isEmpty() && found == last; // it rests
            }
        }
        return false;
    };
    return QTest::qWaitFor(isThere, patienceMilliseconds) ? std::optional(found) : std::nullopt;
}

QString AccessibilityBus::text(const Control &field) const
{
    return ask(field, u"org.a11y.atspi.Text"_s, u"GetText"_s, {0, -1}).toString();
}

QList<AccessibilityBus::Control> AccessibilityBus::children(const Control &parent) const
{
    QList<Control> found;
    const QVariant told = ask(parent, accessibleInterface, u"GetChildren"_s);
    for (const auto &[service, path] : qdbus_cast<QList<QPair<QString, QDBusObjectPath>>>(told)) {
        found.append({.role = {}, .name = {}, .service = service, .path = path.path()});
    }
    return found;
}

QRect AccessibilityBus::place(const Control &control) const
{
    constexpr uint onTheScreen = 0;
    return qdbus_cast<QRect>(
        ask(control, u"org.a11y.atspi.Component"_s, u"GetExtents"_s, {onTheScreen}));
}

QVariant AccessibilityBus::ask(const Control &control, const QString &interface,
                               const QString &method, const QVariantList &arguments) const
{
    QDBusMessage message =
        QDBusMessage::createMethodCall(control.service, control.path, interface, method);
    message.setArguments(arguments);
    return m_bus->call(message, QDBus::Block, 5000).arguments().value(0);
}
