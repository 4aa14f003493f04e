#pragma once

#include "core/NamedColor.h"
#include "tracker/Json.h"

#include <QList>
#include <QString>

#include <optional>

namespace ostrelle
{

// One agent in the topology.
struct AgentNode {
    QString id;
    QString name;
    QString status;
    std::optional<QString> detail = std::nullopt;
    std::optional<QString> model = std::nullopt;
    std::optional<QString> progressText = std::nullopt;
    NamedColor color = NamedColor::TiffanyBlue;
    std::optional<QString> parentId = std::nullopt; // none for the main node

    // 0 for those at work, 1 for those about to be or waiting, 2 for those that ended, 3 for what
    // nobody knows.
    int priority() const;
    QString defaultEmoji() const;
    bool isMain() const;
    const QString &identity() const { return id; }

    friend bool operator==(const AgentNode &, const AgentNode &) = default;
};

// The main node, then one node for each entry of the document's "agents" in code-point order. An
// entry that itself is called main is left out.
QList<AgentNode> makeNodes(const JsonObject &agents);

// The children of the main node in the order in which they are shown: the busiest first, then by
// name as the user's language sorts names.
QList<AgentNode> sortedChildren(const QList<AgentNode> &nodes);

} // namespace ostrelle

Q_DECLARE_TYPEINFO(ostrelle::AgentNode, Q_RELOCATABLE_TYPE);
