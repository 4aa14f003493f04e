#pragma once

#include "settings/ConfigStore.h"
#include "settings/Preferences.h"
#include "settings/Tokens.h"

#include <memory>

namespace ostrelle
{

// Where a user's settings are.
struct SettingsPlaces {
    QString config;      // config.json
    QString secrets;     // where tokens go without a Secret Service
    QString preferences; // an INI file

    static SettingsPlaces ofUser();
};

// All that the user has set. A copy is another handle to the same; whoever works in the background
// takes along what it uses. Made first, on the main thread.
struct Settings {
    explicit Settings(const SettingsPlaces &places = SettingsPlaces::ofUser());

    std::shared_ptr<ConfigStore> config;
    std::shared_ptr<Tokens> tokens;
    std::shared_ptr<Preferences> preferences;
};

} // namespace ostrelle
