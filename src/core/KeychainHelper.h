#pragma once

#include <QString>

#include <optional>

namespace ostrelle
{

struct OstrelleConfig;

// Gateway tokens in the secret store, each under a key: the gateway's base URL exactly as the
// configuration has it, or `activeKey` for the gateway in use. All calls may wait for the store:
// background threads only.
class KeychainHelper
{
public:
    KeychainHelper() = delete;

    static const QString activeKey;

    // Absent when there is none, when the store refuses or when its bytes are not UTF-8.
    static std::optional<QString> getToken(const QString &key);

    // Stores or replaces. A failure is told in one log line, without the token.
    static void saveToken(const QString &token, const QString &key);

    // True when the configuration still holds a plain-text token; asks nothing of the store.
    static bool needsMigration(const OstrelleConfig &config);

    // Moves plain-text tokens of older versions from the configuration into the store, and saves
    // the configuration when anything moved.
    static void migrateFromConfig(OstrelleConfig &config);
};

} // namespace ostrelle
