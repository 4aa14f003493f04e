#include "gateway/NetworkHelpers.h"

#include "core/ShellWord.h"
#include "core/ToolEnvironment.h"
#include "gateway/LanAddress.h"
#include "platform/ChildProcess.h"
#include "platform/Files.h"

#include <algorithm>

namespace ostrelle
{

using namespace Qt::StringLiterals;

namespace
{

// What takes longer hangs, and bars those that come after it.
constexpr std::chrono::minutes patience{1};

const QString toolName = u"tailscale"_s;

QProcessEnvironment fixedEnvironment(const QString &executable)
{
    QProcessEnvironment environment = toolEnvironment(toolSearchPath(executable));
    environment.insert(u"__CFBundleIdentifier"_s, u""_s);
    return environment;
}

QByteArray outputOf(const QString &executable, const QStringList &args)
{
    if (executable.isEmpty()) {
        return {};
    }
    QString commandLine = quoted(executable);
    for (const QString &argument : args) {
        commandLine += u' ' + quoted(argument);
    }
    const auto result = runChild({.program = u"/bin/bash"_s,
                                  .arguments = {u"-c"_s, commandLine},
                                  .environment = fixedEnvironment(executable)},
                                 {.killAfter = patience});
    return result ? result->output : QByteArray();
}

QStringView withoutBlanks(QStringView line)
{
    const auto isBlank = [](QChar c) { return c == u' ' || c == u'\t'; };
    while (!line.isEmpty() && isBlank(line.front())) {
        line = line.sliced(1);
    }
    while (!line.isEmpty() && isBlank(line.back())) {
        line.chop(1);
    }
    return line;
}

} // namespace

QString NetworkHelpers::runProcess(const QString &executable, const QStringList &args)
{
    const QByteArray output = outputOf(executable, args);
    return output.isValidUtf8() ? QString::fromUtf8(output) : QString();
}

QString NetworkHelpers::tailscaleCLI(const TailscalePlaces &places)
{
    const QStringList tools = places.tools + QStringList(places.applicationTool);
    return findTool(tools, toolName, toolSearchPath()).value_or(QString());
}

bool NetworkHelpers::isTailscaleInstalled(const TailscalePlaces &places)
{
    return std::ranges::any_of(places.tools + QStringList(places.application), &fileExists) ||
           findTool(toolName, toolSearchPath());
}

std::optional<QString> NetworkHelpers::getTailscaleIP(const TailscalePlaces &places)
{
    const QString address = runProcess(tailscaleCLI(places), {u"ip"_s, u"-4"_s}).trimmed();
    return address.isEmpty() ? std::nullopt : std::optional(address);
}

std::optional<QString> NetworkHelpers::getTailscaleServeURL(const TailscalePlaces &places)
{
    const QString status = runProcess(tailscaleCLI(places), {u"serve"_s, u"status"_s});
    for (const QStringView line : QStringView(status).split(u'\n')) {
        if (line.contains("https://"_L1)) {
            return withoutBlanks(line).toString();
        }
    }
    return std::nullopt;
}

std::optional<QString> NetworkHelpers::getSelfMagicDNS(const TailscalePlaces &places)
{
    return selfMagicDNS(outputOf(tailscaleCLI(places), {u"status"_s, u"--json"_s}));
}

QList<OnlinePeer> NetworkHelpers::getOnlinePeers(const TailscalePlaces &places)
{
    return onlinePeers(outputOf(tailscaleCLI(places), {u"status"_s, u"--json"_s}));
}

std::optional<QString> NetworkHelpers::getLocalIP()
{
    return firstLanAddress(interfaceAddresses());
}

} // namespace ostrelle
