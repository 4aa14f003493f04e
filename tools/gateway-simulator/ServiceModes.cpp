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

struct ServiceMode {
    QLatin1StringView name;
    Delivery (*deliver)(const Reply &);
};

constexpr std::array serviceModes = {
    ServiceMode{"error"_L1,
                [](const Reply & /*reply*/) { return deliver(Reply::error(500, u"It broke"_s)); }},
    ServiceMode{
        "trickle"_L1,
        [](const Reply &reply) { return Delivery{.bytes = deliver(reply).bytes, .pause = 20ms}; }},
    ServiceMode{"silent"_L1,
                [](const Reply & /*reply*/) { return Delivery{.bytes = {}, .isSilent = true}; }},
    ServiceMode{"cut"_L1, // in the middle of the body
                [](const Reply &reply) {
                    return Delivery{.bytes =
                                        reply.head() + reply.body.first(reply.body.size() / 2)};
                }},
    ServiceMode{"flood"_L1,
                [](const Reply &reply) {
                    return Delivery{.bytes = reply.head(floodBytes),
                                    .filler = QByteArray(65'536, 'x'),
                                    .fillerBytes = floodBytes};
                }},
    ServiceMode{"endless-headers"_L1,
                [](const Reply & /*reply*/) {
                    return Delivery{.bytes = "HTTP/1.1 200 OK\r\n",
                                    .filler =
                                        QByteArray("X-Filler: and one more\r\n").repeated(1024),
                                    .fillerBytes = floodBytes};
                }},
    ServiceMode{"deep"_L1,
                [](const Reply & /*reply*/) {
                    return deliver({.body = QByteArray(bodyNestingDepth, '[') +
                                            QByteArray(bodyNestingDepth, ']')});
                }},
};

} // namespace

Delivery deliver(const Reply &reply)
{
    return {.bytes = reply.head() + reply.body};
}

Delivery deliverInMode(const QString &mode, const Reply &reply)
{
    const auto known = std::ranges::find(serviceModes, mode, &ServiceMode::name);
    return known != serviceModes.end() ? known->deliver(reply) : deliver(reply);
}

} // namespace ostrelle::simulator
