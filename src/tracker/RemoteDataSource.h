#pragma once

#include "tracker/FetchError.h"

#include <QByteArray>
#include <QString>

#include <chrono>
#include <expected>
#include <optional>

namespace ostrelle
{

// The tracker documents of the machine that the configured gateway runs on. Every call loads the
// configuration afresh, so that a change of gateway takes effect with the next poll.
class RemoteDataSource
{
public:
    RemoteDataSource() = delete;

    // Until the peer's next bytes, and for the whole fetch.
    static constexpr std::chrono::milliseconds requestTimeout{2000};
    static constexpr std::chrono::milliseconds overallWait{2500};
    // A peer that sends more is given up.
    static constexpr qsizetype maxBodyBytes = qsizetype{64} * 1024 * 1024;

    // True unless the gateway's URL contains "127.0.0.1" or "localhost", in this letter case.
    static bool isRemote();

    // What an endpoint such as "/status" is appended to: the same HTTPS origin below "/ostrelle",
    // or port 18794 of a plain-HTTP gateway's host. Absent for this machine.
    static std::optional<QString> statusBaseURL();

    // Fetches base + endpoint with the gateway's token, which goes to no other origin. Blocks for
    // `overallWait` at most, after asking the secret store: background threads only.
    static std::expected<QByteArray, FetchError> fetchRemoteData(const QString &base,
                                                                 const QString &endpoint);
};

} // namespace ostrelle
