#pragma once

#include <QJsonObject>
#include <QString>

#include <expected>
#include <functional>

// The gateway's files in the .duskrell directory of the home directory.
namespace ostrelle::simulator
{

// A sentence for the user of the tool.
using Problem = QString;
using Done = std::expected<void, Problem>;

QString gatewayPath(const QString &relative);

// A file's JSON object; empty when there is no such file, a problem when it holds anything else.
std::expected<QJsonObject, Problem> readObject(const QString &path);

// Changes a file's JSON object and creates the file, readable by its owner only, if it is missing.
// Two runs of the tool at once lose nothing: a lock beside the file is held meanwhile. A file that
// cannot be understood, or a change that fails, leaves everything as it was.
Done updateObject(const QString &path, const std::function<Done(QJsonObject &)> &change);

// Appends one line in one write and creates the file, readable by its owner only, if it is missing.
void appendLine(const QString &path, const QByteArray &line);

// The gateway's configuration, duskrell.json. Keys have dots between the names of the members, for
// instance gateway.auth.token; the value under a key that is not there is undefined.
std::expected<QJsonValue, Problem> configValue(const QString &key);
Done setConfigValue(const QString &key, const QJsonValue &value);

// The token that clients have to show; empty when there is none.
QString gatewayToken();
Done resetGatewayToken();

// Adds what a gateway cannot do without, the token among it, and leaves what is there.
Done addMissingConfig(quint16 port);

} // namespace ostrelle::simulator
