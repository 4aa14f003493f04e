#pragma once

#include <asio/io_context.hpp>

namespace ostrelle
{

// Runs handlers until the loop is stopped. One that fails, for want of memory say, ends itself and
// not the thread.
void runUntilStopped(asio::io_context &loop);

} // namespace ostrelle
