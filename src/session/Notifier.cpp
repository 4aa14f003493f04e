#include "session/Notifier.h"

#include "session/SessionBus.h"

namespace ostrelle
{

void showDesktopNotification(const QString &title, const QString &body)
{
    const auto bus = sessionBus();
    if (!bus) {
        return;
    }
    constexpr int serverDecidesTimeout = -1;
    GVariantBuilder actions;
    GVariantBuilder hints;
    g_variant_builder_init(&actions, G_VARIANT_TYPE("as"));
    g_variant_builder_init(&hints, G_VARIANT_TYPE("a{sv}"));
    // The service takes markup in the body; the text is meant as it stands.
    GVariant *parameters = g_variant_new(
        "(susssasa{sv}i)", "Ostrelle", 0U, "ai.duskrell.ostrelle", title.toUtf8().constData(),
        body.toHtmlEscaped().toUtf8().constData(), &actions, &hints, serverDecidesTimeout);

    BoundedCalls calls;
    calls.finish([&](GAsyncReadyCallback callback, gpointer data) {
        g_dbus_connection_call(bus->get(), "org.freedesktop.Notifications",
                               "/org/freedesktop/Notifications", "org.freedesktop.Notifications",
                               "Notify", parameters, G_VARIANT_TYPE("(u)"), G_DBUS_CALL_FLAGS_NONE,
                               -1, calls.cancellable(), callback, data);
    });
}

} // namespace ostrelle
