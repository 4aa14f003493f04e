#include "ServiceModes.h"

#include <algorithm>
#include <array>

namespace ostrelle::simulator
{

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace
{

constexpr qint64 floodBytes = 100'000'000;
constexpr qsizetype bodyNestingDepth = 100'000;

Delivery body(const QByteArray &text)
{
    return deliver({.body = text});
}

// Sends the client away, and answers it once it has come back under the other origin.
Delivery redirect(const Exchange &exchange)
{
    const QByteArray here = exchange.request.header("host");
    const QByteArray other = "http://localhost:" + here.split(':').last();
    const QByteArray there = exchange.redirectTo.isEmpty() ? other : exchange.redirectTo.toUtf8();
    if (there == "http://" + here) {
        return deliver(exchange.reply);
    }
    const QByteArray location = "Location: " + there + exchange.request.target + "\r\n";
    return {.bytes = Reply{.status = 302, .body = {}}.head(0, location)};
}

struct ServiceMode {
    QLatin1StringView name;
    Delivery (*deliver)(const Exchange &);
};

constexpr std::array serviceModes = {
    ServiceMode{
        "error"_L1,
        [](const Exchange & /*exchange*/) { return deliver(Reply::error(500, u"It broke"_s)); }},
    ServiceMode{
        "forbidden"_L1,
        [](const Exchange & /*exchange*/) { return deliver(Reply::error(403, u"Not you"_s)); }},
    ServiceMode{"trickle"_L1,
                [](const Exchange &exchange) {
                    return Delivery{.bytes = deliver(exchange.reply).bytes, .pause = 20ms};
                }},
    ServiceMode{
        "silent"_L1,
        [](const Exchange & /*exchange*/) { return Delivery{.bytes = {}, .isSilent = true}; }},
    ServiceMode{"cut"_L1, // in the middle of the body
                [](const Exchange &exchange) {
                    const QByteArray &whole = exchange.reply.body;
                    return Delivery{.bytes = exchange.reply.head() + whole.first(whole.size() / 2)};
                }},
    ServiceMode{"flood"_L1,
                [](const Exchange &exchange) {
                    return Delivery{.bytes = exchange.reply.head(floodBytes),
                                    .filler = QByteArray(65'536, 'x'),
                                    .fillerBytes = floodBytes};
                }},
    ServiceMode{"endless-headers"_L1,
                [](const Exchange & /*exchange*/) {
                    return Delivery{.bytes = "HTTP/1.1 200 OK\r\n",
                                    .filler =
                                        QByteArray("X-Filler: and one more\r\n").repeated(1024),
                                    .fillerBytes = floodBytes};
                }},
    ServiceMode{"wrong-length"_L1, // announces half of what it sends
                [](const Exchange &exchange) {
                    const Reply &reply = exchange.reply;
                    return Delivery{.bytes = reply.head(reply.body.size() / 2) + reply.body};
                }},
    ServiceMode{"redirect"_L1, &redirect},
    ServiceMode{"deep"_L1,
                [](const Exchange & /*exchange*/) {
                    return body(QByteArray(bodyNestingDepth, '[') +
                                QByteArray(bodyNestingDepth, ']'));
                }},
    ServiceMode{"surrogates"_L1,
                [](const Exchange & /*exchange*/) {
                    return body(R"({"choices":[{"message":{"content":"\ud83d!\udc00"}}]})");
                }},
    ServiceMode{"not-utf8"_L1,
                [](const Exchange & /*exchange*/) {
                    return body("{\"choices\":[{\"message\":{\"content\":\"\xff\xfe\xc3(\"}}]}");
                }},
    ServiceMode{"garbage"_L1,
                [](const Exchange & /*exchange*/) { return body("<html>It works!</html>"); }},
    ServiceMode{"empty"_L1, [](const Exchange & /*exchange*/) { return body({}); }},
    ServiceMode{"no-choices"_L1,
                [](const Exchange & /*exchange*/) { return body(R"({"choices":[]})"); }},
};

} // namespace

Delivery deliver(const Reply &reply)
{
    return {.bytes = reply.head() + reply.body};
}

Delivery deliverInMode(const QString &mode, const Exchange &exchange)
{
    const auto known = std::ranges::find(serviceModes, mode, &ServiceMode::name);
    return known != serviceModes.end() ? known->deliver(exchange) : deliver(exchange.reply);
}

bool isServiceMode(const QString &mode)
{
    return std::ranges::find(serviceModes, mode, &ServiceMode::name) != serviceModes.end();
}

} // namespace ostrelle::simulator
