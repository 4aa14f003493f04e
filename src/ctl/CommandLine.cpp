#include "ctl/CommandLine.h"

#include "ctl/Commands.h"
#include "ctl/Completions.h"
#include "ctl/Tables.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <cstring>
#include <functional>
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
    CLI::App *addWithJson(const std::string &name, const std::string &description, const Run &run);
    void addStatus();
    void addLists();
    void addButtons();
    void addVoice();
    void addGateways();
    void addPairing();
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
    std::string m_gateway;
    std::string m_name;
    std::string m_file;
    std::string m_shell;
    Pairing m_pairing;
    bool m_isAgreed = false;
};

CommandLine::CommandLine()
{
    m_app.require_subcommand(0, 1); // a wrong one is better told than a missing one
    m_app.set_version_flag("--version", "ostrellectl " OSTRELLE_VERSION);
    m_app.failure_message(CLI::FailureMessage::simple);
    addStatus();
    addLists();
    addButtons();
    addVoice();
    addGateways();
    addPairing();
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

CLI::App *CommandLine::addWithJson(const std::string &name, const std::string &description,
                                   const Run &run)
{
    CLI::App *const command = add(m_app, name, description, run);
    command->add_flag("--json", m_shown.asJson, "As JSON");
    return command;
}

void CommandLine::addStatus()
{
    CLI::App *const status =
        addWithJson("status", "What the pearl, the lights and the lock say",
                    [this] { return m_watches ? watchStatus(m_shown) : showStatus(m_shown); });
    status->add_flag("--watch", m_watches, "Again whenever something has changed");
    addWithJson("health", "The same in a line, and in the exit status",
                [this] { return showHealth(m_shown); });
}

void CommandLine::addLists()
{
    addWithJson("agents", "The agents of the gateway in use",
                [this] { return showList(u"agents"_s, m_shown, &agentsText); });
    addWithJson("projects", "Its projects",
                [this] { return showList(u"projects"_s, m_shown, &projectsText); });
    addWithJson("cron", "Its scheduled jobs",
                [this] { return showList(u"cron"_s, m_shown, &cronText); });
    addWithJson("setup", "What the setup finds, and what mends it",
                [this] { return showSetup(m_shown); });
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
    add(m_app, "unmute", "Unmutes it", [] { return act({.command = u"unmute"_s}); });
    add(m_app, "panel", "Opens the panel", [] { return act({.command = u"panel"_s}); });
}

void CommandLine::addVoice()
{
    CLI::App *const voice = m_app.add_subcommand("voice", "Starts and stops the voice agent");
    voice->require_subcommand(0, 1);
    const auto addAction = [&](const std::string &name, const std::string &description) {
        add(*voice, name, description, [command = u"voice-"_s + fromArgument(name)] {
            return act({.command = command}, u"Voice: %1"_s, "label"_L1);
        });
    };
    addAction("start", "Starts it, and switches it on where it is off");
    addAction("stop", "Stops it");
    addAction("restart", "Stops it and starts it again");
}

void CommandLine::addGateways()
{
    CLI::App *const gateways =
        addWithJson("gateways", "The saved gateways", [this] { return showGateways(m_shown); });
    gateways->require_subcommand(0, 1);
    const auto addChange = [&](const std::string &name, const std::string &description,
                               const QString &done) {
        CLI::App *const change =
            add(*gateways, name, description,
                [this, command = u"gateway-"_s + fromArgument(name), done] {
                    return act({.command = command,
                                .arguments = {{"gateway"_L1, fromArgument(m_gateway)},
                                              {"url"_L1, fromArgument(m_gateway)},
                                              {"name"_L1, fromArgument(m_name)}}},
                               done, "url"_L1);
                });
        return change;
    };
    addChange("use", "Makes a saved gateway the one in use", u"In use: %1"_s)
        ->add_option("GATEWAY", m_gateway, "Its name or URL")
        ->required();
    CLI::App *const addOne = addChange("add", "Saves a gateway", u"Saved: %1"_s);
    addOne->add_option("URL", m_gateway, "Its URL, or an address")->required();
    addOne->add_option("--name", m_name, "What to call it");
    addChange("remove", "Forgets a saved gateway; its token stays", u"Removed: %1"_s)
        ->add_option("GATEWAY", m_gateway, "Its name or URL")
        ->required();
}

void CommandLine::addPairing()
{
    CLI::App *const pair = add(m_app, "pair", "Shows the code that pairs a phone",
                               [this] { return pairPhone(m_shown, m_pairing); });
    pair->add_flag("--text", m_pairing.asLink, "As a link, which carries a token");
    pair->add_flag("--show-token", m_pairing.linkOnTerminal, "Show the link at a terminal too");
    pair->add_flag("--light", m_pairing.onLight, "For a light terminal without colours");
    CLI::App *const token = m_app.add_subcommand("token", "The gateway's token");
    token->require_subcommand(0, 1);
    add(*token, "set", "Stores the token that the standard input brings", [this] {
        return setToken(fromArgument(m_gateway));
    })->add_option("GATEWAY", m_gateway, "Whose it is, else of the gateway in use");
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
    for (char *const argument : arguments.subspan(1)) {
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
        return complainOf(QString::fromStdString(error.what()).section(u'\n', 0, 0));
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
