#include "core/ShellWord.h"
#include "core/ToolEnvironment.h"
#include "core/WhenDone.h"
#include "platform/ChildProcess.h"
#include "platform/FileWriting.h"
#include "platform/Terminal.h"
#include "setup/AskpassFile.h"
#include "setup/InstallerOutput.h"
#include "setup/SetupManager.h"
#include "setup/SetupShell.h"

namespace ostrelle
{

using namespace Qt::StringLiterals;

namespace
{

const QString bash = u"/bin/bash"_s;

const QString wrongPassword = u"Incorrect password — try again."_s;

// The line in a login shell, with the password from the standard input in its environment. It is
// read before that shell begins: the user's profile may read the standard input too.
QString withPassword(const QString &line)
{
    return u"IFS= read -r SUDO_PASS; export SUDO_PASS; exec "_s + bash + u" -lc "_s + quoted(line) +
           u" </dev/null"_s;
}

} // namespace

// Runs the shipped installer, in the background.
class SetupManager::GatewayInstallation
{
public:
    void run()
    {
        if (feed.isManagerGone()) {
            return;
        }
        if (const InstallerUnit own(sudoSearchPath); isConfined && own.canBeStarted()) {
            unit = own;
        }
        if (resources) {
            installFrom(*resources + u"/install-duskrell.sh"_s);
        }
        askpass->remove();
        feed.publish([](SetupManager &manager) { manager.finishInstallation(); });
    }

    const ProgressFeed::Writer feed;
    const std::optional<QString> resources;
    const QString password;
    const QString sudoSearchPath;
    const bool isConfined;
    const std::shared_ptr<AskpassFile> askpass;
    // Absent: the installer is an ordinary child.
    std::optional<InstallerUnit> unit = std::nullopt;

private:
    void installFrom(const QString &installer) const;
    std::expected<ChildResult, ChildFailure> start(const QString &line, ChildOptions options) const;
    void primeSudo() const;
    void tellProblem(const QString &text) const;
    void report(const ChildResult &result, bool sudoFailed) const;
};

void SetupManager::GatewayInstallation::installFrom(const QString &installer) const
{
    if (!fileExists(installer)) {
        tellProblem(u"ERROR: install-duskrell.sh not found in app bundle"_s);
        return;
    }
    if (unit && unit->isRunning()) {
        tellProblem(u"ERROR: the installer still runs that was started before Ostrelle was; "
                    "systemctl --user stop ostrelle-install ends it"_s);
        return;
    }
    InstallerOutput output;
    const auto result =
        start(u"bash "_s + quoted(installer) + u" 2>&1"_s,
              {.capture = Capture::Merged,
               .onOutput = [&](const QByteArray &piece) { feed.addOutput(output.take(piece)); }});
    if (!result) {
        tellProblem(u"ERROR: "_s + result.error().text);
        return;
    }
    report(*result, output.sudoFailed());
}

std::expected<ChildResult, ChildFailure>
SetupManager::GatewayInstallation::start(const QString &line, ChildOptions options) const
{
    QProcessEnvironment environment = shellEnvironment();
    environment.insert(u"SUDO_ASKPASS"_s, askpass->write(password).value_or(QString()));
    environment.insert(u"NONINTERACTIVE"_s, u"1"_s);
    if (unit) {
        options.input = password.toUtf8() + '\n';
        return runChild(unit->starting({.program = bash,
                                        .arguments = {u"-c"_s, withPassword(line)},
                                        .environment = environment}),
                        options);
    }
    environment.insert(u"SUDO_PASS"_s, password);
    primeSudo();
    return runChild({.program = bash, .arguments = {u"-lc"_s, line}, .environment = environment},
                    options);
}

// So that the installer's own sudo finds fresh credentials. The password goes through a pipe: every
// process can read a command line.
void SetupManager::GatewayInstallation::primeSudo() const
{
    static_cast<void>(runChild({.program = u"sudo"_s,
                                .arguments = {u"-S"_s, u"-v"_s},
                                .environment = toolEnvironment(sudoSearchPath)},
                               {.capture = Capture::Nothing, .input = password.toUtf8() + '\n'}));
}

// The log is cleared when the voice parts are installed next.
void SetupManager::GatewayInstallation::tellProblem(const QString &text) const
{
    feed.addStatus(text);
    feed.publish([text](SetupManager &manager) {
        manager.m_installProblem = text;
        manager.m_problem = text;
    });
}

void SetupManager::GatewayInstallation::report(const ChildResult &result, bool sudoFailed) const
{
    if (sudoFailed) {
        feed.publish([](SetupManager &manager) {
            manager.m_sudoPasswordError = true;
            manager.m_problem = wrongPassword;
            manager.m_statusMessages.clear();
        });
        feed.addStatus(wrongPassword);
    } else if (result.exitStatus != 0) {
        tellProblem(u"⚠ Install finished with errors (exit %1)"_s.arg(result.exitStatus));
    } else {
        feed.addStatus(u"✓ Installation complete!"_s);
    }
}

void SetupManager::installDuskrell()
{
    installDuskrell(m_sudoPassword);
}

void SetupManager::installDuskrell(const QString &typed)
{
    if (m_isInstallingDuskrell) {
        return;
    }
    const QString password = typed.trimmed();
    if (password.isEmpty()) {
        m_needsSudoPassword = true;
        return;
    }
    m_needsSudoPassword = false;
    m_sudoPasswordError = false;
    m_installProblem = QString();
    m_problem = QString();
    m_isInstallingDuskrell = true;
    m_statusMessages.clear();
    const auto feed = m_feed.writer();
    feed.addStatus(u"Installing Duskrell + dependencies…"_s);
    feed.addStatus(u"This may take 5–10 minutes on a fresh Mac."_s);

    userInitiatedPool().start([installation = GatewayInstallation{
                                   .feed = feed,
                                   .resources = m_surroundings.resources,
                                   .password = password,
                                   .sudoSearchPath = m_surroundings.sudoSearchPath,
                                   .isConfined = m_surroundings.isConfined,
                                   .askpass = m_askpass}]() mutable { installation.run(); });
}

void SetupManager::finishInstallation()
{
    m_sudoPassword = QString();
    runChecks([this] {
        m_isInstallingDuskrell = false;
        if (!m_hasVenv || !m_hasModels) {
            installVoice();
        }
    });
}

void SetupManager::openOnboarding()
{
    userInitiatedPool().start([feed = m_feed.writer()] {
        const QByteArray script = "#!/bin/bash\n"
                                  "export PATH=/opt/homebrew/bin:/usr/local/bin:$PATH\n" +
                                  searchPathFor(gatewayCLI()).toUtf8() +
                                  "clear\n"
                                  "echo \"=== OSTRELLE — Duskrell Setup ===\"\n"
                                  "echo\n"
                                  "duskrell onboard\n"
                                  "echo\n"
                                  "echo \"Done! You can close this window.\"\n"
                                  "read -p \"Press Enter...\"\n";
        constexpr mode_t executable = 0755;
        const auto directory = privateTemporaryDirectory();
        const QString file = directory.value_or(QString()) + u"/ostrelle-onboard.command"_s;
        if (!directory || !createAnew(file, script, executable) || !openInTerminal(file)) {
            feed.addStatus(u"Could not open a terminal. Run in one: duskrell onboard"_s);
        }
    });
}

void SetupManager::saveGatewayToken()
{
    const QString token = m_gatewayTokenInput.value().trimmed();
    if (token.isEmpty()) {
        return;
    }
    const QString gateway = m_settings.config->current().gateway.url;
    m_gatewayTokenProblem = QString();
    whenDone(m_settings.tokens->saveForUser(gateway, token), this,
             [this](const Tokens::Saved &saved) {
                 if (saved) {
                     m_hasGatewayToken = true;
                 } else {
                     m_gatewayTokenProblem = u"Not saved: "_s + toString(saved.error());
                 }
             });
}

} // namespace ostrelle
