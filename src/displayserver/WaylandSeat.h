#pragma once

#include <QObject>
#include <QSet>
#include <QTimer>

#include <cstdint>
#include <memory>

struct wl_display;
struct wl_registry;
class QSocketNotifier;

namespace ostrelle
{

// Whether the Wayland compositor has a seat: a keyboard and a pointer, even if nothing is plugged
// in. Qt's text fields end the process where there is none. Main thread only.
class WaylandSeat : public QObject
{
    Q_OBJECT

public:
    // A connection of its own to the compositor that WAYLAND_DISPLAY names; null when it cannot be
    // reached. Nothing is known of seats before the event loop runs.
    static std::unique_ptr<WaylandSeat> watch();
    ~WaylandSeat() override;

    bool isPresent() const { return m_isPresent; }

Q_SIGNALS:
    void appeared();

private:
    struct Listener;
    explicit WaylandSeat(wl_display *display);
    void handleEvents();
    void tell();

    wl_display *const m_display;
    wl_registry *const m_registry;
    QSocketNotifier *m_notifier;
    QTimer m_toolkitHears;
    QSet<std::uint32_t> m_seats; // the compositor's numbers of them
    bool m_isPresent = false;
};

} // namespace ostrelle
