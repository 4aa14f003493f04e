#pragma once

#include "platform/Files.h"
#include "statusserver/WatchedDescriptor.h"

#include <asio/steady_timer.hpp>
#include <chrono>
#include <functional>
#include <list>
#include <memory>

namespace ostrelle
{

// Sockets with nothing to do until they become ready; one that does not within the time limit is
// closed. All wait equally long, so the first to come is the first to go and one timer serves them
// all. It is left to run out when a socket becomes ready: nothing is set per request, and at most
// one idle wake-up follows the last client. I/O thread only.
class WaitingRoom
{
public:
    using WaitFor = WatchedDescriptor::wait_type;
    using Ready = std::move_only_function<void(Descriptor)>;

    WaitingRoom(asio::io_context &loop, std::chrono::milliseconds limit);

    // `ready` gets the socket back, from the loop.
    void enter(Descriptor socket, WaitFor event, Ready ready);

    // Closes the one that has waited longest; false when nobody waits.
    bool dropOldest();

private:
    struct Guest {
        WatchedDescriptor socket;
        std::chrono::steady_clock::time_point deadline;
        Ready ready;
        std::list<std::shared_ptr<Guest>>::iterator place;
    };

    void armTimer();
    void dropLate();

    asio::io_context &m_loop;
    const std::chrono::milliseconds m_limit;
    std::list<std::shared_ptr<Guest>> m_guests; // in the order of their deadlines
    asio::steady_timer m_timer;
    bool m_timerRuns = false;
};

} // namespace ostrelle
