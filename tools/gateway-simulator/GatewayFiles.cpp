#include "GatewayFiles.h"

#include "platform/FileWriting.h"
#include "platform/Paths.h"

#include <QDir>
#include <QFileInfo>
#include <QJsonDocument>
#include <QLockFile>
#include <QRandomGenerator>

#include <fcntl.h>
#include <unistd.h>

namespace ostrelle::simulator
{

using namespace Qt::StringLiterals;

namespace
{

constexpr int lockMilliseconds = 5000;
constexpr auto tokenKey = "gateway.auth.token"_L1;

QString configPath()
{
    return gatewayPath(u"duskrell.json"_s);
}

QJsonValue find(const QJsonObject &root, const QString &key)
{
    QJsonValue value = root;
    for (const QString &name : key.split(u'.')) {
        value = value[name];
    }
    return value;
}

// Makes the objects on the way; another value there is a problem.
Done insert(QJsonObject &object, const QString &key, const QJsonValue &value)
{
    const QString first = key.section(u'.', 0, 0);
    const QString rest = key.section(u'.', 1);
    if (rest.isEmpty()) {
        object[first] = value;
        return {};
    }
    if (object.contains(first) && !object[first].isObject()) {
        return std::unexpected(u"Config path is not an object: "_s + first);
    }
    QJsonObject inner = object[first].toObject();
    auto inserted = insert(inner, rest, value);
    object[first] = inner;
    return inserted;
}

QString newToken()
{
    QString token;
    for (int part = 0; part < 3; ++part) {
        token += u"%1"_s.arg(QRandomGenerator::system()->generate64(), 16, 16, QChar(u'0'));
    }
    return token;
}

} // namespace

QString gatewayPath(const QString &relative)
{
    return homeDirectory() + u"/.duskrell/"_s + relative;
}

std::expected<QJsonObject, Problem> readObject(const QString &path)
{
    const auto content = readFile(path);
    if (!content && content.error().kind == FileProblem::Kind::Missing) {
        return QJsonObject();
    }
    if (!content) {
        return std::unexpected(path + u": "_s + content.error().text);
    }
    const auto document = QJsonDocument::fromJson(QByteArray::fromStdString(*content));
    if (!document.isObject()) {
        return std::unexpected(path + u": Not a JSON object"_s);
    }
    return document.object();
}

Done updateObject(const QString &path, const std::function<Done(QJsonObject &)> &change)
{
    QDir().mkpath(QFileInfo(path).path());
    QLockFile lock(path + u".lock"_s);
    if (!lock.tryLock(lockMilliseconds)) {
        return std::unexpected(path + u": Cannot be locked"_s);
    }
    auto object = readObject(path);
    if (!object) {
        return std::unexpected(object.error());
    }
    if (auto changed = change(*object); !changed) {
        return changed;
    }
    if (const auto written = writeInPlace(path, QJsonDocument(*object).toJson(), 0600); !written) {
        return std::unexpected(path + u": "_s + written.error().text);
    }
    return {};
}

void appendLine(const QString &path, const QByteArray &line)
{
    QDir().mkpath(QFileInfo(path).path());
    const Descriptor file(::open(QFile::encodeName(path).constData(),
                                 O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0600));
    const QByteArray whole = line + '\n';
    if (::write(file.get(), whole.constData(), static_cast<std::size_t>(whole.size())) < 0) {
        qWarning("Cannot write %s", qPrintable(path));
    }
}

std::expected<QJsonValue, Problem> configValue(const QString &key)
{
    const auto root = readObject(configPath());
    if (!root) {
        return std::unexpected(root.error());
    }
    return find(*root, key);
}

Done setConfigValue(const QString &key, const QJsonValue &value)
{
    return updateObject(configPath(), [&](QJsonObject &root) { return insert(root, key, value); });
}

QString gatewayToken()
{
    return configValue(tokenKey).value_or(QJsonValue()).toString();
}

Done resetGatewayToken()
{
    return setConfigValue(tokenKey, newToken());
}

Done addMissingConfig(quint16 port)
{
    const QList<std::pair<QString, QJsonValue>> needed = {
        {tokenKey, newToken()},
        {u"gateway.bind"_s, u"loopback"_s},
        {u"gateway.port"_s, port},
        {u"gateway.tailscale.mode"_s, u"off"_s},
        {u"gateway.http.endpoints.chatCompletions.enabled"_s, true},
    };
    return updateObject(configPath(), [&](QJsonObject &root) -> Done {
        Done done;
        for (const auto &[key, value] : needed) {
            if (done && find(root, key).isUndefined()) {
                done = insert(root, key, value);
            }
        }
        return done;
    });
}

} // namespace ostrelle::simulator
