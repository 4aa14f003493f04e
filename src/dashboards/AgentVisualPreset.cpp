#include "dashboards/AgentVisualPreset.h"

#include <QStringList>

#include <algorithm>
#include <array>

namespace ostrelle
{

using namespace Qt::StringLiterals;

namespace
{

using Role = AgentVisualPreset::Role;

struct Rule {
    Role role;
    QLatin1StringView word;
    QLatin1StringView otherWord;
    QLatin1StringView thirdWord;

    bool matches(const QString &id) const
    {
        const auto holds = [&id](QLatin1StringView part) {
            return !part.isEmpty() && id.contains(part);
        };
        return holds(word) || holds(otherWord) || holds(thirdWord);
    }
};

// The first that matches counts: "devops" is a builder.
constexpr std::array rules = {
    Rule{Role::Research, "research"_L1, "search"_L1, {}},
    Rule{Role::Builder, "builder"_L1, "code"_L1, "dev"_L1},
    Rule{Role::Vision, "vision"_L1, "camera"_L1, {}},
    Rule{Role::Writer, "writer"_L1, "content"_L1, {}},
    Rule{Role::Design, "design"_L1, "ui"_L1, {}},
    Rule{Role::Ops, "ops"_L1, "infra"_L1, {}},
    Rule{Role::Qa, "qa"_L1, "test"_L1, {}},
};

Role roleOf(const QString &id)
{
    if (id == "main"_L1) {
        return Role::Main;
    }
    const auto rule = std::ranges::find_if(rules, [&](const Rule &r) { return r.matches(id); });
    return rule != rules.end() ? rule->role : Role::Custom;
}

QString emojiOf(Role role)
{
    switch (role) {
    case Role::Main:
        return u"🧠"_s;
    case Role::Research:
        return u"🔎"_s;
    case Role::Builder:
        return u"🧑💻"_s;
    case Role::Vision:
        return u"👁️"_s;
    case Role::Writer:
        return u"✍️"_s;
    case Role::Design:
        return u"🎨"_s;
    case Role::Ops:
        return u"🛠️"_s;
    case Role::Qa:
        return u"🧪"_s;
    case Role::Custom:
        return u"✨"_s;
    }
    return {};
}

} // namespace

AgentVisualPreset AgentVisualPreset::forAgent(const QString &id, NamedColor fallbackColor)
{
    const Role role = roleOf(id.toLower());
    return {.role = role, .emoji = emojiOf(role), .color = fallbackColor};
}

} // namespace ostrelle
