#pragma once

#include "settings/Tokens.h"
#include "tracker/FetchError.h"

#include <QString>

#include <expected>
#include <string>

namespace ostrelle
{

// One of the three documents as it was obtained, and from where.
struct TrackerDocument {
    bool isRemote; // the configured gateway is on another machine
    std::expected<std::string, FetchError> text;
};

// Fetches the endpoint from the gateway's machine, or reads the local file when the gateway is this
// machine's. Blocks: background threads only.
TrackerDocument obtainDocument(const QString &endpoint, const QString &localPath,
                               const OstrelleConfig &config, const Tokens &tokens);

// The configured cron tracker file, or the default one of a configuration that names none.
QString cronFilePathOf(const OstrelleConfig &config);

// What a dashboard shows when a document of another machine cannot be used.
QString remoteUnusableText();

} // namespace ostrelle
