#include "statusserver/WaitingRoom.h"

namespace ostrelle
{

WaitingRoom::WaitingRoom(asio::io_context &loop)
    : m_loop(loop)
    , m_timer(loop)
{
}

void WaitingRoom::enter(Descriptor socket, WaitFor event, Deadline deadline, Ready ready)
{
    WatchedDescriptor watched(m_loop);
    asio::error_code error;
    watched.assign(socket.get(), error);
    if (error) {
        return;
    }
    static_cast<void>(socket.release()); // `watched` owns it now
    auto guest = std::make_shared<Guest>(std::move(watched), std::move(ready), m_guests.end());
    guest->place = m_guests.emplace(deadline, guest);
    guest->socket.async_wait(event, [this, guest](const asio::error_code &failure) {
        // Who was shown the door has left already, even if the socket became ready meanwhile.
        if (guest->socket.is_open()) {
            m_guests.erase(guest->place);
            Descriptor own(guest->socket.release());
            if (!failure) {
                guest->ready(std::move(own));
            }
        }
    });
    armTimer();
}

bool WaitingRoom::dropOldest()
{
    if (m_guests.empty()) {
        return false;
    }
    const auto guest = m_guests.begin()->second;
    m_guests.erase(m_guests.begin());
    asio::error_code ignored;
    guest->socket.close(ignored);
    guest->ready = nullptr; // the loop still holds the guest for a moment
    return true;
}

void WaitingRoom::armTimer()
{
    if (m_guests.empty() || (m_timerRuns && m_timer.expiry() <= m_guests.begin()->first)) {
        return;
    }
    m_timerRuns = true;
    m_timer.expires_at(m_guests.begin()->first);
    m_timer.async_wait([this](const asio::error_code &error) {
        if (!error) { // else it was set anew
            m_timerRuns = false;
            dropLate();
            armTimer();
        }
    });
}

void WaitingRoom::dropLate()
{
    const auto now = std::chrono::steady_clock::now();
    while (!m_guests.empty() && m_guests.begin()->first <= now) {
        dropOldest();
    }
}

} // namespace ostrelle
