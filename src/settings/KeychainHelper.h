#pragma once

#include <QString>

#include <functional>
#include <optional>

class QObject;

namespace ostrelle
{

struct OstrelleConfig;

// Gateway tokens in the secret store, each under a key: the gateway's base URL exactly as the
// configuration has it, or `activeKey` for the gateway in use.
class KeychainHelper
{
public:
    KeychainHelper() = delete;

    static const QString activeKey;

    // Absent when there is none, when the store refuses or when its bytes are not UTF-8. May wait
    // for the store: background threads only.
    static std::optional<QString> getToken(const QString &key);

    // Stores or replaces. A failure is told in one log line, without the token. May wait for the
    // store: background threads only.
    static void saveToken(const QString &token, const QString &key);

    // Moves plain-text tokens of older versions from the configuration into the store; when there
    // were any, they are then removed from the configuration file. Returns at once; `done` is
    // called on the thread of `owner`, and only if that still exists.
    static void migrateFromConfig(const OstrelleConfig &config, QObject *owner,
                                  const std::function<void()> &done);
};

} // namespace ostrelle
