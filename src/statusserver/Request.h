#pragma once

#include <string>
#include <string_view>

namespace ostrelle
{

// What one receive brought, taken apart; the views point into the received bytes. Nothing is
// refused: an empty or garbled request asks for "/".
struct Request {
    std::string_view text; // the whole request; empty when the bytes are not UTF-8
    std::string_view method;
    std::string_view path = "/";
    std::string_view query; // what follows the target's first "?"
};

Request parseRequest(std::string_view received);

// The value of the authorisation line behind "Bearer ", as UTF-8; empty without such a line. The
// header's name may be in any letter case, "Bearer " only as written. What follows the first empty
// line is no header: a web page may choose it without asking anybody.
std::string offeredToken(std::string_view text);

enum class Resource { Preflight, AgentStatus, Projects, Cron, History, Health, Unknown };

struct Route {
    Resource resource = Resource::Unknown;
    int limit = 0; // of the history: how many records, 0 to 200

    friend bool operator==(const Route &, const Route &) = default;
};

// What a request asks for. The method matters for the preflight only.
Route route(const Request &request);

} // namespace ostrelle
