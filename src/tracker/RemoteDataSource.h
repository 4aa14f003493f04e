#pragma once

#include "settings/Tokens.h"
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

// The tracker documents of the machine that the configured gateway runs on. Whoever polls takes a
// snapshot of the configuration for each poll, so that a change of gateway takes effect with the
// next one.
class RemoteDataSource
{
public:
    RemoteDataSource() = delete;

    // A peer that sends more is given up. It is what a gateway's tool may print there, and what it
    // becomes here may be twenty times as much.
    static constexpr qsizetype maxBodyBytes = qsizetype{16} * 1024 * 1024;

    // By the text of the gateway's URL alone.
    static bool isRemote(const OstrelleConfig &config);

    // What an endpoint such as "/status" is appended to: the same HTTPS origin below "/ostrelle",
    // or port 18794 of a plain-HTTP gateway's host. Absent for this machine.
    static std::optional<QString> statusBaseURL(const OstrelleConfig &config);

    // Fetches base + endpoint with the gateway's token; nothing from a base that is not the
    // configured gateway's. Asks the secret store first: background threads only.
    static std::expected<QByteArray, FetchError> fetchRemoteData(const QString &base,
                                                                 const QString &endpoint,
                                                                 const OstrelleConfig &config,
                                                                 const Tokens &tokens);

    // The same with a token that is given, which goes to no other origin. Blocks for the overall
    // limit at most.
    static std::expected<QByteArray, FetchError> fetchWithToken(const QString &base,
                                                                const QString &endpoint,
                                                                const QString &token,
                                                                const FetchLimits &limits = {});
};

} // namespace ostrelle
