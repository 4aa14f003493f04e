#include "gateway/DuskrellTool.h"

#include "core/ToolEnvironment.h"
#include "platform/ChildProcess.h"

#include <QFileInfo>

#include <algorithm>

namespace ostrelle
{

using namespace Qt::StringLiterals;

namespace
{

// A restart of the gateway takes seconds; a command that takes this long hangs.
constexpr std::chrono::minutes killAfter(5);

struct ToolRun {
    bool succeeded;
    QString output; // trimmed; of the stream that was asked for
};

// This program's own. A tool that no search path leads to has beside it what it needs.
QProcessEnvironment environmentFor(const QString &tool)
{
    auto environment = QProcessEnvironment::systemEnvironment();
    if (userToolFolders().contains(QFileInfo(tool).path())) {
        environment.insert(u"PATH"_s, toolSearchPath(tool) + u':' + environment.value(u"PATH"_s));
    }
    return environment;
}

ToolRun run(const QString &program, const QStringList &arguments, Capture capture)
{
    const auto result = runChild(
        {.program = program, .arguments = arguments, .environment = environmentFor(program)},
        {.capture = capture, .killAfter = killAfter});
    const QByteArray output = result ? result->output : QByteArray();
    return {.succeeded = result && result->exitedNormally && result->exitStatus == 0,
            .output = output.isValidUtf8() ? QString::fromUtf8(output).trimmed() : QString()};
}

QString findDuskrell()
{
    return findTool(u"duskrell"_s, qEnvironmentVariable("PATH")).value_or(QString());
}

ToolRun runDuskrell(const QString &path, const QStringList &arguments,
                    Capture capture = Capture::StandardError)
{
    return path.isEmpty() ? ToolRun{.succeeded = false, .output = u"duskrell: not found"_s}
                          : run(path, arguments, capture);
}

bool isOneWord(const QString &text)
{
    return std::ranges::none_of(
        text, [](QChar c) { return c.isSpace() || c.category() == QChar::Other_Control; });
}

// The tool may print the value on either stream. Output of more than one word, or of a failed
// command, is a message and no token; it is not repeated, because a token may be in it.
std::expected<QString, QString> readToken(const QString &path)
{
    const QStringList get{u"config"_s, u"get"_s, u"gateway.auth.token"_s};
    ToolRun value = runDuskrell(path, get, Capture::StandardOutput);
    if (value.succeeded && value.output.isEmpty()) {
        value = runDuskrell(path, get, Capture::StandardError);
    }
    if (!value.succeeded || value.output.isEmpty()) {
        return std::unexpected(u"the gateway has a new token, but does not tell it"_s);
    }
    if (!isOneWord(value.output)) {
        return std::unexpected(u"the gateway has a new token, but tells more than that"_s);
    }
    return value.output;
}

} // namespace

std::expected<void, QString> switchGatewayToTailscaleServe()
{
    const QString path = findDuskrell();
    const auto bind = runDuskrell(path, {u"config"_s, u"set"_s, u"gateway.bind"_s, u"loopback"_s});
    if (!bind.succeeded) {
        return std::unexpected(u"Failed to set gateway.bind: "_s + bind.output);
    }
    const auto serve =
        runDuskrell(path, {u"config"_s, u"set"_s, u"gateway.tailscale.mode"_s, u"serve"_s});
    if (!serve.succeeded) {
        return std::unexpected(u"Failed to enable Tailscale: "_s + serve.output);
    }
    runDuskrell(path, {u"gateway"_s, u"restart"_s});
    return {};
}

std::expected<QString, QString> renewGatewayToken()
{
    const QString path = findDuskrell();
    if (!runDuskrell(path, {u"gateway"_s, u"token"_s, u"--reset"_s}).succeeded) {
        return std::unexpected(u"the gateway makes no new token"_s);
    }
    return readToken(path);
}

} // namespace ostrelle
