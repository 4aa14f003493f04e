#pragma once

#include "statusserver/Response.h"

#include <atomic>
#include <memory>

namespace ostrelle
{

// An answer that any number of clients are sent; it goes with the last of them.
using SharedResponse = std::shared_ptr<const Response>;

// Counts the bytes of the answers that are held in memory. Any thread.
class AnswerMemory
{
public:
    SharedResponse keep(Response response);

    std::size_t bytes() const { return *m_bytes; }

private:
    // Shared with the answers, which may outlive the object that counts them.
    const std::shared_ptr<std::atomic<std::size_t>> m_bytes =
        std::make_shared<std::atomic<std::size_t>>(0);
};

} // namespace ostrelle
