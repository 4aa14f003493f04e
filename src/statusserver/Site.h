#pragma once

#include "settings/Tokens.h"
#include "statusserver/Request.h"

#include <optional>
#include <stop_token>
#include <string>

namespace ostrelle
{

// What there is to be had. Knows no socket. Immutable, any thread.
class Site
{
public:
    Site(const OstrelleConfig &config, std::shared_ptr<const Tokens> tokens);

    // The file that is sent for a resource, in the file system's encoding; null where none is.
    const std::string *documentPath(Resource resource) const;

    // The whole answer with the last records of the newest session log. May wait for the secret
    // store and read gigabytes; ends early when `stop` is requested.
    std::string serveHistory(int limit, std::string_view requestText,
                             const std::stop_token &stop) const;

private:
    bool mayRead(std::string_view requestText) const;

    const OstrelleConfig m_config;
    const std::shared_ptr<const Tokens> m_tokens;
    // With the home directory in place.
    const std::string m_statusFile;
    const std::string m_trackerFile;
    const std::optional<std::string> m_cronFile;
    const std::string m_sessionsDirectory;
};

// The whole answer for a resource that is neither a document nor the history.
std::string fixedAnswer(Resource resource);

} // namespace ostrelle
