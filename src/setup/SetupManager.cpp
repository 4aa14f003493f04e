#include "setup/SetupManager.h"

#include "core/ExpandPath.h"
#include "core/ShellWord.h"
#include "platform/ChildProcess.h"
#include "platform/Files.h"
#include "setup/AskpassFile.h"
#include "setup/ModelFile.h"
#include "setup/SetupShell.h"

#include <QJsonDocument>
#include <QJsonObject>

#include <algorithm>
#include <utility>

namespace ostrelle
{

using namespace Qt::StringLiterals;

namespace
{

constexpr int maxCheckRuns = 4; // under way at once; more only when a tool hangs

const QString loginSite = u"https://login.tailscale.com/"_s;

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
    Checks(ProgressFeed::Writer writer, int generation, Settings settings)
        : m_writer(std::move(writer))
        , m_generation(generation)
        , m_settings(std::move(settings))
    {
    }

    void run() const
    {
        checkTools();
        if (checkTailscale()) {
            checkTailscaleState();
        }
        checkFiles();
        m_writer.publish([generation = m_generation](SetupManager &manager) {
            manager.finishChecks(generation);
        });
    }

private:
    void checkTools() const;
    void checkXcodeCLT() const;
    void checkBrew() const;
    bool checkTailscale() const;
    void checkTailscaleState() const;
    void checkServe(const QString &cli) const;
    void checkFiles() const;

    // Drops the results of a run that was superseded, and those of commands that were cut short
    // because the program ends.
    template<typename Change>
    void publish(const Change &change) const
    {
        if (programEnds()) {
            return;
        }
        m_writer.publish([generation = m_generation, change](SetupManager &manager) {
            if (generation == manager.m_checkGeneration) {
                change(manager);
            }
        });
    }

    const ProgressFeed::Writer m_writer;
    const int m_generation;
    const Settings m_settings;
};

void SetupManager::Checks::checkTools() const
{
    publish([found = isOnPath(u"python3"_s)](SetupManager &m) { m.m_hasPython = found; });
    checkXcodeCLT();
    checkBrew();
    const bool hasNode = isOnPath(u"node"_s) || fileExists(u"/opt/homebrew/bin/node"_s);
    publish([hasNode](SetupManager &m) { m.m_hasNode = hasNode; });
    const bool hasDuskrell =
        isOnPath(u"duskrell"_s) ||
        anyExists({homeDirectory() + u"/.npm-global/bin/duskrell"_s,
                   u"/opt/homebrew/bin/duskrell"_s, u"/usr/local/bin/duskrell"_s});
    publish([hasDuskrell](SetupManager &m) { m.m_hasDuskrell = hasDuskrell; });
}

void SetupManager::Checks::checkXcodeCLT() const
{
    const bool isThere = runShell(u"xcode-select -p 2>/dev/null"_s, checkTimeout).success;
    const QString note = isThere ? QString() : noteOnStandIn({u"cc"_s});
    publish([isThere, note](SetupManager &m) {
        m.m_xcodeCLTNote = note;
        m.m_hasXcodeCLT = isThere || !note.isEmpty();
    });
}

void SetupManager::Checks::checkBrew() const
{
    const bool isThere = isOnPath(u"brew"_s) || fileExists(u"/opt/homebrew/bin/brew"_s);
    const QString note =
        isThere ? QString() : noteOnStandIn({u"apt-get"_s, u"dnf"_s, u"pacman"_s, u"zypper"_s});
    publish([isThere, note](SetupManager &m) {
        m.m_brewNote = note;
        m.m_hasBrew = isThere || !note.isEmpty();
    });
}

bool SetupManager::Checks::checkTailscale() const
{
    const bool found =
        isOnPath(u"tailscale"_s) || anyExists({u"/Applications/Tailscale.app"_s,
                                               homeDirectory() + u"/Applications/Tailscale.app"_s});
    publish([found](SetupManager &m) { m.m_hasTailscale = found; });
    return found;
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
    const bool notEnabled =
        answer.contains("Serve is not enabled"_L1) || answer.contains("not enabled"_L1);
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
    const bool hasVenv = fileExists(expandPath(config.voice.venvPath) + u"/bin/python"_s);
    publish([hasVenv](SetupManager &m) { m.m_hasVenv = hasVenv; });
    const bool hasModels = ModelFile::speechModel().exists();
    publish([hasModels](SetupManager &m) { m.m_hasModels = hasModels; });
}

SetupManager::SetupManager(Settings settings, SetupSurroundings surroundings, QObject *parent)
    : QObject(parent)
    , m_settings(std::move(settings))
    , m_surroundings(std::move(surroundings))
    , m_feed(*this)
    , m_askpass(std::make_shared<AskpassFile>())
    , m_checkPasses(maxCheckRuns)
{
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
    const Checks checks(m_feed.writer(), ++m_checkGeneration, m_settings);
    userInitiatedPool().start([checks, pass] { checks.run(); });
}

void SetupManager::finishChecks(int generation)
{
    if (generation != m_checkGeneration) {
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
