#pragma once

#include "setup/SetupManager.h"
#include "support/ScratchHome.h"

#include <QTest>

// A home whose login shell finds the tools in its own bin, and hardly any other.
class SetupHome : public ScratchHome
{
public:
    SetupHome();
    // Waits for what is still under way.
    ~SetupHome();

    // A shell script that is a tool; what it was called with is added to the file "calls".
    void addTool(const QString &name, const QByteArray &body = {}) const;
    void addRealTool(const QString &name) const;
    void addInstaller(const QByteArray &body) const;

    // Bundled resources below this home, no patience, and no real sudo.
    ostrelle::SetupSurroundings surroundings() const;

    // The calls of all tools so far, a line each.
    QStringList calls() const;
};

// Waits until a flow has come to its end.
bool waitFor(const std::function<bool()> &condition);

QStringList messagesOf(ostrelle::SetupManager &manager);
