#pragma once

#include <QString>

namespace ostrelle
{

// Shows a banner through org.freedesktop.Notifications. Without a session bus or a service nothing
// appears. Blocks for at most two seconds: background threads only.
void showDesktopNotification(const QString &title, const QString &body);

} // namespace ostrelle
