#include "displayserver/WaylandSeat.h"

#include <QSocketNotifier>

#include <cstring>
#include <wayland-client.h>

namespace ostrelle
{

namespace
{

// The toolkit is told of a new seat at the same moment, on another connection.
constexpr std::chrono::milliseconds toolkitHearsIn{50};

} // namespace

struct WaylandSeat::Listener {
    static void add(void *data, wl_registry * /*registry*/, std::uint32_t number,
                    const char *interface, std::uint32_t /*version*/)
    {
        if (std::strcmp(interface, wl_seat_interface.name) == 0) {
            auto *const watcher = static_cast<WaylandSeat *>(data);
            watcher->m_seats.insert(number);
            watcher->m_toolkitHears.start();
        }
    }

    static void remove(void *data, wl_registry * /*registry*/, std::uint32_t number)
    {
        auto *const watcher = static_cast<WaylandSeat *>(data);
        watcher->m_seats.remove(number);
        watcher->m_isPresent = watcher->m_isPresent && !watcher->m_seats.isEmpty();
    }

    static constexpr wl_registry_listener functions{&add, &remove};
};

std::unique_ptr<WaylandSeat> WaylandSeat::watch()
{
    wl_display *const display = wl_display_connect(nullptr);
    return display != nullptr ? std::unique_ptr<WaylandSeat>(new WaylandSeat(display)) : nullptr;
}

WaylandSeat::WaylandSeat(wl_display *display)
    : m_display(display)
    , m_registry(wl_display_get_registry(display))
    , m_notifier(new QSocketNotifier(wl_display_get_fd(display), QSocketNotifier::Read, this))
{
    m_toolkitHears.setSingleShot(true);
    m_toolkitHears.setInterval(toolkitHearsIn);
    connect(&m_toolkitHears, &QTimer::timeout, this, &WaylandSeat::tell);
    connect(m_notifier, &QSocketNotifier::activated, this, &WaylandSeat::handleEvents);
    wl_registry_add_listener(m_registry, &Listener::functions, this);
    wl_display_flush(display);
}

WaylandSeat::~WaylandSeat()
{
    wl_registry_destroy(m_registry);
    wl_display_disconnect(m_display);
}

void WaylandSeat::handleEvents()
{
    if (wl_display_dispatch(m_display) < 0) {
        m_notifier->setEnabled(false); // the compositor is gone
    }
    wl_display_flush(m_display);
}

void WaylandSeat::tell()
{
    if (!m_isPresent && !m_seats.isEmpty()) {
        m_isPresent = true;
        Q_EMIT appeared();
    }
}

} // namespace ostrelle

#include "moc_WaylandSeat.cpp"
