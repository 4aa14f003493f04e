#include "settings/OstrelleConfig.h"

#include "platform/Paths.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <algorithm>
#include <cmath>
#include <utility>

namespace ostrelle
{

using namespace Qt::StringLiterals;

namespace
{

const QString defaultGatewayUrl = u"http://127.0.0.1:18789"_s;
const QString defaultStatusFile = u"~/.ostrelle/ostrelle-agent-tracker.json"_s;
const QString defaultTrackerFile = u"~/.ostrelle/ostrelle-project-tracker.json"_s;
const QString defaultCronFile = u"~/.ostrelle/ostrelle-cron-tracker.json"_s;

// Reads members of one object strictly: the first one that is missing or of another type spoils the
// whole document.
class ConfigReader
{
public:
    ConfigReader(QJsonObject object, bool &valid)
        : m_object(std::move(object))
        , m_valid(valid)
    {
    }

    QJsonObject object(QLatin1StringView key) const
    {
        return m_object.value(key).toObject(); // its members are missing where it is none
    }

    QString string(QLatin1StringView key) const
    {
        const QJsonValue value = m_object.value(key);
        require(value.isString());
        return value.toString();
    }

    bool boolean(QLatin1StringView key) const
    {
        const QJsonValue value = m_object.value(key);
        require(value.isBool());
        return value.toBool();
    }

    qint64 integer(QLatin1StringView key) const
    {
        const QJsonValue value = m_object.value(key);
        const double number = value.toDouble();
        require(value.isDouble() && std::trunc(number) == number && std::abs(number) < 0x1p53);
        return value.toInteger();
    }

    std::optional<QString> optionalString(QLatin1StringView key) const
    {
        return isAbsent(key) ? std::nullopt : std::optional(string(key));
    }

    std::optional<bool> optionalBoolean(QLatin1StringView key) const
    {
        return isAbsent(key) ? std::nullopt : std::optional(boolean(key));
    }

    std::optional<QJsonArray> optionalArray(QLatin1StringView key) const
    {
        if (isAbsent(key)) {
            return std::nullopt;
        }
        const QJsonValue value = m_object.value(key);
        require(value.isArray());
        return value.toArray();
    }

    void require(bool condition) const { m_valid = m_valid && condition; }

private:
    // null stands for an absent optional member.
    bool isAbsent(QLatin1StringView key) const
    {
        const QJsonValue value = m_object.value(key);
        return value.isUndefined() || value.isNull();
    }

    const QJsonObject m_object;
    bool &m_valid;
};

QList<SavedGateway> readSaved(const QJsonArray &array, bool &valid)
{
    QList<SavedGateway> saved;
    for (const auto &element : array) {
        const ConfigReader entry(element.toObject(), valid);
        saved.append({.name = entry.string("name"_L1),
                      .url = entry.string("url"_L1),
                      .token = entry.optionalString("token"_L1),
                      .isMagicDNS = entry.optionalBoolean("isMagicDNS"_L1)});
    }
    return saved;
}

std::optional<OstrelleConfig> fromObject(const QJsonObject &object)
{
    bool valid = true;
    const ConfigReader root(object, valid);
    const ConfigReader gateway(root.object("gateway"_L1), valid);
    const ConfigReader ports(root.object("ports"_L1), valid);
    const ConfigReader voice(root.object("voice"_L1), valid);
    const ConfigReader paths(root.object("paths"_L1), valid);

    OstrelleConfig config;
    config.gateway.url = gateway.string("url"_L1);
    config.gateway.token = gateway.optionalString("token"_L1);
    if (const auto saved = gateway.optionalArray("saved"_L1)) {
        config.gateway.saved = readSaved(*saved, valid);
    }
    config.ports = {.status = ports.integer("status"_L1),
                    .voiceAgent = ports.integer("voiceAgent"_L1)};
    config.voice = {.enabled = voice.boolean("enabled"_L1),
                    .venvPath = voice.string("venvPath"_L1)};
    config.paths = {.statusFile = paths.string("statusFile"_L1),
                    .trackerFile = paths.string("trackerFile"_L1),
                    .cronFile = paths.optionalString("cronFile"_L1)};
    return valid ? std::optional(config) : std::nullopt;
}

template<typename Value>
void insertIfPresent(QJsonObject &object, QLatin1StringView key, const std::optional<Value> &value)
{
    if (value) {
        object.insert(key, *value);
    }
}

QJsonObject toObject(const SavedGateway &gateway)
{
    QJsonObject object{{"name"_L1, gateway.name}, {"url"_L1, gateway.url}};
    insertIfPresent(object, "token"_L1, gateway.token);
    insertIfPresent(object, "isMagicDNS"_L1, gateway.isMagicDNS);
    return object;
}

QJsonObject toObject(const OstrelleConfig &config)
{
    QJsonObject gateway{{"url"_L1, config.gateway.url}};
    insertIfPresent(gateway, "token"_L1, config.gateway.token);
    if (config.gateway.saved) {
        QJsonArray saved;
        for (const SavedGateway &entry : *config.gateway.saved) {
            saved.append(toObject(entry));
        }
        gateway.insert("saved"_L1, saved);
    }
    QJsonObject paths{{"statusFile"_L1, config.paths.statusFile},
                      {"trackerFile"_L1, config.paths.trackerFile}};
    insertIfPresent(paths, "cronFile"_L1, config.paths.cronFile);
    return {{"gateway"_L1, gateway},
            {"ports"_L1, QJsonObject{{"status"_L1, config.ports.status},
                                     {"voiceAgent"_L1, config.ports.voiceAgent}}},
            {"voice"_L1, QJsonObject{{"enabled"_L1, config.voice.enabled},
                                     {"venvPath"_L1, config.voice.venvPath}}},
            {"paths"_L1, paths}};
}

} // namespace

QString OstrelleConfig::configDir()
{
    return homeDirectory() + u"/.ostrelle"_s;
}

QString OstrelleConfig::configPath()
{
    return configDir() + u"/config.json"_s;
}

OstrelleConfig OstrelleConfig::defaults()
{
    return {
        .gateway = {.url = defaultGatewayUrl,
                    .saved = QList<SavedGateway>{{.name = u"Local"_s, .url = defaultGatewayUrl}}},
        .ports = {},
        .voice = {.enabled = false, .venvPath = u"~/.ostrelle/venv"_s},
        .paths = {.statusFile = defaultStatusFile,
                  .trackerFile = defaultTrackerFile,
                  .cronFile = defaultCronFile}};
}

std::optional<OstrelleConfig> OstrelleConfig::decode(const QByteArray &json)
{
    const auto document = QJsonDocument::fromJson(json);
    return document.isObject() ? fromObject(document.object()) : std::nullopt;
}

QByteArray OstrelleConfig::encode() const
{
    return QJsonDocument(toObject(*this)).toJson();
}

bool OstrelleConfig::migrate()
{
    const Paths before = paths;
    if (paths.statusFile.endsWith("/agents/status.json"_L1)) {
        paths.statusFile = defaultStatusFile;
    }
    if (paths.trackerFile.endsWith("/projects/tracker.json"_L1)) {
        paths.trackerFile = defaultTrackerFile;
    }
    if (!paths.cronFile) {
        paths.cronFile = defaultCronFile;
    }
    return paths != before;
}

bool OstrelleConfig::holdsTokens() const
{
    const auto holds = [](const std::optional<QString> &token) {
        return token && !token->isEmpty();
    };
    const auto saved = gateway.saved.value_or(QList<SavedGateway>());
    return holds(gateway.token) || std::ranges::any_of(saved, [&](const SavedGateway &entry) {
               return holds(entry.token);
           });
}

void OstrelleConfig::useGateway(const QString &url)
{
    if (url == gateway.url) {
        return;
    }
    // A token that no store has taken yet goes with its gateway, not to the next one.
    if (gateway.token && !gateway.token->isEmpty()) {
        QList<SavedGateway> &saved = gateway.saved ? *gateway.saved : gateway.saved.emplace();
        auto entry = std::ranges::find(saved, gateway.url, &SavedGateway::url);
        if (entry == saved.end()) {
            entry = saved.insert(saved.end(), {.name = gateway.url, .url = gateway.url});
        }
        if (entry->token.value_or(QString()).isEmpty()) {
            entry->token = gateway.token;
        }
        gateway.token.reset();
    }
    gateway.url = url;
}

} // namespace ostrelle
