#include "settings/KeychainHelper.h"

#include <QStringDecoder>

namespace ostrelle
{

using namespace Qt::StringLiterals;

namespace
{

QString accountOf(const QString &key)
{
    return u"gateway-token:"_s + key;
}

} // namespace

const QString KeychainHelper::activeKey = u"_active_"_s;

std::expected<std::optional<QString>, SecretProblem> KeychainHelper::getToken(SecretStore &store,
                                                                              const QString &key)
{
    const auto secret = store.read(accountOf(key));
    if (!secret) {
        return std::unexpected(secret.error());
    }
    if (!*secret) {
        return std::nullopt;
    }
    QStringDecoder decoder(QStringDecoder::Utf8);
    const QString token = decoder.decode(**secret);
    return decoder.hasError() ? std::nullopt : std::optional(token);
}

std::expected<void, SecretProblem>
KeychainHelper::saveToken(SecretStore &store, const QString &token, const QString &key)
{
    return store.write(accountOf(key), token.toUtf8());
}

std::expected<void, SecretProblem> KeychainHelper::migrateFromConfig(SecretStore &store,
                                                                     OstrelleConfig &config,
                                                                     const QSet<QString> &newer)
{
    std::optional<SecretProblem> problem;
    const auto move = [&](std::optional<QString> &token, const QStringList &keys) {
        if (token.value_or(QString()).isEmpty()) {
            return;
        }
        for (const QString &key : keys) {
            if (newer.contains(key)) {
                continue;
            }
            if (const auto saved = saveToken(store, *token, key); !saved) {
                problem = problem.value_or(saved.error());
                return;
            }
        }
        token.reset();
    };
    move(config.gateway.token, {activeKey, config.gateway.url});
    if (config.gateway.saved) {
        for (SavedGateway &entry : *config.gateway.saved) {
            move(entry.token, {entry.url});
        }
    }
    if (problem) {
        return std::unexpected(*problem);
    }
    return {};
}

} // namespace ostrelle
