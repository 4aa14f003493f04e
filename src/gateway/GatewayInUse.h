#pragma once

#include "gateway/GatewayViewModel.h"

#include <QQueue>

namespace ostrelle
{

// Makes another gateway the one in use, with all that follows: the configuration, the active token,
// the monitor and its first look. One after the other, each to its end, whatever view asked for it
// and is gone meanwhile. The tokens of an older configuration file move first. Main thread only.
class GatewayInUse : public QObject
{
    Q_OBJECT

public:
    // The monitor must live longer. A token that no store has taken stays in the configuration file
    // until the next attempt, which comes after `nextMigration`.
    GatewayInUse(Settings settings, GatewayViewModel *monitor,
                 std::chrono::milliseconds nextMigration = std::chrono::minutes(1),
                 QObject *parent = nullptr);

    // Calls `done` at the end.
    void switchTo(const QString &url, const std::function<void()> &done = [] {});

    // The same for a gateway that was paired: its saved profile is replaced, or added at the end,
    // and the token, if there is one, is stored for it. Calls `done` at the end.
    void adopt(const QString &url, const std::optional<QString> &token,
               const std::function<void()> &done);

private:
    struct Request {
        QString url;
        ConfigStore::Change apply;
        std::optional<QString> token = std::nullopt;
        std::function<void()> done = [] {};
    };

    void enqueue(const Request &request);
    void migrateTokens(const std::function<void()> &done);
    void handleNext();
    void saveToken(const Request &request);
    void saveConfig(const Request &request);
    void activateToken(const Request &request);
    void finish(const Request &request);

    const Settings m_settings;
    GatewayViewModel *const m_monitor;
    const std::chrono::milliseconds m_nextMigration;
    QQueue<Request> m_requests;
    bool m_isBusy = true;
};

// Makes the gateway at `url` the one in use: its saved profile is replaced or added at the end.
void adoptGateway(OstrelleConfig &config, const QString &url);

} // namespace ostrelle
