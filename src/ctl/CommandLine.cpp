#include "ctl/CommandLine.h"

#include "ctl/Commands.h"
#include "ctl/Completions.h"
#include "ctl/Setup.h"
#include "ctl/Tables.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <cstring>
#include <functional>
#include <optional>
#include <span>

namespace ostrelle
{

using namespace Qt::StringLiterals;

namespace
{

QString fromArgument(const std::string &argument)
{
    return QString::fromLocal8Bit(argument.c_str());
}

QString fromArguments(const std::vector<std::string> &arguments)
{
    QStringList words;
    for (const std::string &argument : arguments) {
        words.append(fromArgument(argument));
    }
    return words.join(u' ');
}

// The table of subcommands. What one of them is to do is remembered while the line is parsed, and
// done once all of it was understood.
class CommandLine
{
public:
    CommandLine();

    int run(int argc, char **argv);

private:
    using Run = std::function<int()>;

    CLI::App *add(CLI::App &parent, const std::string &name, const std::string &description,
                  const Run &run);
    CLI::App *addWithJson(CLI::App &parent, const std::string &name, const std::string &description,
                          const Run &run);
    // One whose rows have names that the completions ask for.
    CLI::App *addNamed(const std::string &name, const std::string &description, const Run &run);
    // What the program is asked to do, and what is printed once it is done.
    struct Request {
        QString command;
        QLatin1StringView subject = {}; // what the argument is called; empty: there is none
        QString done = {};              // with a member of the answer in place of "%1"
        QLatin1StringView told = {};    // that member
    };
    CLI::App *addRequest(CLI::App &parent, const std::string &name, const std::string &description,
                         const Request &request);
    int make(const Request &request) const;
    CLI::Option *addSubject(CLI::App &command, const std::string &name,
                            const std::string &description);

    void addStatus();
    void addLists();
    void addAgents();
    void addSetup();
    void addButtons();
    void addVoice();
    void addSettings();
    void addGateways();
    void addPairing();
    void addTokens();
    void addRest();
    void hideQuestion(std::span<char *> arguments) const;
    static int complainOf(const QString &usage);

    CLI::App m_app{"Ostrelle from a terminal", "ostrellectl"};
    Run m_run;
    // What the options say.
    Shown m_shown;
    bool m_watches = false;
    bool m_toggles = false;
    std::vector<std::string> m_words;
    // A gateway, an agent or a setting. An empty word, of a variable that is not set, say, is not
    // the same as none.
    std::optional<QString> m_subject;
    std::string m_name;
    std::string m_emoji;
    bool m_isDevice = false;
    std::string m_file;
    std::string m_shell;
    Pairing m_pairing;
    bool m_isAgreed = false;
};

CommandLine::CommandLine()
{
    // Of each that has any: a wrong one is better told than a missing one.
    m_app.require_subcommand(0, 1);
    m_app.set_version_flag("--version", "ostrellectl " OSTRELLE_VERSION);
    addStatus();
    addAgents();
    addLists();
    addSetup();
    addButtons();
    addVoice();
    addSettings();
    addGateways();
    addPairing();
    addTokens();
    addRest();
}

CLI::App *CommandLine::add(CLI::App &parent, const std::string &name,
                           const std::string &description, const Run &run)
{
    CLI::App *const command = parent.add_subcommand(name, description);
    command->parse_complete_callback([this, command, run] {
        if (command->get_subcommands().empty()) {
            m_run = run;
        }
    });
    return command;
}

CLI::App *CommandLine::addWithJson(CLI::App &parent, const std::string &name,
                                   const std::string &description, const Run &run)
{
    CLI::App *const command = add(parent, name, description, run);
    command->add_flag("--json", m_shown.asJson, "As JSON");
    return command;
}

CLI::App *CommandLine::addNamed(const std::string &name, const std::string &description,
                                const Run &run)
{
    CLI::App *const list = addWithJson(m_app, name, description, run);
    list->add_flag("--names", m_shown.namesOnly, "Only what they are called");
    return list;
}

CLI::App *CommandLine::addRequest(CLI::App &parent, const std::string &name,
                                  const std::string &description, const Request &request)
{
    return add(parent, name, description, [this, request] { return make(request); });
}

CLI::Option *CommandLine::addSubject(CLI::App &command, const std::string &name,
                                     const std::string &description)
{
    return command.add_option_function<std::string>(
        name, [this](const std::string &given) { m_subject = fromArgument(given); }, description);
}

int CommandLine::make(const Request &request) const
{
    QJsonObject arguments;
    if (m_subject) {
        arguments.insert(request.subject, *m_subject);
    }
    if (!m_name.empty()) {
        arguments.insert("name"_L1, fromArgument(m_name));
    }
    if (!m_emoji.empty()) {
        arguments.insert("emoji"_L1, fromArgument(m_emoji));
    }
    return act({.command = request.command, .arguments = arguments}, request.done, request.told);
}

void CommandLine::addStatus()
{
    CLI::App *const status =
        addWithJson(m_app, "status", "What the pearl, the lights and the lock say",
                    [this] { return m_watches ? watchStatus(m_shown) : showStatus(m_shown); });
    status->add_flag("--watch", m_watches, "Again whenever something has changed");
    addWithJson(m_app, "health", "The same in a line, and in the exit status",
                [this] { return showHealth(m_shown); });
}

void CommandLine::addLists()
{
    CLI::App *const projects = addWithJson(m_app, "projects", "Its projects", [this] {
        return showList(u"projects"_s, m_shown, &projectsText, Otherwise::FilesTell);
    });
    addRequest(*projects, "sync", "Has the gateway bring them up to date",
               {.command = u"projects-sync"_s});
    addWithJson(m_app, "cron", "Its scheduled jobs",
                [this] { return showList(u"cron"_s, m_shown, &cronText, Otherwise::FilesTell); });
}

void CommandLine::addAgents()
{
    CLI::App *const agents = addNamed("agents", "The agents of the gateway in use", [this] {
        return showList(u"agents"_s, m_shown, &agentsText, Otherwise::FilesTell);
    });
    const auto addChange = [&](const std::string &name, const std::string &description) {
        CLI::App *const change = addRequest(*agents, name, description,
                                            {.command = u"agent-"_s + fromArgument(name),
                                             .subject = "agent"_L1,
                                             .done = u"Shown as: %1"_s,
                                             .told = "name"_L1});
        addSubject(*change, "AGENT", "Its id, or what it is called")->required();
        return change;
    };
    CLI::App *const set = addChange("set", "Calls an agent what you like");
    set->add_option("--name", m_name, "What to call it");
    set->add_option("--emoji", m_emoji, "What to show in its disc");
    addChange("reset", "Calls it by its own name again");
}

void CommandLine::addSetup()
{
    CLI::App *const setup = addWithJson(m_app, "setup", "What the setup finds, and what mends it",
                                        [this] { return showSetup(m_shown); });
    addWithJson(*setup, "install", "Installs everything; the standard input brings the password",
                [this] { return installEverything(m_shown); });
    addWithJson(*setup, "voice", "Installs the voice agent's parts",
                [this] { return install(u"setup-voice"_s, m_shown); });
    addWithJson(*setup, "serve", "Has Tailscale serve the gateway over HTTPS",
                [this] { return install(u"setup-serve"_s, m_shown); });
    addWithJson(*setup, "progress", "What the work that is under way prints",
                [this] { return showProgress(m_shown); });
}

void CommandLine::addButtons()
{
    CLI::App *const ask = add(m_app, "chat", "Asks the gateway one question",
                              [this] { return chat(fromArguments(m_words)); });
    ask->add_option("TEXT", m_words, "The question, or - for the standard input")->required();
    CLI::App *const mute = add(m_app, "mute", "Mutes the voice agent", [this] {
        return act({.command = m_toggles ? u"mute-toggle"_s : u"mute"_s});
    });
    mute->add_flag("--toggle", m_toggles, "Or unmutes it where it is muted");
    addRequest(m_app, "unmute", "Unmutes it", {.command = u"unmute"_s});
    addRequest(m_app, "panel", "Opens the panel", {.command = u"panel"_s});
    addRequest(m_app, "quit", "Ends Ostrelle", {.command = u"quit"_s});
}

void CommandLine::addVoice()
{
    CLI::App *const voice = m_app.add_subcommand("voice", "Starts and stops the voice agent");
    const auto addAction = [&](const std::string &name, const std::string &description) {
        addRequest(*voice, name, description,
                   {.command = u"voice-"_s + fromArgument(name),
                    .done = u"Voice: %1"_s,
                    .told = "label"_L1});
    };
    addAction("start", "Starts it, and switches it on where it is off");
    addAction("stop", "Stops it");
    addAction("restart", "Stops it and starts it again");
}

void CommandLine::addSettings()
{
    CLI::App *const settings = addNamed("settings", "The switches of the settings", [this] {
        return showList(u"settings"_s, m_shown, &settingsText);
    });
    const auto addSwitch = [&](const std::string &name, const std::string &description) {
        CLI::App *const change =
            addRequest(*settings, name, description,
                       {.command = u"setting-"_s + fromArgument(name), .subject = "name"_L1});
        addSubject(*change, "SETTING", "One of those that \"settings\" lists")->required();
    };
    addSwitch("on", "Switches one on");
    addSwitch("off", "Switches one off");
    CLI::App *const key =
        m_app.add_subcommand("gemini-key", "The key that travels with the pairing code");
    add(*key, "set", "Stores the key that the standard input brings", &setGeminiKey);
    addRequest(*key, "remove", "Forgets it", {.command = u"gemini-key-remove"_s});
}

void CommandLine::addGateways()
{
    CLI::App *const gateways = addNamed("gateways", "The saved gateways", [this] {
        return showList(u"gateways"_s, m_shown, &gatewaysText);
    });
    const auto addChoice = [&](const std::string &name, const std::string &description,
                               const QString &done) {
        CLI::App *const choice = addRequest(*gateways, name, description,
                                            {.command = u"gateway-"_s + fromArgument(name),
                                             .subject = "gateway"_L1,
                                             .done = done,
                                             .told = "url"_L1});
        addSubject(*choice, "GATEWAY", "Its name or URL")->required();
    };
    addChoice("use", "Makes a saved gateway the one in use", u"In use: %1"_s);
    addWithJson(*gateways, "find", "The tailnet's devices that are not saved yet",
                [this] { return showList(u"gateway-find"_s, m_shown, &devicesText); });
    CLI::App *const addOne = add(*gateways, "add", "Saves a gateway", [this] {
        return make({.command = m_isDevice ? u"gateway-add-device"_s : u"gateway-add"_s,
                     .subject = m_isDevice ? "device"_L1 : "url"_L1,
                     .done = u"Saved: %1"_s,
                     .told = "url"_L1});
    });
    addSubject(*addOne, "URL", "Its URL, or an address")->required();
    addOne->add_option("--name", m_name, "What to call it");
    addOne->add_flag("--device", m_isDevice, "The URL is a device that \"find\" has found");
    addChoice("remove", "Forgets a saved gateway; its token stays", u"Removed: %1"_s);
    addRequest(*gateways, "encrypt", "Has this machine's publish itself through Tailscale",
               {.command = u"gateway-encrypt"_s});
}

void CommandLine::addPairing()
{
    CLI::App *const pair = add(m_app, "pair", "Shows the code that pairs a phone",
                               [this] { return pairPhone(m_shown, m_pairing); });
    pair->add_flag("--text", m_pairing.asLink, "As a link, which carries a token");
    pair->add_flag("--show-token", m_pairing.linkOnTerminal, "Show the link at a terminal too");
    pair->add_flag("--light", m_pairing.onLight, "For a light terminal without colours");
}

void CommandLine::addTokens()
{
    CLI::App *const token = m_app.add_subcommand("token", "The gateway's token");
    const std::string whose = "Whose it is, else of the gateway in use";
    CLI::App *const set = add(*token, "set", "Stores the token that the standard input brings",
                              [this] { return setToken(m_subject); });
    addSubject(*set, "GATEWAY", whose);
    CLI::App *const remove = addRequest(*token, "remove", "Forgets the stored token",
                                        {.command = u"token-remove"_s, .subject = "gateway"_L1});
    addSubject(*remove, "GATEWAY", whose);
    addRequest(*token, "reset", "Has this machine's gateway make a new one, and stores that",
               {.command = u"token-reset"_s});
}

void CommandLine::addRest()
{
    CLI::App *const report =
        add(m_app, "diagnose", "Writes a text for a bug report, and shows it first",
            [this] { return diagnose({.path = fromArgument(m_file), .isAgreed = m_isAgreed}); });
    report->add_option("FILE", m_file, "A new file, or - to see it only")->required();
    report->add_flag("--yes", m_isAgreed, "Do not ask before it is written");
    CLI::App *const completions =
        add(m_app, "completions", "The script that completes the command line", [this] {
            print(QString::fromStdString(completionsFor(m_shell, m_app)), m_shown.terminal);
            return Well;
        });
    completions->add_option("SHELL", m_shell, "bash, zsh or fish")
        ->required()
        ->check(CLI::IsMember(completedShells));
}

int CommandLine::complainOf(const QString &usage)
{
    complain(usage + u" (ostrellectl --help tells more)"_s);
    return WrongUsage;
}

// Everybody on this machine can read a command line, and the reply may take minutes.
void CommandLine::hideQuestion(std::span<char *> arguments) const
{
    for (char *const argument : arguments) {
        if (std::ranges::find(m_words, argument) != m_words.end()) {
            ::explicit_bzero(argument, std::strlen(argument));
        }
    }
}

int CommandLine::run(int argc, char **argv)
{
    try {
        m_app.parse(argc, argv);
    } catch (const CLI::Success &request) { // of help or of the version
        m_app.exit(request);
        return Well;
    } catch (const CLI::ParseError &error) {
        return complainOf(QString::fromStdString(error.what()));
    }
    hideQuestion({argv, static_cast<std::size_t>(argc)});
    return m_run ? m_run() : complainOf(u"a command is missing"_s);
}

} // namespace

int runCommandLine(int argc, char **argv)
{
    return CommandLine().run(argc, argv);
}

} // namespace ostrelle
