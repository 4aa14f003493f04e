#include "setup/SetupChecks.h"

#include "setup/SetupManager.h"

namespace ostrelle
{

using namespace Qt::StringLiterals;

namespace
{

const QString tailscaleUp = u"sudo tailscale up"_s;

void describeTools(SetupChecks &checks, const SetupManager &setup)
{
    checks.compiler = {.label = u"Xcode CLI Tools"_s,
                       .ok = setup.hasXcodeCLT(),
                       .note = setup.xcodeCLTNote(),
                       .advice = u"here: gcc or clang, then "_s + reCheckBelow,
                       .commands = {setup.compilerCommand()}};
    checks.brew = {.label = u"Homebrew"_s,
                   .ok = setup.hasBrew(),
                   .note = setup.brewNote(),
                   .commands = {setup.brewCommand()}};
    checks.node = {.label = u"Node.js"_s, .ok = setup.hasNode(), .commands = {setup.nodeCommand()}};
    checks.duskrell = {.label = u"Duskrell"_s,
                       .ok = setup.hasDuskrell(),
                       .advice = u"here: "_s + installEverythingBelow};
    checks.tailscale = {.label = u"Tailscale"_s,
                        .ok = setup.hasTailscale(),
                        .advice = u"here: what this page says, then the command"_s,
                        .commands = {u"https://tailscale.com/download/linux"_s, tailscaleUp}};
}

void describeTailscale(SetupChecks &checks, const SetupManager &setup)
{
    checks.loggedIn = {.label = u"Tailscale logged in"_s,
                       .ok = setup.tailscaleLoggedIn(),
                       .commands = {setup.hasTailscaleApp() ? QString() : tailscaleUp}};
    checks.serve = {.label = u"HTTPS serve active"_s,
                    .ok = setup.tailscaleServeRunning(),
                    .commands = {u"sudo tailscale serve --bg http://127.0.0.1:18789"_s}};
}

void describeGateway(SetupChecks &checks, const SetupManager &setup)
{
    checks.agent = {.label = u"Agent configured"_s,
                    .ok = setup.hasAgent(),
                    .commands = {u"duskrell onboard"_s}};
    checks.token = {.label = u"Token configured"_s,
                    .ok = setup.hasGatewayToken(),
                    .note = setup.gatewayTokenProblem(),
                    .advice =
                        setup.hasAgent() ? QString() : u"here: once the agent is configured"_s};
}

void describeVoice(SetupChecks &checks, const SetupManager &setup)
{
    const QString command = setup.voiceCommand();
    const QString advice =
        (command.isEmpty() ? u"here: "_s : u"here: this first, then "_s) + installVoiceBelow;
    checks.config = {.label = u"Config file"_s,
                     .ok = setup.hasConfig(),
                     .advice = u"here: "_s + installVoiceBelow};
    checks.models = {
        .label = u"TTS Models"_s, .ok = setup.hasModels(), .advice = advice, .commands = {command}};
    // Above it, the same command stands already.
    checks.venv = {.label = u"Python venv"_s,
                   .ok = setup.hasVenv(),
                   .advice = advice,
                   .commands = {setup.hasModels() ? command : QString()}};
}

} // namespace

SetupChecks SetupManager::describe() const
{
    SetupChecks checks;
    describeTools(checks, *this);
    describeTailscale(checks, *this);
    describeGateway(checks, *this);
    describeVoice(checks, *this);
    return checks;
}

} // namespace ostrelle

#include "moc_SetupChecks.cpp"
