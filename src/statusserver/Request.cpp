#include "statusserver/Request.h"

#include <QByteArray>
#include <QString>

#include <algorithm>
#include <charconv>
#include <ranges>
#include <simdjson.h>

namespace ostrelle
{

namespace
{

constexpr std::string_view lineBreak = "\r\n";
constexpr std::string_view limitKey = "limit=";
constexpr int defaultLimit = 50;
constexpr int maxLimit = 200;

// Takes the next word off the front of a line; words are parted by any number of spaces.
std::string_view takeWord(std::string_view &line)
{
    line.remove_prefix(std::min(line.find_first_not_of(' '), line.size()));
    const std::string_view word = line.substr(0, line.find(' '));
    line.remove_prefix(word.size());
    return word;
}

// A number that is too large for an int is still a number.
int parseLimit(std::string_view value)
{
    const bool negative = value.starts_with('-');
    if (negative || value.starts_with('+')) {
        value.remove_prefix(1);
    }
    unsigned number = 0;
    const auto *const end = value.data() + value.size();
    const auto [stop, error] = std::from_chars(value.data(), end, number);
    if (stop != end || error == std::errc::invalid_argument) {
        return defaultLimit;
    }
    if (negative) {
        return 0;
    }
    const bool huge = error == std::errc::result_out_of_range;
    return huge ? maxLimit : static_cast<int>(std::min<unsigned>(number, maxLimit));
}

int historyLimit(std::string_view query)
{
    for (const auto piece : query | std::views::split('&')) {
        const std::string_view text(piece);
        if (text.starts_with(limitKey)) {
            return parseLimit(text.substr(limitKey.size()));
        }
    }
    return defaultLimit;
}

bool startsWithIgnoringCase(std::string_view line, std::string_view lowerCasePrefix)
{
    return line.size() >= lowerCasePrefix.size() &&
           std::ranges::equal(line.substr(0, lowerCasePrefix.size()), lowerCasePrefix, {},
                              [](char c) { return c >= 'A' && c <= 'Z' ? c - 'A' + 'a' : c; });
}

// White space inside a line; line breaks are not trimmed.
bool isBlank(QChar c)
{
    return c == u'\t' || c.category() == QChar::Separator_Space;
}

std::string trimBlanks(std::string_view text)
{
    const QString wide = QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size()));
    const auto begin = std::ranges::find_if_not(wide, isBlank);
    const auto end = std::find_if_not(wide.crbegin(), std::make_reverse_iterator(begin), isBlank);
    return QStringView(begin, end.base()).toUtf8().toStdString();
}

} // namespace

Request parseRequest(std::string_view received)
{
    Request request;
    if (!simdjson::validate_utf8(received.data(), received.size())) {
        return request;
    }
    request.text = received;
    std::string_view line = received.substr(0, received.find(lineBreak));
    request.method = takeWord(line);
    if (const std::string_view target = takeWord(line); !target.empty()) {
        const std::size_t mark = target.find('?');
        request.path = target.substr(0, mark);
        request.query = mark == target.npos ? std::string_view() : target.substr(mark + 1);
    }
    return request;
}

std::string offeredToken(std::string_view text)
{
    constexpr std::string_view scheme = "Bearer ";
    for (const auto piece : text | std::views::split(lineBreak)) {
        const std::string_view line(piece);
        if (line.empty()) {
            break;
        }
        if (startsWithIgnoringCase(line, "authorization:")) {
            const std::size_t last = line.rfind(scheme);
            return trimBlanks(last == line.npos ? line : line.substr(last + scheme.size()));
        }
    }
    return {};
}

Route route(const Request &request)
{
    const std::string_view path = request.path;
    if (request.method == "OPTIONS") {
        return {Resource::Preflight};
    }
    if (path == "/" || path == "/status") {
        return request.query.contains(limitKey)
                   ? Route{Resource::History, historyLimit(request.query)}
                   : Route{Resource::AgentStatus};
    }
    if (path == "/tracker" || path == "/projects") {
        return {Resource::Projects};
    }
    if (path == "/cron") {
        return {Resource::Cron};
    }
    if (path == "/history") {
        return {Resource::History, historyLimit(request.query)};
    }
    return {path == "/health" ? Resource::Health : Resource::Unknown};
}

} // namespace ostrelle
