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
// closed. One timer serves them all. It is left to run out when a socket becomes ready: it is set
// for hardly any request, and at most one idle wake-up follows the last client. I/O thread only.
class WaitingRoom
{
public:
    using WaitFor = WatchedDescriptor::wait_type;
    using Deadline = std::chrono::steady_clock::time_point;
    using Ready = std::move_only_function<void(Descriptor)>;

    explicit WaitingRoom(asio::io_context &loop);

    // `ready` gets the socket back, from the loop.
    void enter(Descriptor socket, WaitFor event, Deadline deadline, Ready ready);

    // Closes the one whose deadline comes first, and lets go of what its `ready` holds; false when
    // nobody waits.
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
    std::multimap<Deadline, std::shared_ptr<Guest>> m_guests;
    asio::steady_timer m_timer;
    bool m_timerRuns = false; // until a time that is no later than the first deadline
};

} // namespace ostrelle
