#include "voice/VoiceAgentCommand.h"

#include "core/ExpandPath.h"
#include "core/ToolEnvironment.h"
#include "platform/Files.h"
#include "platform/Paths.h"

#include <QDir>
#include <QFileInfo>

namespace ostrelle
{

using namespace Qt::StringLiterals;

namespace
{

// The child runs in another directory, so it gets absolute paths.
QString absolute(const QString &path)
{
    return path.startsWith(u'/') ? path : QDir::currentPath() + u'/' + path;
}

QString parentDirectory(QString path)
{
    while (path.size() > 1 && path.endsWith(u'/')) {
        path.chop(1);
    }
    return QFileInfo(path).path();
}

QString findScript(const QString &venv, const std::optional<QString> &resources)
{
    if (resources) {
        const QString shipped = *resources + u"/voice-agent/voice_agent.py"_s;
        if (fileExists(shipped)) {
            return shipped;
        }
    }
    return parentDirectory(venv) + u"/voice_agent.py"_s;
}

QProcessEnvironment environmentFor(const QString &venv)
{
    QProcessEnvironment environment =
        toolEnvironment(absolute(venv) + u"/bin:"_s + toolSearchPath());
    environment.insert(u"PYTHONUNBUFFERED"_s, u"1"_s);
    environment.insert(u"OSTRELLE_DATA"_s, homeDirectory() + u"/.ostrelle/data"_s);
    return environment;
}

} // namespace

std::expected<ChildCommand, QString> voiceAgentCommand(const QString &venvPath,
                                                       const std::optional<QString> &resources)
{
    const QString venv = expandPath(venvPath);
    const QString python = venv + u"/bin/python"_s;
    if (!fileExists(python)) {
        return std::unexpected(u"Python venv not found at "_s + python);
    }
    const QString script = findScript(venv, resources);
    if (!fileExists(script)) {
        return std::unexpected(u"Voice script not found at "_s + script);
    }
    return ChildCommand{.program = absolute(python),
                        .arguments = {absolute(script)},
                        .environment = environmentFor(venv),
                        .workingDirectory = QFileInfo(absolute(script)).path()};
}

} // namespace ostrelle
