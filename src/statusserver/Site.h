#pragma once

#include "settings/Tokens.h"
#include "statusserver/Request.h"
#include "statusserver/Response.h"

#include <optional>
#include <stop_token>
#include <string>

namespace ostrelle
{

// Turns a request into its answer. Knows no socket; everything is read afresh for every request.
// Immutable, any thread.
class Site
{
public:
    // Larger documents are not read on the thread that serves everybody.
    static constexpr std::size_t maxQuickBytes = std::size_t{1024} * 1024;

    Site(const OstrelleConfig &config, std::shared_ptr<const Tokens> tokens);

    // Puts the answer into `response`, whose memory is used again, unless it may take long: then
    // the result is false and answerSlowly() must be asked on a thread that may wait.
    bool answerQuickly(const Route &route, Response &response) const;

    // May wait for the secret store and read gigabytes; ends early when `stop` is requested.
    Response answerSlowly(const Route &route, std::string_view requestText,
                          const std::stop_token &stop) const;

    // The whole answer with the last records of the newest session log.
    std::string serveHistory(int limit, std::string_view requestText,
                             const std::stop_token &stop) const;

private:
    const std::string *documentPath(Resource resource) const;
    bool mayRead(std::string_view requestText) const;

    const OstrelleConfig m_config;
    const std::shared_ptr<const Tokens> m_tokens;
    // In the file system's encoding, with the home directory in place.
    const std::string m_statusFile;
    const std::string m_trackerFile;
    const std::optional<std::string> m_cronFile;
    const std::string m_sessionsDirectory;
};

} // namespace ostrelle
