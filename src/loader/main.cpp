// The program proper is in two libraries: one runs on a desktop, the other without a display. They
// are loaded from here, so that each looks up its names only among the libraries that it needs
// itself. Linked, all of Qt Widgets would come with a headless publisher, or be looked up among
// everything that was loaded before it.

#include "loader/OpenLibrary.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <dlfcn.h>
#include <span>
#include <string>
#include <string_view>

namespace
{

// The link that the desktop opens the program with is empty where there is none.
using Run = int (*)(int argc, char **argv, const char *link);

// Takes the link from the command line, which every user can read: it may carry a token. What is no
// link of ours is left alone.
std::string takeLink(std::span<char *> arguments)
{
    constexpr std::string_view scheme = "ostrelle:";
    for (char *const argument : arguments.subspan(std::min<std::size_t>(arguments.size(), 1))) {
        std::string text(argument);
        if (::strncasecmp(argument, scheme.data(), scheme.size()) == 0) {
            ::explicit_bzero(argument, text.size());
            return text;
        }
    }
    return {};
}

std::string_view variable(const char *name)
{
    const char *value = std::getenv(name);
    return value != nullptr ? value : "";
}

// Whether the session seems to have a display, as its environment tells.
bool hasDisplay()
{
    if (const auto chosen = variable("QT_QPA_PLATFORM"); !chosen.empty()) {
        return !chosen.starts_with("offscreen") && !chosen.starts_with("minimal");
    }
    return !variable("DISPLAY").empty() || !variable("WAYLAND_DISPLAY").empty();
}

Run load(const char *library, const char *entry)
{
    void *const loaded = openLibrary(library);
    void *const run = loaded != nullptr ? ::dlsym(loaded, entry) : nullptr;
    if (run == nullptr) {
        std::fprintf(stderr, "[Ostrelle] %s\n", ::dlerror());
    }
    return reinterpret_cast<Run>(run);
}

} // namespace

int main(int argc, char **argv)
{
    // Before anything is loaded, which may take long.
    const std::string link = takeLink({argv, static_cast<std::size_t>(argc)});
    Run run = hasDisplay() ? load("libostrelle_desktop.so", "runOnDesktop") : nullptr;
    if (run == nullptr) {
        run = load("libostrelle.so", "runHeadless");
    }
    return run != nullptr ? run(argc, argv, link.c_str()) : EXIT_FAILURE;
}
