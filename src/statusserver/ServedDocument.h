#pragma once

#include "statusserver/AnswerMemory.h"
#include "statusserver/FileVersion.h"
#include "statusserver/Workers.h"

#include <chrono>
#include <deque>
#include <functional>
#include <string>

namespace ostrelle
{

struct LoadedDocument;

// One document and the clients that want it. Its bytes are in memory once, for all of them, and
// stay there, if they are few, for as long as the file does not change. I/O thread only.
class ServedDocument
{
public:
    // Runs a task on a thread that may wait.
    using RunSlowly = std::function<void(Workers::Task)>;
    using Take = std::move_only_function<void(SharedResponse)>;

    // An answer for which a client has waited longer than `patience` is given up when the next one
    // comes to wait. `path` is in the file system's encoding.
    ServedDocument(asio::io_context &loop, std::string path, AnswerMemory &memory,
                   std::chrono::milliseconds patience, RunSlowly runSlowly);

    // The answer as the file is now, when nobody has to wait for that; else null.
    SharedResponse atHand() const;

    // Reads the file and hands over the answer, from the loop. A read that is under way already is
    // too old for who comes now: the next one serves all who have come meanwhile.
    void wait(Take take);

    // Forgets whoever has waited longest; false when nobody waits.
    bool dropOldest();

private:
    struct Waiting {
        std::chrono::steady_clock::time_point since;
        Take take;
    };

    void read();
    void finish(std::optional<LoadedDocument> loaded);

    asio::io_context &m_loop;
    const std::string m_path;
    AnswerMemory &m_memory;
    const std::chrono::milliseconds m_patience;
    const RunSlowly m_runSlowly;
    std::weak_ptr<const Response> m_last; // what was read last
    SharedResponse m_kept;                // the same if it is small
    std::optional<FileVersion> m_version; // of that
    bool m_reads = false;
    std::deque<Waiting> m_servedNext; // by the read that is under way
    std::deque<Waiting> m_waiting;    // for the one after it
};

} // namespace ostrelle
