#pragma once

#include "platform/SecretStore.h"

#include <mutex>

namespace ostrelle
{

// The desktop's Secret Service (org.freedesktop.secrets) through libsecret: items with the
// attributes "service" = "ai.duskrell.ostrelle" and "account", in the default collection.
class SecretService final : public SecretStore
{
public:
    std::expected<std::optional<QByteArray>, SecretProblem> read(const QString &account) override;
    std::expected<void, SecretProblem> write(const QString &account,
                                             const QByteArray &secret) override;

    // The default collection and all items of ours: some stores lock each item by itself.
    void unlockForUser() override;

private:
    std::mutex m_unlocking; // one prompt at a time
};

} // namespace ostrelle
