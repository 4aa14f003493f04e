#include "statusserver/BackwardLines.h"

#include "statusserver/FileReading.h"

#include <algorithm>
#include <cstring>

namespace ostrelle
{

BackwardLines::BackwardLines(int file, off_t end, Limits limits, std::stop_token stop)
    : m_file(file)
    , m_limits(limits)
    , m_stop(std::move(stop))
    , m_buffer(limits.blockBytes)
    , m_begin(limits.blockBytes)
    , m_end(limits.blockBytes)
    , m_searchEnd(limits.blockBytes)
    , m_offset(end)
{
}

std::optional<std::string_view> BackwardLines::next()
{
    while (!m_atStart && !m_failed) {
        const void *const lineBreak =
            ::memrchr(m_buffer.data() + m_begin, '\n', m_searchEnd - m_begin);
        if (lineBreak) {
            if (const auto line = takeLineAfter(static_cast<const char *>(lineBreak))) {
                return line;
            }
        } else if (m_offset > 0) {
            m_searchEnd = m_begin;
            m_failed = m_stop.stop_requested() || !readBlock();
        } else {
            m_atStart = true;
            const std::string_view first(m_buffer.data() + m_begin, m_end - m_begin);
            return m_tooLong || first.size() > m_limits.maxLineBytes ? std::nullopt
                                                                     : std::optional(first);
        }
    }
    return std::nullopt;
}

// Nothing when the line is too long.
std::optional<std::string_view> BackwardLines::takeLineAfter(const char *lineBreak)
{
    const std::string_view line(lineBreak + 1, m_buffer.data() + m_end);
    const bool tooLong = m_tooLong || line.size() > m_limits.maxLineBytes;
    m_end = static_cast<std::size_t>(lineBreak - m_buffer.data());
    m_searchEnd = m_end;
    m_tooLong = false;
    return tooLong ? std::nullopt : std::optional(line);
}

// Puts one more block before the bytes that are there.
bool BackwardLines::readBlock()
{
    if (m_end - m_begin > m_limits.maxLineBytes) {
        m_tooLong = true;
    }
    if (m_tooLong) {
        m_end = m_begin;
    }
    const std::size_t bytes = std::min(m_limits.blockBytes, static_cast<std::size_t>(m_offset));
    if (m_begin < bytes) {
        makeRoom(bytes);
    }
    const off_t offset = m_offset - static_cast<off_t>(bytes);
    const std::span room(m_buffer.data() + m_begin - bytes, bytes);
    if (readAt(m_file, room, offset, bytes) != bytes) {
        return false;
    }
    m_begin -= bytes;
    m_offset = offset;
    return true;
}

// Moves the pending bytes to the right end, in a buffer of twice the size if it must be.
void BackwardLines::makeRoom(std::size_t bytes)
{
    const std::size_t pending = m_end - m_begin;
    const std::size_t needed = bytes + pending;
    std::size_t usable = m_buffer.size();
    if (needed > usable) {
        const std::size_t mostEverNeeded = m_limits.maxLineBytes + 2 * m_limits.blockBytes;
        usable = std::max(needed, std::min(needed + pending, mostEverNeeded));
        std::vector<char> larger(usable);
        std::copy_n(m_buffer.data() + m_begin, pending, larger.data() + usable - pending);
        m_buffer = std::move(larger);
    } else {
        std::memmove(m_buffer.data() + usable - pending, m_buffer.data() + m_begin, pending);
    }
    m_end = usable;
    m_begin = usable - pending;
    m_searchEnd = m_begin;
}

} // namespace ostrelle
