#pragma once

#include "platform/SecretStore.h"

#include <QString>

namespace ostrelle
{

// Gateway tokens in a secret store, each under a key: the gateway's base URL exactly as the
// configuration has it, or `activeKey` for the gateway in use. Both may wait for the store:
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
};

} // namespace ostrelle
