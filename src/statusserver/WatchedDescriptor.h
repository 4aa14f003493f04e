#pragma once

#include <asio/io_context.hpp>
#include <asio/posix/stream_descriptor.hpp>

namespace ostrelle
{

// A descriptor that an I/O loop watches for becoming ready.
using WatchedDescriptor = asio::posix::basic_stream_descriptor<asio::io_context::executor_type>;

} // namespace ostrelle
