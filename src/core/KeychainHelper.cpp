#include "core/KeychainHelper.h"

#include "core/OstrelleConfig.h"
#include "platform/Log.h"
#include "platform/SecretStore.h"

#include <QStringDecoder>

#include <algorithm>

namespace ostrelle
{

using namespace Qt::StringLiterals;

namespace
{

QString accountOf(const QString &key)
{
    return u"gateway-token:"_s + key;
}

bool holdsToken(const std::optional<QString> &token)
{
    return token && !token->isEmpty();
}

} // namespace

const QString KeychainHelper::activeKey = u"_active_"_s;

std::optional<QString> KeychainHelper::getToken(const QString &key)
{
    const auto secret = secretStore().read(accountOf(key));
    if (!secret || !*secret) {
        return std::nullopt;
    }
    QStringDecoder decoder(QStringDecoder::Utf8);
    const QString token = decoder.decode(**secret);
    return decoder.hasError() ? std::nullopt : std::optional(token);
}

void KeychainHelper::saveToken(const QString &token, const QString &key)
{
    if (const auto saved = secretStore().write(accountOf(key), token.toUtf8()); !saved) {
        logLine(u"[Ostrelle] Token not saved: "_s + toString(saved.error()));
    }
}

bool KeychainHelper::needsMigration(const OstrelleConfig &config)
{
    const auto saved = config.gateway.saved.value_or(QList<SavedGateway>());
    return holdsToken(config.gateway.token) ||
           std::ranges::any_of(saved, [](const auto &entry) { return holdsToken(entry.token); });
}

void KeychainHelper::migrateFromConfig(OstrelleConfig &config)
{
    if (!needsMigration(config)) {
        return;
    }
    if (holdsToken(config.gateway.token)) {
        saveToken(*config.gateway.token, activeKey);
        saveToken(*config.gateway.token, config.gateway.url);
        config.gateway.token.reset();
    }
    if (config.gateway.saved) {
        for (SavedGateway &entry : *config.gateway.saved) {
            if (holdsToken(entry.token)) {
                saveToken(*entry.token, entry.url);
                entry.token.reset();
            }
        }
    }
    config.save();
    logLine(u"[Ostrelle] Migrated tokens to Keychain"_s);
}

} // namespace ostrelle
