#pragma once

#include "core/NamedColor.h"

#include <QString>

namespace ostrelle
{

// The role that an agent's id suggests, and how it is pictured.
struct AgentVisualPreset {
    enum class Role { Main, Research, Builder, Vision, Writer, Design, Ops, Qa, Custom };

    Role role;
    QString emoji;
    NamedColor color; // the fallback colour, whatever the role

    static AgentVisualPreset forAgent(const QString &id, NamedColor fallbackColor);
};

} // namespace ostrelle
