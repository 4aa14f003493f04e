#pragma once

#include <cstddef>
#include <optional>
#include <stop_token>
#include <string_view>
#include <sys/types.h>
#include <vector>

namespace ostrelle
{

// The lines of a file from the last to the first, read in blocks from its end; only as much is read
// as lines are asked for.
class BackwardLines
{
public:
    struct Limits {
        std::size_t blockBytes;
        // Longer lines are passed over, so that one monstrous line cannot fill the memory.
        std::size_t maxLineBytes;
    };

    // Reads what stands before `end`.
    BackwardLines(int file, off_t end, Limits limits, std::stop_token stop);

    // The next line towards the beginning, without its line break; nothing when there is none, when
    // the file cannot be read any more or when `stop` was requested. The view holds until the next
    // call.
    std::optional<std::string_view> next();

    // True when the lines ended early: the file shrank, could not be read, or `stop` was requested.
    bool failed() const { return m_failed; }

private:
    std::optional<std::string_view> takeLineAfter(const char *lineBreak);
    bool readBlock();
    void makeRoom(std::size_t bytes);

    const int m_file;
    const Limits m_limits;
    const std::stop_token m_stop;

    // The bytes that were read and not yet handed out stand at [m_begin, m_end) of the buffer, as
    // far right as they can; those from m_searchEnd on are known to hold no line break.
    std::vector<char> m_buffer;
    std::size_t m_begin;
    std::size_t m_end;
    std::size_t m_searchEnd;
    off_t m_offset; // of m_begin in the file
    bool m_tooLong = false;
    bool m_atStart = false;
    bool m_failed = false;
};

} // namespace ostrelle
