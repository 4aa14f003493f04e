#include "statusserver/Site.h"

#include "core/ExpandPath.h"
#include "platform/Files.h"
#include "platform/Paths.h"
#include "statusserver/Response.h"
#include "statusserver/SessionDigest.h"
#include "statusserver/SessionLog.h"

#include <QFile>

namespace ostrelle
{

using namespace Qt::StringLiterals;

namespace
{

constexpr std::string_view ok = "200 OK";
constexpr std::string_view notFound = "404 Not Found";

std::string encodedPath(const QString &path)
{
    return QFile::encodeName(expandPath(path)).toStdString();
}

// How long the comparison takes tells nothing about the token but its length.
bool equalInConstantTime(std::string_view a, std::string_view b)
{
    if (a.size() != b.size()) {
        return false;
    }
    unsigned difference = 0;
    for (std::size_t i = 0; i < a.size(); ++i) {
        difference |= static_cast<unsigned char>(a[i]) ^ static_cast<unsigned char>(b[i]);
    }
    return difference == 0;
}

std::string emptyHistory()
{
    return jsonResponse(ok, R"({"messages":[],"count":0})");
}

} // namespace

Site::Site(const OstrelleConfig &config, std::shared_ptr<const Tokens> tokens)
    : m_config(config)
    , m_tokens(std::move(tokens))
    , m_statusFile(encodedPath(config.paths.statusFile))
    , m_trackerFile(encodedPath(config.paths.trackerFile))
    , m_cronFile(config.paths.cronFile ? std::optional(encodedPath(*config.paths.cronFile))
                                       : std::nullopt)
    , m_sessionsDirectory(encodedPath(u"~/.duskrell/agents/main/sessions"_s))
{
}

std::string fixedAnswer(Resource resource)
{
    switch (resource) {
    case Resource::Preflight:
        return corsResponse("204 No Content", "");
    case Resource::Health:
        return jsonResponse(ok, R"({"ok":true})");
    case Resource::Cron: // without a cron file
        return jsonResponse(ok, R"({"version":1,"updated":"","jobs":[]})");
    case Resource::AgentStatus:
    case Resource::Projects:
    case Resource::History:
    case Resource::Unknown:
        break;
    }
    return jsonResponse(notFound, R"({"error":"not found"})");
}

std::string Site::serveHistory(int limit, std::string_view requestText,
                               const std::stop_token &stop) const
{
    if (!mayRead(requestText)) {
        return jsonResponse("401 Unauthorized", R"({"error":"Unauthorized"})");
    }
    const auto path = newestSessionLog(m_sessionsDirectory);
    const auto log = openRegular(path.value_or(std::string()));
    if (!log) {
        return emptyHistory();
    }
    return jsonResponse(
        ok, historyBody(digestSessionLog(log->descriptor.get(), {.limit = limit}, stop)));
}

const std::string *Site::documentPath(Resource resource) const
{
    switch (resource) {
    case Resource::AgentStatus:
        return &m_statusFile;
    case Resource::Projects:
        return &m_trackerFile;
    case Resource::Cron:
        return m_cronFile ? &*m_cronFile : nullptr;
    case Resource::Preflight:
    case Resource::History:
    case Resource::Health:
    case Resource::Unknown:
        break;
    }
    return nullptr;
}

// Without a token everybody may; while a store does not say whether there is one, nobody.
bool Site::mayRead(std::string_view requestText) const
{
    const auto resolved = m_tokens->resolve(m_config);
    if (!resolved) {
        return false;
    }
    const std::string token = resolved->toStdString();
    return token.empty() || equalInConstantTime(offeredToken(requestText), token);
}

} // namespace ostrelle
