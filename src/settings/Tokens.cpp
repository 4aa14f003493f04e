#include "settings/Tokens.h"

#include "platform/Files.h"
#include "platform/Log.h"
#include "platform/Paths.h"
#include "settings/OwnMachine.h"
#include "settings/SettingsQueues.h"

#include <QJsonDocument>

#include <algorithm>
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

void logNotSaved(SecretProblem problem)
{
    logLine(u"[Ostrelle] Token not saved: "_s + toString(problem));
}

// What a store has taken out of the configuration.
struct Taken {
    std::optional<QString> active = std::nullopt;
    QList<SavedGateway> saved = {};
};

// Removes what was taken, and nothing that appeared since.
void removeTaken(OstrelleConfig &config, const Taken &taken)
{
    if (taken.active && config.gateway.token == taken.active) {
        config.gateway.token.reset();
    }
    if (config.gateway.saved) {
        for (SavedGateway &entry : *config.gateway.saved) {
            if (taken.saved.contains(entry)) {
                entry.token.reset();
            }
        }
    }
}

} // namespace

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
    const QString inUseBefore = m_config->current().gateway.url;
    const QString own = stored(gatewayURL).value_or(QString());
    const QString name = [this] {
        const std::scoped_lock lock(m_mutex);
        return m_magicDNSName;
    }();
    if (!own.isEmpty() || config.gateway.url != gatewayURL || !isThisMachine(gatewayURL, name)) {
        return own;
    }
    const QString token = resolve(config).value_or(QString());
    // A switch names the other gateway there before it makes that one's token the active one.
    return m_config->current().gateway.url == inUseBefore ? token : QString();
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

QFuture<Tokens::Saved> Tokens::saveFor(const QString &gatewayURL, const QString &token)
{
    return inOrder(tokenQueue(), [tokens = shared_from_this(), gatewayURL, token] {
        return tokens->saveForNow(gatewayURL, token);
    });
}

QFuture<void> Tokens::activate(const QString &gatewayURL)
{
    return inOrder(tokenQueue(),
                   [tokens = shared_from_this(), gatewayURL] { tokens->activateNow(gatewayURL); });
}

QFuture<bool> Tokens::migrateFromConfig()
{
    return inOrder(tokenQueue(), [tokens = shared_from_this()] { return tokens->migrateNow(); });
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
    if (saved && m_config->current().gateway.url == gatewayURL) {
        saved = save(token, KeychainHelper::activeKey);
    }
    if (!saved) {
        logNotSaved(saved.error());
    }
    return saved;
}

void Tokens::activateNow(const QString &gatewayURL)
{
    const QString token = stored(gatewayURL).value_or(QString());
    if (token.isEmpty() || m_config->current().gateway.url != gatewayURL) {
        return;
    }
    if (const auto saved = save(token, KeychainHelper::activeKey); !saved) {
        logNotSaved(saved.error());
    }
}

bool Tokens::take(const QString &gatewayURL, const QString &token, bool isActive)
{
    QStringList keys{gatewayURL};
    if (isActive) {
        keys.append(KeychainHelper::activeKey);
    }
    keys.removeIf([this](const QString &key) { return m_savedKeys.contains(key); }); // with a newer
    for (const QString &key : keys) {
        const auto saved = KeychainHelper::saveToken(*m_store, token, key);
        if (!saved) {
            if (!std::exchange(m_toldMigrationFails, true)) {
                logNotSaved(saved.error());
            }
            return false;
        }
    }
    return true;
}

bool Tokens::migrateNow()
{
    const OstrelleConfig config = m_config->current();
    if (!config.holdsTokens()) {
        return false;
    }
    Taken taken;
    const auto holdsToken = [](const std::optional<QString> &token) {
        return token && !token->isEmpty();
    };
    if (holdsToken(config.gateway.token) && take(config.gateway.url, *config.gateway.token, true)) {
        taken.active = config.gateway.token;
    }
    for (const SavedGateway &entry : config.gateway.saved.value_or(QList<SavedGateway>())) {
        if (holdsToken(entry.token) && take(entry.url, *entry.token, false)) {
            taken.saved.append(entry);
        }
    }
    if (taken.active || !taken.saved.isEmpty()) {
        const auto changed = m_config
                                 ->change([taken](OstrelleConfig &it) { removeTaken(it, taken); },
                                          ConfigStore::Write::IfUnderstood)
                                 .result();
        if (changed.written) {
            logLine(u"[Ostrelle] Migrated tokens to Keychain"_s);
        }
    }
    return m_config->current().holdsTokens();
}

QString OstrelleConfig::resolveToken(const Tokens &tokens) const
{
    return tokens.resolve(*this).value_or(QString());
}

} // namespace ostrelle
