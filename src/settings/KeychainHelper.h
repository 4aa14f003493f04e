#pragma once

#include "platform/SecretStore.h"
#include "settings/OstrelleConfig.h"

#include <QSet>

namespace ostrelle
{

// Gateway tokens in a secret store, each under a key: the gateway's base URL exactly as the
// configuration has it, or `activeKey` for the gateway in use. All of it may wait for the store:
// background threads only.
class KeychainHelper
{
public:
    KeychainHelper() = delete;

    static const QString activeKey;

    // Nothing when the store says that there is none, or when its bytes are not UTF-8.
    static std::expected<std::optional<QString>, SecretProblem> getToken(SecretStore &store,
                                                                         const QString &key);

    // Stores or replaces.
    static std::expected<void, SecretProblem> saveToken(SecretStore &store, const QString &token,
                                                        const QString &key);

    // Moves the configuration's plain-text tokens into the store, but for those under keys that
    // hold a newer one, which are only removed. What the store does not take stays; the first
    // problem is returned.
    static std::expected<void, SecretProblem>
    migrateFromConfig(SecretStore &store, OstrelleConfig &config, const QSet<QString> &newer = {});
};

} // namespace ostrelle
