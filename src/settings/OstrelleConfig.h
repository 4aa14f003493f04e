#pragma once

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

// The program's whole persistent configuration, a plain value. The services keep the copy that they
// were built with; whoever must follow changes loads it afresh.
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

    // The file's configuration, migrated and saved again where it came from an older version.
    // Absent without a file that can be understood, which stays as it is: for whoever changes the
    // configuration, so that the defaults do not replace what is stored.
    static std::optional<OstrelleConfig> read();

    // The same, or the defaults. Never fails.
    static OstrelleConfig load();

    // Failures are silent.
    void save() const;

    // Without the plain-text tokens of older versions: once moved, they are not written back.
    OstrelleConfig withoutTokens() const;

    // The token to send to the active gateway, or an empty text. Asks the secret store: background
    // threads only.
    QString resolveToken() const;

    // The token to send to the gateway at that URL, or an empty text: its own, or what
    // resolveToken() gives while it is the configured one. However the configuration changes
    // meanwhile, it is never another gateway's. Asks the secret store: background threads only.
    static QString tokenFor(const QString &gatewayURL);

    // Creates each tracker file that does not exist, with empty content.
    static void ensureTrackerFiles(const OstrelleConfig &config);

    friend bool operator==(const OstrelleConfig &, const OstrelleConfig &) = default;
};

} // namespace ostrelle
