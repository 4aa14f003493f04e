#pragma once

#include "core/Json.h"
#include "core/NamedColor.h"

#include <QList>
#include <QObject>
#include <QString>
#include <QVariant>

#include <optional>

namespace ostrelle
{

// One agent in the topology. Views read it too; for them, what an agent lacks is undefined.
struct AgentNode {
    Q_GADGET
    Q_PROPERTY(QString id MEMBER id)
    Q_PROPERTY(QString name MEMBER name)
    Q_PROPERTY(QString status MEMBER status)
    Q_PROPERTY(QVariant detail READ detailOrUndefined)
    Q_PROPERTY(QVariant model READ modelOrUndefined)
    Q_PROPERTY(QVariant progressText READ progressTextOrUndefined)
    Q_PROPERTY(QString colorName READ nameOfColor)
    Q_PROPERTY(QString defaultEmoji READ defaultEmoji)
    Q_PROPERTY(bool isWorking READ isWorking)

public:
    QString id;
    QString name;
    QString status;
    std::optional<QString> detail = std::nullopt;
    std::optional<QString> model = std::nullopt;
    std::optional<QString> progressText = std::nullopt;
    NamedColor color = NamedColor::TiffanyBlue;
    std::optional<QString> parentId = std::nullopt; // none for the main node

    // 0: at work; 1: about to start, or waiting; 2: ended; 3: a status word that nobody knows.
    int priority() const;
    bool isWorking() const { return priority() == 0; }
    QString defaultEmoji() const;
    bool isMain() const;
    const QString &identity() const { return id; }

    QVariant detailOrUndefined() const;
    QVariant modelOrUndefined() const;
    QVariant progressTextOrUndefined() const;
    QString nameOfColor() const { return colorName(color); }

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
