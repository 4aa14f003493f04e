#pragma once

#include <QString>

namespace ostrelle
{

// Above whatever Ostrelle tells.
inline const QString notificationTitle = QStringLiteral("OSTRELLE");

// Short desktop notifications. Shown by the system's script runner where there is one, else by the
// desktop's notification service.
class NotificationManager
{
public:
    NotificationManager() = delete;

    // Fire and forget; any thread.
    static void send(const QString &title, const QString &body);

    // The one-line script that shows the banner; both texts are escaped for its string literals.
    static QString script(const QString &title, const QString &body);
};

} // namespace ostrelle
