#pragma once

#include "platform/Files.h"
#include "statusserver/WatchedDescriptor.h"

#include <asio/steady_timer.hpp>
#include <chrono>
#include <functional>
#include <map>
#include <memory>

namespace ostrelle
{

// Sockets with nothing to do until they become ready; one that does not before its deadline is
// closed. One timer serves them all. It is left to run out when a socket becomes ready: nothing is
// set per request, and at most one idle wake-up follows the last client. I/O thread only.
class WaitingRoom
{
public:
    using WaitFor = WatchedDescriptor::wait_type;
    using Deadline = std::chrono::steady_clock::time_point;
    using Ready = std::move_only_function<void(Descriptor)>;

    WaitingRoom(asio::io_context &loop, std::chrono::milliseconds limit);

    // Of one that comes now.
    Deadline newDeadline() const { return std::chrono::steady_clock::now() + m_limit; }

    // `ready` gets the socket back, from the loop. The deadline is a new one, or that of a guest
    // who comes back from its `ready` without a chance for others in between.
    void enter(Descriptor socket, WaitFor event, Deadline deadline, Ready ready);

    // Closes the one whose deadline comes first; false when nobody waits.
    bool dropOldest();

private:
    struct Guest {
        WatchedDescriptor socket;
        Ready ready;
        std::multimap<Deadline, std::shared_ptr<Guest>>::iterator place;
    };

    void armTimer();
    void dropLate();

    asio::io_context &m_loop;
    const std::chrono::milliseconds m_limit;
    std::multimap<Deadline, std::shared_ptr<Guest>> m_guests;
    asio::steady_timer m_timer;
    bool m_timerRuns = false;
};

} // namespace ostrelle
