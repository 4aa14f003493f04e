#pragma once

#include <asio/io_context.hpp>
#include <exception>

namespace ostrelle
{

// Runs handlers until the loop is stopped. One that fails, for want of memory say, ends itself and
// not the thread.
void runUntilStopped(asio::io_context &loop);

// Logs that one request ended that way.
void logDropped(const std::exception &error);

} // namespace ostrelle
