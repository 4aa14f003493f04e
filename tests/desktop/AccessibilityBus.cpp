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
        control.states = states(control);
        if (!control.isShowing()) {
            continue;
        }
        control.role =
            call(control, accessibleInterface, u"GetRoleName"_s).arguments().value(0).toString();
        control.name = property(control, accessibleInterface, u"Name"_s).toString();
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
    return call(field, u"org.a11y.atspi.Text"_s, u"GetText"_s, {0, -1})
        .arguments()
        .value(0)
        .toString();
}

QVariant AccessibilityBus::property(const Control &control, const QString &interface,
                                    const QString &name) const
{
    return call(control, u"org.freedesktop.DBus.Properties"_s, u"Get"_s, {interface, name})
        .arguments()
        .value(0)
        .value<QDBusVariant>()
        .variant();
}

QList<AccessibilityBus::Control> AccessibilityBus::children(const Control &parent) const
{
    QList<Control> found;
    const QVariant answer =
        call(parent, accessibleInterface, u"GetChildren"_s).arguments().value(0);
    if (!answer.canConvert<QDBusArgument>()) {
        return found;
    }
    const auto list = answer.value<QDBusArgument>();
    list.beginArray();
    while (!list.atEnd()) {
        Control child;
        QDBusObjectPath path;
        list.beginStructure();
        list >> child.service >> path;
        list.endStructure();
        child.path = path.path();
        found.append(child);
    }
    list.endArray();
    return found;
}

uint AccessibilityBus::states(const Control &control) const
{
    const QVariant answer = call(control, accessibleInterface, u"GetState"_s).arguments().value(0);
    QList<uint> words{0};
    if (answer.canConvert<QDBusArgument>()) {
        answer.value<QDBusArgument>() >> words;
    }
    return words.value(0);
}

QRect AccessibilityBus::place(const Control &control) const
{
    constexpr uint onTheScreen = 0;
    const QVariant answer =
        call(control, u"org.a11y.atspi.Component"_s, u"GetExtents"_s, {onTheScreen})
            .arguments()
            .value(0);
    int x = 0;
    int y = 0;
    int width = 0;
    int height = 0;
    if (answer.canConvert<QDBusArgument>()) {
        const auto extents = answer.value<QDBusArgument>();
        extents.beginStructure();
        extents >> x >> y >> width >> height;
        extents.endStructure();
    }
    return {x, y, width, height};
}

QDBusMessage AccessibilityBus::call(const Control &control, const QString &interface,
                                    const QString &method, const QVariantList &arguments) const
{
    QDBusMessage message =
        QDBusMessage::createMethodCall(control.service, control.path, interface, method);
    message.setArguments(arguments);
    return m_bus->call(message, QDBus::Block, 5000);
}
