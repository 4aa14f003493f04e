#include "settings/Tokens.h"

#include "core/BackgroundWork.h"
#include "platform/Files.h"
#include "platform/Log.h"
#include "platform/Paths.h"
#include "settings/OwnMachine.h"
#include "settings/SettingsQueues.h"

#include <QJsonDocument>

#include <utility>

namespace ostrelle
{

using namespace Qt::StringLiterals;

namespace
{

QString tokenOfGatewayItself()
{
    constexpr std::size_t maxBytes = std::size_t{16} * 1024 * 1024;
    const auto content = readFile(homeDirectory() + u"/.duskrell/duskrell.json"_s, maxBytes);
    if (!content) {
        return {};
    }
    const auto root = QJsonDocument::fromJson(QByteArray::fromStdString(*content));
    return root["gateway"_L1]["auth"_L1]["token"_L1].toString();
}

Tokens::Saved logged(const Tokens::Saved &saved)
{
    if (!saved) {
        logLine(u"[Ostrelle] "_s + tokenNotSaved(saved.error()));
    }
    return saved;
}

// Removes the plain-text tokens that `before` has and `after` has not, and nothing that appeared
// since.
void removeMoved(OstrelleConfig &config, const OstrelleConfig &before, const OstrelleConfig &after)
{
    if (before.gateway.token != after.gateway.token &&
        config.gateway.token == before.gateway.token) {
        config.gateway.token.reset();
    }
    const auto savedBefore = before.gateway.saved.value_or(QList<SavedGateway>());
    const auto savedAfter = after.gateway.saved.value_or(QList<SavedGateway>());
    if (config.gateway.saved) {
        for (SavedGateway &entry : *config.gateway.saved) {
            if (savedBefore.contains(entry) && !savedAfter.contains(entry)) {
                entry.token.reset();
            }
        }
    }
}

// Removes the plain-text tokens of a gateway for which a newer one is stored.
void removeOutdated(OstrelleConfig &config, const QString &gatewayURL)
{
    if (config.gateway.url == gatewayURL) {
        config.gateway.token.reset();
    }
    if (config.gateway.saved) {
        for (SavedGateway &entry : *config.gateway.saved) {
            if (entry.url == gatewayURL) {
                entry.token.reset();
            }
        }
    }
}

} // namespace

QString tokenNotSaved(SecretProblem problem)
{
    return u"Token not saved: "_s + toString(problem);
}

Tokens::Tokens(std::shared_ptr<SecretStore> store, std::shared_ptr<ConfigStore> config)
    : m_store(std::move(store))
    , m_config(std::move(config))
{
}

std::expected<QString, SecretProblem> Tokens::stored(const QString &key) const
{
    const auto token = KeychainHelper::getToken(*m_store, key);
    if (!token) {
        return std::unexpected(token.error());
    }
    return token->value_or(QString());
}

std::optional<QString> Tokens::getToken(const QString &key) const
{
    return KeychainHelper::getToken(*m_store, key).value_or(std::nullopt);
}

std::expected<QString, SecretProblem> Tokens::resolve(const OstrelleConfig &config) const
{
    std::optional<SecretProblem> problem;
    for (const QString &key : {config.gateway.url, KeychainHelper::activeKey}) {
        const auto token = stored(key);
        if (token && !token->isEmpty()) {
            return token;
        }
        if (!token) {
            problem = token.error();
        }
    }
    QString token = config.gateway.token.value_or(QString());
    if (token.isEmpty()) {
        token = tokenOfGatewayItself();
    }
    if (token.isEmpty() && problem) {
        return std::unexpected(*problem);
    }
    return token;
}

QString Tokens::tokenFor(const QString &gatewayURL, const OstrelleConfig &config) const
{
    QString own = stored(gatewayURL).value_or(QString());
    const QString name = [this] {
        const std::scoped_lock lock(m_mutex);
        return m_magicDNSName;
    }();
    if (!own.isEmpty() || config.gateway.url != gatewayURL || !isThisMachine(gatewayURL, name)) {
        return own;
    }
    const QString token = resolve(config).value_or(QString());
    // A switch names the other gateway there before it makes that one's token the active one.
    return m_config->current().gateway.url == gatewayURL ? token : QString();
}

QString Tokens::tokenFor(const QString &gatewayURL) const
{
    return tokenFor(gatewayURL, m_config->snapshot());
}

void Tokens::setMagicDNSName(const QString &name)
{
    const std::scoped_lock lock(m_mutex);
    m_magicDNSName = name;
}

QFuture<Tokens::Saved> Tokens::saveForUser(const QString &gatewayURL, const QString &token)
{
    const quint64 turn = takeTurn(gatewayURL);
    const auto first = saveInOrder(gatewayURL, token, turn);
    return userInitiatedPool().run([tokens = shared_from_this(), first, gatewayURL, token, turn] {
        return tokens->finishSaving(first, gatewayURL, token, turn);
    });
}

Tokens::Saved Tokens::saveForUserAndWait(const QString &gatewayURL, const QString &token)
{
    const quint64 turn = takeTurn(gatewayURL);
    return finishSaving(saveInOrder(gatewayURL, token, turn), gatewayURL, token, turn);
}

Tokens::Saved Tokens::finishSaving(const QFuture<Saved> &first, const QString &gatewayURL,
                                   const QString &token, quint64 turn)
{
    Saved saved = first.result();
    if (!saved && saved.error() == SecretProblem::Locked) {
        m_store->unlockForUser();
        saved = saveInOrder(gatewayURL, token, turn).result();
    }
    return logged(saved);
}

QFuture<Tokens::Saved> Tokens::saveInOrder(const QString &gatewayURL, const QString &token,
                                           quint64 turn)
{
    return tokenQueue().run([tokens = shared_from_this(), gatewayURL, token, turn] {
        return tokens->hasTurn(gatewayURL, turn) ? tokens->saveForNow(gatewayURL, token) : Saved();
    });
}

quint64 Tokens::takeTurn(const QString &gatewayURL)
{
    const std::scoped_lock lock(m_mutex);
    return ++m_latestTurns[gatewayURL];
}

bool Tokens::hasTurn(const QString &gatewayURL, quint64 turn) const
{
    const std::scoped_lock lock(m_mutex);
    return m_latestTurns.value(gatewayURL) == turn;
}

QFuture<void> Tokens::activate(const QString &gatewayURL)
{
    return tokenQueue().run(
        [tokens = shared_from_this(), gatewayURL] { tokens->activateNow(gatewayURL); });
}

QFuture<bool> Tokens::migrateFromConfig()
{
    return tokenQueue().run([tokens = shared_from_this()] { return tokens->migrateNow(); });
}

Tokens::Saved Tokens::save(const QString &token, const QString &key)
{
    auto saved = KeychainHelper::saveToken(*m_store, token, key);
    if (saved) {
        m_savedKeys.insert(key);
    }
    return saved;
}

Tokens::Saved Tokens::saveForNow(const QString &gatewayURL, const QString &token)
{
    auto saved = save(token, gatewayURL);
    if (saved && m_config->current().holdsTokens()) {
        m_config->change([gatewayURL](OstrelleConfig &it) { removeOutdated(it, gatewayURL); },
                         ConfigStore::Write::IfUnderstood);
    }
    if (saved && m_config->current().gateway.url == gatewayURL) {
        saved = save(token, KeychainHelper::activeKey);
    }
    return saved;
}

void Tokens::activateNow(const QString &gatewayURL)
{
    const QString token = stored(gatewayURL).value_or(QString());
    if (token.isEmpty() || m_config->current().gateway.url != gatewayURL) {
        return;
    }
    static_cast<void>(logged(save(token, KeychainHelper::activeKey)));
}

bool Tokens::migrateNow()
{
    const OstrelleConfig before = m_config->current();
    if (!before.holdsTokens()) {
        return false;
    }
    OstrelleConfig after = before;
    const auto migrated = KeychainHelper::migrateFromConfig(*m_store, after, m_savedKeys);
    if (!migrated && !std::exchange(m_toldMigrationFails, true)) {
        static_cast<void>(logged(migrated));
    }
    if (after != before) {
        // Not waited for: a disk that hangs must not keep tokens from being stored.
        m_config
            ->change([before, after](OstrelleConfig &it) { removeMoved(it, before, after); },
                     ConfigStore::Write::IfUnderstood)
            .then([](const ConfigStore::Changed &changed) {
                if (changed.written) {
                    logLine(u"[Ostrelle] Migrated tokens to Keychain"_s);
                }
            });
    }
    return after.holdsTokens();
}

QString OstrelleConfig::resolveToken(const Tokens &tokens) const
{
    return tokens.resolve(*this).value_or(QString());
}

} // namespace ostrelle
