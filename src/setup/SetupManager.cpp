#include "setup/SetupManager.h"

#include "core/ExpandPath.h"
#include "core/ShellWord.h"
#include "core/ToolEnvironment.h"
#include "platform/ChildProcess.h"
#include "platform/Files.h"
#include "setup/AskpassFile.h"
#include "setup/ModelFile.h"
#include "setup/SetupShell.h"
#include "setup/VoiceVenv.h"

#include <QJsonDocument>
#include <QJsonObject>

#include <algorithm>
#include <array>
#include <utility>

namespace ostrelle
{

using namespace Qt::StringLiterals;

namespace
{

constexpr int maxCheckRuns = 4; // under way at once; more only when a tool hangs

const QString loginSite = u"https://login.tailscale.com/"_s;

const QString brewInstaller =
    u"/bin/bash -c \"$(curl -fsSL "
    "https://raw.githubusercontent.com/Homebrew/install/HEAD/install.sh)\""_s;

// A note for the user that names the first of these tools that is there; empty when none is.
QString noteOnStandIn(const QStringList &tools)
{
    for (const QString &tool : tools) {
        if (isOnPath(tool)) {
            return u"here: "_s + tool;
        }
    }
    return {};
}

// What installs programs here, and what it calls those that the setup needs.
struct PackageManager {
    QLatin1StringView tool;
    QLatin1StringView install;
    QLatin1StringView compiler;
    QLatin1StringView node;
    QLatin1StringView voice; // curl and Python's environments
};

constexpr std::array packageManagers{
    PackageManager{"apt-get"_L1, "sudo apt install "_L1, "build-essential"_L1, "nodejs npm"_L1,
                   "curl python3-venv"_L1},
    PackageManager{"dnf"_L1, "sudo dnf install "_L1, "gcc gcc-c++ make"_L1, "nodejs npm"_L1,
                   "curl python3-pip"_L1},
    PackageManager{"pacman"_L1, "sudo pacman -S "_L1, "base-devel"_L1, "nodejs npm"_L1,
                   "curl python"_L1},
    PackageManager{"zypper"_L1, "sudo zypper install "_L1, "gcc gcc-c++ make"_L1, "nodejs npm"_L1,
                   "curl python3-pip"_L1}};

std::optional<PackageManager> packageManager()
{
    const auto *const found = std::ranges::find_if(
        packageManagers, [](const PackageManager &manager) { return isOnPath(manager.tool); });
    return found != packageManagers.end() ? std::optional(*found) : std::nullopt;
}

// Empty where no such manager is.
QString installCommand(QLatin1StringView PackageManager::*packages)
{
    const auto manager = packageManager();
    return manager ? manager->install + (*manager).*packages : QString();
}

// Debian has a Python that can do everything but that. Alone (-I), it takes no venv.py of the
// working directory's for its own.
bool canMakeVenv()
{
    return runShell(u"python3 -I -c 'import venv, ensurepip'"_s, checkTimeout).success;
}

bool anyExists(const QStringList &paths)
{
    return std::ranges::any_of(paths, fileExists);
}

// The link that Tailscale prints for enabling its serve feature.
QString enableLink(const QString &output)
{
    for (const QString &line : output.split(u'\n')) {
        if (line.contains(loginSite)) {
            return line.trimmed();
        }
    }
    return {};
}

} // namespace

// One evaluation of all prerequisites, in the background.
class SetupManager::Checks
{
public:
    Checks(ProgressFeed::Writer writer, std::shared_ptr<const std::atomic<int>> newest,
           Settings settings, std::optional<QString> resources)
        : m_writer(std::move(writer))
        , m_newest(std::move(newest))
        , m_generation(*m_newest)
        , m_settings(std::move(settings))
        , m_resources(std::move(resources))
    {
    }

    // Ends early when it is superseded: whatever hangs holds up each run for one command only.
    void run() const
    {
        for (const auto check :
             {&Checks::checkPython, &Checks::checkXcodeCLT, &Checks::checkBrew, &Checks::checkNode,
              &Checks::checkDuskrell, &Checks::checkTailscale, &Checks::checkFiles}) {
            if (m_generation == *m_newest) {
                (this->*check)();
            }
        }
        m_writer.publish([generation = m_generation](SetupManager &manager) {
            manager.finishChecks(generation);
        });
    }

private:
    void checkPython() const;
    void checkXcodeCLT() const;
    void checkBrew() const;
    void checkNode() const;
    void checkDuskrell() const;
    void checkTailscale() const;
    void checkTailscaleState() const;
    void checkServe(const QString &cli) const;
    void checkFiles() const;
    void checkVoiceParts(const OstrelleConfig &config) const;

    // Drops the results of a run that was superseded, and those of commands that were cut short
    // because the program ends.
    template<typename Change>
    void publish(const Change &change) const
    {
        if (programEnds()) {
            return;
        }
        m_writer.publish([generation = m_generation, change](SetupManager &manager) {
            if (generation == *manager.m_checkGeneration) {
                change(manager);
            }
        });
    }

    const ProgressFeed::Writer m_writer;
    const std::shared_ptr<const std::atomic<int>> m_newest;
    const int m_generation;
    const Settings m_settings;
    const std::optional<QString> m_resources;
};

void SetupManager::Checks::checkPython() const
{
    publish([found = isOnPath(u"python3"_s)](SetupManager &m) { m.m_hasPython = found; });
}

void SetupManager::Checks::checkNode() const
{
    const bool isThere = isOnPath(u"node"_s) || fileExists(u"/opt/homebrew/bin/node"_s);
    const QString command = isThere ? QString() : installCommand(&PackageManager::node);
    publish([isThere, command](SetupManager &m) {
        m.m_nodeCommand = command;
        m.m_hasNode = isThere;
    });
}

void SetupManager::Checks::checkDuskrell() const
{
    // In these places it counts whether or not it may be run from there.
    const bool hasDuskrell =
        isOnPath(u"duskrell"_s) ||
        anyExists(QStringList(homeDirectory() + u"/.npm-global/bin/duskrell"_s) +
                  gatewayToolPlaces());
    publish([hasDuskrell](SetupManager &m) { m.m_hasDuskrell = hasDuskrell; });
}

void SetupManager::Checks::checkXcodeCLT() const
{
    const bool isThere = runShell(u"xcode-select -p 2>/dev/null"_s, checkTimeout).success;
    const QString note = isThere ? QString() : noteOnStandIn({u"cc"_s});
    const QString command =
        isThere || !note.isEmpty() ? QString() : installCommand(&PackageManager::compiler);
    publish([isThere, note, command](SetupManager &m) {
        m.m_compilerCommand = command;
        m.m_xcodeCLTNote = note;
        m.m_hasXcodeCLT = isThere || !note.isEmpty();
    });
}

void SetupManager::Checks::checkBrew() const
{
    const bool isThere = isOnPath(u"brew"_s) || fileExists(u"/opt/homebrew/bin/brew"_s);
    const auto manager = isThere ? std::nullopt : packageManager();
    const QString note = manager ? u"here: "_s + manager->tool : QString();
    const QString command = isThere || manager ? QString() : brewInstaller;
    publish([isThere, note, command](SetupManager &m) {
        m.m_brewCommand = command;
        m.m_brewNote = note;
        m.m_hasBrew = isThere || !note.isEmpty();
    });
}

void SetupManager::Checks::checkTailscale() const
{
    const bool hasApp = anyExists(
        {u"/Applications/Tailscale.app"_s, homeDirectory() + u"/Applications/Tailscale.app"_s});
    const bool found = isOnPath(u"tailscale"_s) || hasApp;
    publish([found, hasApp](SetupManager &m) {
        m.m_hasTailscaleApp = hasApp;
        m.m_hasTailscale = found;
    });
    if (found) {
        checkTailscaleState();
    }
}

void SetupManager::Checks::checkTailscaleState() const
{
    const QString cli = quoted(tailscaleCLI());
    const ShellResult status = runShell(cli + u" status --json 2>/dev/null"_s, checkTimeout);
    const auto state =
        QJsonDocument::fromJson(status.output.toUtf8()).object().value("BackendState"_L1);
    const bool loggedIn = status.success && state.toString() == "Running"_L1;
    publish([loggedIn](SetupManager &m) { m.m_tailscaleLoggedIn = loggedIn; });
    checkServe(cli);
}

void SetupManager::Checks::checkServe(const QString &cli) const
{
    const ShellResult serve = runShell(cli + u" serve status 2>/dev/null"_s, checkTimeout);
    const bool isRunning = serve.success && serve.output.contains("https://"_L1);
    publish([isRunning](SetupManager &m) { m.m_tailscaleServeRunning = isRunning; });

    const QString answer =
        isRunning ? QString() : runShell(cli + u" serve status 2>&1"_s, checkTimeout).output;
    const bool notEnabled = answer.contains("not enabled"_L1);
    publish([notEnabled, link = notEnabled ? enableLink(answer) : QString()](SetupManager &m) {
        m.m_tailscaleServeNotEnabled = notEnabled;
        m.m_tailscaleServeEnableURL = link;
    });
}

void SetupManager::Checks::checkFiles() const
{
    const OstrelleConfig config = m_settings.config->snapshot();
    const bool hasToken = !config.resolveToken(*m_settings.tokens).isEmpty();
    publish([hasToken](SetupManager &m) { m.m_hasGatewayToken = hasToken; });
    const bool hasAgent = fileExists(homeDirectory() + u"/.duskrell/agents/main/agent"_s);
    publish([hasAgent](SetupManager &m) { m.m_hasAgent = hasAgent; });
    const bool hasConfig = fileExists(m_settings.config->file());
    publish([hasConfig](SetupManager &m) { m.m_hasConfig = hasConfig; });
    checkVoiceParts(config);
}

void SetupManager::Checks::checkVoiceParts(const OstrelleConfig &config) const
{
    const bool hasVenv = VoiceVenv(expandPath(config.voice.venvPath), m_resources).exists();
    const bool hasModels = ModelFile::speechModel().exists();
    const bool lacksTool = (!hasModels && !isOnPath(u"curl"_s)) || (!hasVenv && !canMakeVenv());
    const QString command = lacksTool ? installCommand(&PackageManager::voice) : QString();
    publish([hasVenv, hasModels, command](SetupManager &m) {
        m.m_voiceCommand = command;
        m.m_hasVenv = hasVenv;
        m.m_hasModels = hasModels;
    });
}

SetupManager::SetupManager(Settings settings, SetupSurroundings surroundings, QObject *parent)
    : QObject(parent)
    , m_settings(std::move(settings))
    , m_surroundings(std::move(surroundings))
    , m_feed(*this)
    , m_askpass(std::make_shared<AskpassFile>())
    , m_checkPasses(maxCheckRuns)
    , m_checkGeneration(std::make_shared<std::atomic<int>>(0))
{
    m_checks.setBinding([this] { return describe(); });
    utilityPool().start([askpass = m_askpass] { askpass->removeLeftover(); });
}

SetupManager::~SetupManager()
{
    m_askpass->close();
}

void SetupManager::runChecks()
{
    runChecks({});
}

void SetupManager::runChecks(std::function<void()> afterwards)
{
    if (afterwards) {
        m_afterChecks.push_back(std::move(afterwards));
    }
    const PassLimit::Pass pass = m_checkPasses.begin();
    if (!pass) {
        return;
    }
    ++*m_checkGeneration;
    const Checks checks(m_feed.writer(), m_checkGeneration, m_settings, m_surroundings.resources);
    userInitiatedPool().start([checks, pass] { checks.run(); });
}

void SetupManager::finishChecks(int generation)
{
    if (generation != *m_checkGeneration) {
        return;
    }
    for (const auto &afterwards : std::exchange(m_afterChecks, {})) {
        afterwards();
    }
}

void SetupManager::checkFirstLaunch()
{
    runChecks([this] {
        const bool isReady = m_hasXcodeCLT && m_hasBrew && m_hasNode && m_hasDuskrell &&
                             m_hasConfig && m_hasVenv && m_hasModels;
        if (!isReady) {
            m_showSetup = true;
        }
    });
}

} // namespace ostrelle

#include "moc_SetupManager.cpp"
