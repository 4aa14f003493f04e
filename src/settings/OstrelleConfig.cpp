#include "settings/OstrelleConfig.h"

#include "core/ExpandPath.h"
#include "settings/KeychainHelper.h"
#include "platform/Files.h"
#include "platform/Log.h"
#include "platform/Paths.h"

#include <QDir>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <cmath>
#include <string_view>
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

// Both files are written by people and small programs; more is no configuration, and the main
// thread shall not parse it.
constexpr std::size_t maxConfigBytes = std::size_t{16} * 1024 * 1024;

std::optional<QJsonObject> readObject(const QString &path)
{
    const auto content = readFile(path, maxConfigBytes);
    if (!content) {
        return std::nullopt;
    }
    const auto document = QJsonDocument::fromJson(QByteArray::fromStdString(*content));
    return document.isObject() ? std::optional(document.object()) : std::nullopt;
}

// Reads members of one object strictly: the first one that is missing or of another type spoils the
// whole document.
class StrictReader
{
public:
    StrictReader(QJsonObject object, bool &valid)
        : m_object(std::move(object))
        , m_valid(valid)
    {
    }

    QJsonObject object(QLatin1StringView key) const
    {
        const QJsonValue value = m_object.value(key);
        require(value.isObject());
        return value.toObject();
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
        const StrictReader entry(element.toObject(), valid);
        entry.require(element.isObject());
        saved.append({.name = entry.string("name"_L1),
                      .url = entry.string("url"_L1),
                      .token = entry.optionalString("token"_L1),
                      .isMagicDNS = entry.optionalBoolean("isMagicDNS"_L1)});
    }
    return saved;
}

std::optional<OstrelleConfig> decode(const QJsonObject &object)
{
    bool valid = true;
    const StrictReader root(object, valid);
    const StrictReader gateway(root.object("gateway"_L1), valid);
    const StrictReader ports(root.object("ports"_L1), valid);
    const StrictReader voice(root.object("voice"_L1), valid);
    const StrictReader paths(root.object("paths"_L1), valid);

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

QJsonObject encode(const SavedGateway &gateway)
{
    QJsonObject object{{"name"_L1, gateway.name}, {"url"_L1, gateway.url}};
    insertIfPresent(object, "token"_L1, gateway.token);
    insertIfPresent(object, "isMagicDNS"_L1, gateway.isMagicDNS);
    return object;
}

QJsonObject encode(const OstrelleConfig &config)
{
    QJsonObject gateway{{"url"_L1, config.gateway.url}};
    insertIfPresent(gateway, "token"_L1, config.gateway.token);
    if (config.gateway.saved) {
        QJsonArray saved;
        for (const SavedGateway &entry : *config.gateway.saved) {
            saved.append(encode(entry));
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

// True when a path of an older version was replaced.
bool migrate(OstrelleConfig::Paths &paths)
{
    const OstrelleConfig::Paths before = paths;
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

QString tokenOfGatewayItself()
{
    const auto root = readObject(homeDirectory() + u"/.duskrell/duskrell.json"_s);
    return root ? root->value("gateway"_L1)["auth"_L1]["token"_L1].toString() : QString();
}

void createTrackerFile(const QString &path, std::string_view content)
{
    const QString file = expandPath(path);
    if (fileExists(file)) {
        return;
    }
    QDir().mkpath(QFileInfo(file).path());
    if (writeInPlace(file, content)) {
        logLine(u"[Ostrelle] Created "_s + file);
    }
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

std::optional<OstrelleConfig> OstrelleConfig::read()
{
    const auto object = readObject(configPath());
    auto config = object ? decode(*object) : std::nullopt;
    if (config && migrate(config->paths)) {
        config->save();
    }
    return config;
}

OstrelleConfig OstrelleConfig::load()
{
    return read().value_or(defaults());
}

void OstrelleConfig::save() const
{
    QDir().mkpath(configDir());
    static_cast<void>(writeInPlace(configPath(), QJsonDocument(encode(*this)).toJson()));
}

OstrelleConfig OstrelleConfig::withoutTokens() const
{
    OstrelleConfig config = *this;
    config.gateway.token.reset();
    if (config.gateway.saved) {
        for (SavedGateway &entry : *config.gateway.saved) {
            entry.token.reset();
        }
    }
    return config;
}

QString OstrelleConfig::resolveToken() const
{
    for (const QString &key : {gateway.url, KeychainHelper::activeKey}) {
        if (const auto token = KeychainHelper::getToken(key); token && !token->isEmpty()) {
            return *token;
        }
    }
    if (gateway.token && !gateway.token->isEmpty()) {
        return *gateway.token;
    }
    return tokenOfGatewayItself();
}

QString OstrelleConfig::tokenFor(const QString &gatewayURL)
{
    QString own = KeychainHelper::getToken(gatewayURL).value_or(QString());
    const OstrelleConfig config = load();
    if (!own.isEmpty() || config.gateway.url != gatewayURL) {
        return own;
    }
    const QString token = config.resolveToken();
    // A switch names the other gateway here before it makes the other one's token the active one.
    return load().gateway.url == gatewayURL ? token : QString();
}

void OstrelleConfig::ensureTrackerFiles(const OstrelleConfig &config)
{
    createTrackerFile(config.paths.statusFile, R"({"agents":{},"completions":[]})");
    createTrackerFile(config.paths.trackerFile, R"({"version":1,"updated":"","projects":[]})");
    if (config.paths.cronFile) {
        createTrackerFile(*config.paths.cronFile, R"({"version":1,"updated":"","jobs":[]})");
    }
}

} // namespace ostrelle
