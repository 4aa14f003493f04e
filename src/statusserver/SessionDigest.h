#pragma once

#include "statusserver/HistoryRecord.h"

#include <stop_token>
#include <string>
#include <vector>

namespace ostrelle
{

struct DigestOptions {
    int limit = 50; // the last so many records; not negative
    std::size_t blockBytes = std::size_t{64} * 1024;
    // A longer line does not count, whatever is in it: it would have to be held in memory whole.
    // Memory for one is taken only when there is one.
    std::size_t maxLineBytes = std::size_t{64} * 1024 * 1024;
    // Of all records together, in UTF-16 code units; the record that would exceed it and those
    // before it are left out. No text has more units than its line has bytes, so with these values
    // the last record always fits.
    qsizetype maxTextUnits = qsizetype{64} * 1024 * 1024;
};

// The last records of an open session log, oldest first, as if it had been read from its beginning:
// none when the file is not UTF-8 throughout or cannot be read. Needs memory for a block, the
// longest line and the records, all of them bounded, however long the log is. Ends early, without
// records, when `stop` is requested. Any thread.
std::vector<HistoryRecord> digestSessionLog(int file, const DigestOptions &options,
                                            const std::stop_token &stop);

// The JSON text {"messages": the records, "count": their number}.
std::string historyBody(const std::vector<HistoryRecord> &records);

} // namespace ostrelle
