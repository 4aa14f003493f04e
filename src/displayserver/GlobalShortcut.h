#pragma once

#include <QObject>

#include <memory>

namespace ostrelle
{

class WorkPool;

// Hears Super+Shift+M whatever window has the focus. Main thread only.
class GlobalShortcut : public QObject
{
    Q_OBJECT

public:
    // Listens through the portal in a Wayland session, else through the X server; null where there
    // is neither. When the shortcut cannot be heard, now or once the portal has answered, one log
    // line says why. What may wait for the portal's bus runs in `background`.
    static std::unique_ptr<GlobalShortcut> listen(WorkPool &background);

Q_SIGNALS:
    void pressed();

protected:
    GlobalShortcut() = default;

    static void logNotHeard(const QString &reason);
};

} // namespace ostrelle
