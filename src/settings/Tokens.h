#pragma once

#include "settings/ConfigStore.h"
#include "settings/KeychainHelper.h"

#include <QFuture>
#include <QHash>
#include <QSet>

#include <memory>
#include <mutex>

namespace ostrelle
{

// What the user is told then.
QString tokenNotSaved(SecretProblem problem);

// The gateways' tokens: who may be sent which, and the only way to store one. Whatever asks, they
// are stored one after the other in the order in which that was asked for. What asks the secret
// store may take seconds: background threads only.
class Tokens : public std::enable_shared_from_this<Tokens>
{
public:
    using Saved = std::expected<void, SecretProblem>;

    Tokens(std::shared_ptr<SecretStore> store, std::shared_ptr<ConfigStore> config);

    // What is stored under that key, a gateway's URL or KeychainHelper::activeKey; absent when
    // there is none or the store does not give it. Asks the secret store.
    std::optional<QString> getToken(const QString &key) const;

    // The token of the gateway that the configuration has in use: stored under its URL, else the
    // active one, else of the configuration, else of the gateway's own file. An empty text is
    // certain that there is none; where a store has not said so, it is a problem. Asks the secret
    // store.
    std::expected<QString, SecretProblem> resolve(const OstrelleConfig &config) const;

    // The token to send to the gateway at that URL, or an empty text: its own, or, on this machine
    // and while it is the one in use, what resolve() gives. However the configuration changes
    // meanwhile, another machine is never sent another gateway's. Asks the secret store.
    QString tokenFor(const QString &gatewayURL, const OstrelleConfig &config) const;
    QString tokenFor(const QString &gatewayURL) const;

    // Where they are kept, for people; empty while that is not known. Reads the disk.
    QString whereKept() const { return m_store->whereKept(); }

    // This machine's name in the tailnet. Any thread.
    void setMagicDNSName(const QString &name);

    // Stores the token, which is there because of something that the user has just done, for the
    // gateway, and as the active one while that gateway is in use; an older one leaves the
    // configuration file. Where the store is locked, the user is asked to unlock it, which may take
    // minutes. Others are stored meanwhile, and a later one for the same gateway stays. A failure
    // has also been logged. Any thread.
    QFuture<Saved> saveForUser(const QString &gatewayURL, const QString &token);

    // The same, and waits for it. Not on the main thread.
    Saved saveForUserAndWait(const QString &gatewayURL, const QString &token);

    // Makes the token that is stored for the gateway, if there is one, the active one, if it is
    // still in use then. Any thread.
    QFuture<void> activate(const QString &gatewayURL);

    // Moves plain-text tokens of older versions from the configuration file into the store. What
    // the store does not take stays in the file; the future tells whether something has. Any
    // thread.
    QFuture<bool> migrateFromConfig();

private:
    std::expected<QString, SecretProblem> stored(const QString &key) const;
    Saved save(const QString &token, const QString &key);
    quint64 takeTurn(const QString &gatewayURL);
    bool hasTurn(const QString &gatewayURL, quint64 turn) const;
    QFuture<Saved> saveInOrder(const QString &gatewayURL, const QString &token, quint64 turn);
    Saved finishSaving(const QFuture<Saved> &first, const QString &gatewayURL, const QString &token,
                       quint64 turn);
    Saved saveForNow(const QString &gatewayURL, const QString &token);
    void activateNow(const QString &gatewayURL);
    bool migrateNow();

    const std::shared_ptr<SecretStore> m_store;
    const std::shared_ptr<ConfigStore> m_config;
    QSet<QString> m_savedKeys;         // in this run; used in the token queue only
    bool m_toldMigrationFails = false; // used in the token queue only
    mutable std::mutex m_mutex;
    QString m_magicDNSName;                // protected by it
    QHash<QString, quint64> m_latestTurns; // by gateway URL; protected by it
};

} // namespace ostrelle
