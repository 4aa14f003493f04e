#pragma once

#include <QByteArray>
#include <QList>
#include <QString>

#include <optional>

namespace ostrelle
{

// One saved gateway profile. Its identity in lists is its url.
struct SavedGateway {
    QString name;
    QString url;
    std::optional<QString> token = std::nullopt; // of older versions; moved away at start
    std::optional<bool> isMagicDNS = std::nullopt;

    friend bool operator==(const SavedGateway &, const SavedGateway &) = default;
};

class Tokens;

// The program's whole persistent configuration: a plain value that knows neither disk nor keyring.
// The services keep the copy that they were built with; whoever must follow changes takes a
// snapshot from the ConfigStore.
struct OstrelleConfig {
    struct Gateway {
        QString url;
        std::optional<QString> token = std::nullopt; // of older versions; moved away at start
        std::optional<QList<SavedGateway>> saved = std::nullopt;

        friend bool operator==(const Gateway &, const Gateway &) = default;
    };
    struct Ports {
        qint64 status = 18794;
        qint64 voiceAgent = 18790;

        friend bool operator==(const Ports &, const Ports &) = default;
    };
    struct Voice {
        bool enabled = false;
        QString venvPath;

        friend bool operator==(const Voice &, const Voice &) = default;
    };
    struct Paths {
        QString statusFile;
        QString trackerFile;
        std::optional<QString> cronFile;

        friend bool operator==(const Paths &, const Paths &) = default;
    };

    Gateway gateway;
    Ports ports;
    Voice voice;
    Paths paths;

    static QString configDir();
    static QString configPath();

    // What holds while there is no readable configuration file.
    static OstrelleConfig defaults();

    // Nothing when a required member is missing or anything is of the wrong type.
    static std::optional<OstrelleConfig> decode(const QByteArray &json);
    QByteArray encode() const;

    // Replaces what an older version has written; true when there was something.
    bool migrate();

    bool holdsTokens() const;

    // Makes it the gateway in use.
    void useGateway(const QString &url);

    // The user's configuration file as it is now, or the defaults; and the way back. Never fail.
    static OstrelleConfig load();
    void save() const;

    // The token to send to the active gateway, or an empty text. Asks the secret store: background
    // threads only.
    QString resolveToken(const Tokens &tokens) const;

    // Creates each tracker file that does not exist, with empty content.
    static void ensureTrackerFiles(const OstrelleConfig &config);

    friend bool operator==(const OstrelleConfig &, const OstrelleConfig &) = default;
};

} // namespace ostrelle
