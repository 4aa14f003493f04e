#include "statusserver/ServedDocument.h"

#include "platform/Files.h"
#include "statusserver/Document.h"
#include "statusserver/RunLoop.h"

#include <asio/post.hpp>
#include <utility>

namespace ostrelle
{

namespace
{

// Larger ones are kept only as long as somebody reads them.
constexpr std::size_t maxKeptBytes = std::size_t{1024} * 1024 + 4096;

Response missingDocument()
{
    return {jsonResponse("404 Not Found", R"({"error":"file not found"})")};
}

std::optional<LoadedDocument> load(const std::string &path)
{
    try {
        return loadDocument(path, maxDocumentBytes);
    } catch (const std::exception &error) {
        logDropped(error);
        return std::nullopt;
    }
}

} // namespace

ServedDocument::ServedDocument(asio::io_context &loop, std::string path, AnswerMemory &memory,
                               std::chrono::milliseconds patience, RunSlowly runSlowly)
    : m_loop(loop)
    , m_path(std::move(path))
    , m_memory(memory)
    , m_patience(patience)
    , m_runSlowly(std::move(runSlowly))
{
}

SharedResponse ServedDocument::atHand() const
{
    SharedResponse last = m_version ? m_last.lock() : nullptr;
    return last && versionInMemory(m_path) == m_version ? last : nullptr;
}

void ServedDocument::wait(Take take)
{
    const auto now = std::chrono::steady_clock::now();
    const auto isLate = [&](const std::deque<Waiting> &queue) {
        return !queue.empty() && queue.front().since + m_patience < now;
    };
    while (isLate(m_servedNext) || isLate(m_waiting)) {
        dropOldest();
    }
    m_waiting.push_back({now, std::move(take)});
    if (!m_reads) {
        read();
    }
}

bool ServedDocument::dropOldest()
{
    auto &queue = m_servedNext.empty() ? m_waiting : m_servedNext;
    if (queue.empty()) {
        return false;
    }
    queue.pop_front();
    return true;
}

void ServedDocument::read()
{
    m_runSlowly([this, path = m_path](const std::stop_token & /*stop*/) {
        asio::post(m_loop, [this, loaded = load(path)]() mutable { finish(std::move(loaded)); });
    });
    m_reads = true;
    m_servedNext = std::exchange(m_waiting, {});
}

void ServedDocument::finish(std::optional<LoadedDocument> loaded)
{
    auto served = std::exchange(m_servedNext, {});
    m_reads = false;
    const auto version = loaded ? loaded->version : std::nullopt;
    const SharedResponse answer =
        m_memory.keep(loaded ? std::move(loaded->response) : missingDocument());
    m_last = answer;
    m_version = version;
    m_kept = answer->storage.size() <= maxKeptBytes ? answer : nullptr;
    for (Waiting &client : served) {
        try {
            client.take(answer);
        } catch (const std::exception &error) {
            logDropped(error);
        }
    }
    if (!m_waiting.empty()) {
        read();
    }
}

} // namespace ostrelle
