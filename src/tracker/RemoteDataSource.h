#pragma once

#include "tracker/FetchError.h"

#include <QByteArray>
#include <QString>

#include <chrono>
#include <expected>
#include <optional>

namespace ostrelle
{

struct FetchLimits {
    std::chrono::milliseconds request{2000}; // until the peer's next bytes
    std::chrono::milliseconds overall{2500}; // for the whole fetch
};

// The tracker documents of the machine that the configured gateway runs on. Every call loads the
// configuration afresh, so that a change of gateway takes effect with the next poll.
class RemoteDataSource
{
public:
    RemoteDataSource() = delete;

    // A peer that sends more is given up.
    static constexpr qsizetype maxBodyBytes = qsizetype{64} * 1024 * 1024;

    // True unless the gateway's URL contains "127.0.0.1" or "localhost", in this letter case.
    static bool isRemote();

    // What an endpoint such as "/status" is appended to: the same HTTPS origin below "/ostrelle",
    // or port 18794 of a plain-HTTP gateway's host. Absent for this machine.
    static std::optional<QString> statusBaseURL();

    // Fetches base + endpoint with the gateway's token; nothing from a base that has meanwhile
    // ceased to be the configured gateway's. Asks the secret store first: background threads only.
    static std::expected<QByteArray, FetchError> fetchRemoteData(const QString &base,
                                                                 const QString &endpoint);

    // The same with a token that is given, which goes to no other origin. Blocks for the overall
    // limit at most.
    static std::expected<QByteArray, FetchError> fetchWithToken(const QString &base,
                                                                const QString &endpoint,
                                                                const QString &token,
                                                                const FetchLimits &limits = {});
};

} // namespace ostrelle
