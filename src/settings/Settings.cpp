#include "settings/Settings.h"

#include "settings/PreferredSecretStore.h"

#include <QStandardPaths>

namespace ostrelle
{

using namespace Qt::StringLiterals;

SettingsPlaces SettingsPlaces::ofUser()
{
    const QString desktopConfiguration =
        QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation);
    return {.config = OstrelleConfig::configPath(),
            .secrets = OstrelleConfig::configDir() + u"/secrets.json"_s,
            .preferences = desktopConfiguration + u"/ai.duskrell.ostrelle.conf"_s};
}

Settings::Settings(const SettingsPlaces &places)
    : config(ConfigStore::open(places.config))
    , tokens(
          std::make_shared<Tokens>(std::make_shared<PreferredSecretStore>(places.secrets), config))
    , preferences(std::make_shared<Preferences>(places.preferences))
{
}

} // namespace ostrelle
