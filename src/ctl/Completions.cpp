#include "ctl/Completions.h"

#include <CLI/CLI.hpp>
#include <functional>
#include <vector>

namespace ostrelle
{

namespace
{

struct Word {
    std::string text;
    std::string description;
};

// What may follow the subcommands of a path such as " gateways use".
struct Place {
    std::string path;
    std::vector<Word> words;
    bool takesFile = false;
    std::string names = {}; // the command that lists what else may stand there; empty: nothing
};

// The command that lists what an option of that name stands for.
std::string listOf(const std::string &option)
{
    return option == "GATEWAY"   ? "gateways"
           : option == "AGENT"   ? "agents"
           : option == "SETTING" ? "settings"
                                 : "";
}

// Has the program that is completed list them; says nothing where it cannot.
std::string listing(const Place &place, const std::string &program)
{
    return '"' + program + "\" " + place.names + " --names 2>/dev/null";
}

std::vector<const CLI::App *> subcommandsOf(const CLI::App &app)
{
    return app.get_subcommands([](const CLI::App *each) { return !each->get_group().empty(); });
}

Place placeOf(const CLI::App &app, const std::string &path)
{
    Place place{.path = path, .words = {}};
    for (const CLI::App *each : subcommandsOf(app)) {
        place.words.push_back({each->get_name(), each->get_description()});
    }
    for (const CLI::Option *option : app.get_options()) {
        if (const std::string name = option->get_name(); name.starts_with("--")) {
            place.words.push_back({name, option->get_description()});
        }
        place.takesFile = place.takesFile || option->get_name() == "FILE";
        place.names += listOf(option->get_name());
        if (option->get_name() == "SHELL") {
            for (const std::string &shell : completedShells) {
                place.words.push_back({shell, {}});
            }
        }
    }
    return place;
}

void addPlaces(std::vector<Place> &places, const CLI::App &app, const std::string &path)
{
    places.push_back(placeOf(app, path));
    for (const CLI::App *each : subcommandsOf(app)) {
        addPlaces(places, *each, path + ' ' + each->get_name());
    }
}

std::string inQuotes(const std::string &text)
{
    std::string word = "'";
    for (const char character : text) {
        word += character == '\'' ? std::string("'\\''") : std::string(1, character);
    }
    return word + '\'';
}

using MakeCase = std::function<std::string(const Place &place)>;

// The same case statement for the shells that have one.
std::string casesOf(const std::vector<Place> &places, const MakeCase &make)
{
    std::string text = "    case $place in\n";
    for (const Place &place : places) {
        text += "        " + inQuotes(place.path) + ") " + make(place) + " ;;\n";
    }
    return text + "    esac\n";
}

std::string forBash(const std::vector<Place> &places)
{
    return "_ostrellectl() {\n"
           "    local place='' words='' names='' name i\n"
           "    COMPREPLY=()\n"
           "    for ((i = 1; i < COMP_CWORD; i++)); do\n"
           "        [[ ${COMP_WORDS[i]} == -* ]] || place+=\" ${COMP_WORDS[i]}\"\n"
           "    done\n" +
           casesOf(places,
                   [](const Place &place) {
                       std::string words;
                       for (const Word &word : place.words) {
                           words += (words.empty() ? "" : " ") + word.text;
                       }
                       // Where nothing else fits, a file does.
                       return (place.takesFile ? "compopt -o default; [[ $2 == -* ]] && words="
                                               : "words=") +
                              inQuotes(words) +
                              (place.names.empty() ? ""
                                                   : "; names=$(" + listing(place, "$1") + ')');
                   }) +
           "    mapfile -t COMPREPLY < <(compgen -W \"$words\" -- \"$2\")\n"
           "    while IFS= read -r name; do\n"
           "        [[ $name && $name == \"$2\"* ]] && COMPREPLY+=(\"$(printf %q \"$name\")\")\n"
           "    done <<< \"$names\"\n"
           "}\n"
           "complete -F _ostrellectl ostrellectl\n";
}

std::string forZsh(const std::vector<Place> &places)
{
    return "#compdef ostrellectl\n"
           "local place='' word\n"
           "local -a list\n"
           "for word in ${words[2,CURRENT-1]}; do\n"
           "    [[ $word == -* ]] || place+=\" $word\"\n"
           "done\n" +
           casesOf(places,
                   [](const Place &place) {
                       std::string list = place.takesFile ? "_files; list=(" : "list=(";
                       for (const Word &word : place.words) {
                           list += ' ' + inQuotes(word.text + ':' + word.description);
                       }
                       return list + " )" +
                              (place.names.empty() ? ""
                                                   : "; compadd -- ${(f)\"$(" +
                                                         listing(place, "$words[1]") + ")\"}");
                   }) +
           "_describe 'ostrellectl' list\n";
}

std::string forFish(const std::vector<Place> &places)
{
    std::string text = "function __ostrellectl_at\n"
                       "    set -l words (commandline -opc)\n"
                       "    set -l path (string match -v -- '-*' $words[2..-1])\n"
                       "    test \"$path\" = \"$argv[1]\"\n"
                       "end\n"
                       "complete -c ostrellectl -f\n";
    for (const Place &place : places) {
        const std::string path = place.path.empty() ? "" : place.path.substr(1);
        const std::string condition =
            "complete -c ostrellectl -n " + inQuotes("__ostrellectl_at " + inQuotes(path));
        for (const Word &word : place.words) {
            text += condition + " -a " + inQuotes(word.text) + " -d " + inQuotes(word.description) +
                    '\n';
        }
        if (place.takesFile) {
            text += condition + " -F\n";
        }
        if (!place.names.empty()) {
            text += condition + " -a " + inQuotes('(' + listing(place, "ostrellectl") + ')') + '\n';
        }
    }
    return text;
}

} // namespace

std::string completionsFor(const std::string &shell, const CLI::App &app)
{
    std::vector<Place> places;
    addPlaces(places, app, "");
    if (shell == "zsh") {
        return forZsh(places);
    }
    return shell == "fish" ? forFish(places) : forBash(places);
}

} // namespace ostrelle
