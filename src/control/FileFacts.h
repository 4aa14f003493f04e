#pragma once

#include "settings/Settings.h"

#include <QJsonArray>

#include <optional>

namespace ostrelle
{

// What is known only from the disk and from the secret store.
struct FileFacts {
    QJsonArray documents = {}; // name, file, and, where it is there, bytes, ageSeconds, age
    QString secrets = {};      // where they are kept; empty: not known
    std::optional<bool> hasToken = std::nullopt; // to send to the gateway in use
};

enum class AskTokens { No, Yes };

// May wait for the disk and, where it asks for tokens, for the secret store: background threads
// only.
FileFacts lookAtFiles(const Settings &settings, AskTokens askTokens);

// A path as people write it, with "~" for their home directory.
QString homely(QString text);

} // namespace ostrelle
