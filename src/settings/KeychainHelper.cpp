#include "settings/KeychainHelper.h"

#include "core/BackgroundWork.h"
#include "settings/OstrelleConfig.h"
#include "core/WhenDone.h"
#include "platform/Log.h"
#include "settings/PreferredSecretStore.h"
#include "settings/SettingsQueue.h"

#include <QStringDecoder>
#include <QtConcurrent>

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

void storeTokens(const OstrelleConfig &config)
{
    if (holdsToken(config.gateway.token)) {
        KeychainHelper::saveToken(*config.gateway.token, KeychainHelper::activeKey);
        KeychainHelper::saveToken(*config.gateway.token, config.gateway.url);
    }
    for (const SavedGateway &entry : config.gateway.saved.value_or(QList<SavedGateway>())) {
        if (holdsToken(entry.token)) {
            KeychainHelper::saveToken(*entry.token, entry.url);
        }
    }
}

// Removes what `stored` holds, and nothing that appeared since. False when nothing was removed.
bool removeTokens(OstrelleConfig &config, const OstrelleConfig &stored)
{
    const OstrelleConfig before = config;
    if (holdsToken(stored.gateway.token) && config.gateway.token == stored.gateway.token) {
        config.gateway.token.reset();
    }
    if (!config.gateway.saved || !stored.gateway.saved) {
        return config != before;
    }
    for (SavedGateway &entry : *config.gateway.saved) {
        if (holdsToken(entry.token) && stored.gateway.saved->contains(entry)) {
            entry.token.reset();
        }
    }
    return config != before;
}

// The file is read afresh, because it may have been changed while the store was busy. If it cannot
// be read at this moment it is left alone: the next start tries again.
void removeTokensFromFile(const OstrelleConfig &stored)
{
    auto current = OstrelleConfig::read();
    if (current && removeTokens(*current, stored)) {
        current->save();
        logLine(u"[Ostrelle] Migrated tokens to Keychain"_s);
    }
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

void KeychainHelper::migrateFromConfig(const OstrelleConfig &config, QObject *owner,
                                       const std::function<void()> &done)
{
    auto migration =
        QtConcurrent::run(&utilityPool(), &storeTokens, config).then(&settingsQueue(), [config] {
            removeTokensFromFile(config);
        });
    whenDone(migration, owner, done);
}

} // namespace ostrelle
