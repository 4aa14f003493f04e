#pragma once

#include "app/Program.h"
#include "desktop/AccessibilityBus.h"
#include "desktop/XSession.h"
#include "support/PrivateSession.h"
#include "support/ScratchHome.h"
#include "support/SimulatedGateway.h"

#include <optional>

// A home whose gateway answers, with a demo voice agent that starts with the program.
class DesktopHome : public ScratchHome
{
public:
    DesktopHome();

    // What the voice agent says of itself; empty while it does not answer.
    QByteArray voiceStatus() const;

    const SimulatedGateway gateway{*this};
    const quint16 voicePort;

private:
    // More cards than the panel has room for, and agents at work and at rest.
    void writeTrackers() const;
};

// A user before a whole desktop, who has the panel open: the controls are found as a screen reader
// finds them, and clicked as a hand does.
class Desk
{
public:
    explicit Desk(qreal scale = 1);
    ~Desk();
    Desk(const Desk &) = delete;
    Desk &operator=(const Desk &) = delete;

    // Clicks the control once it rests; false when it does not come.
    bool press(const QString &name, const QString &role = {}) const;
    // Clicks the field until the keyboard is at it.
    bool enter(const QString &field) const;
    bool shows(const QString &name) const { return reader.waitFor(name).has_value(); }

    // A picture of the panel, kept beside the test program; returns its file.
    static QString screenshot(const QString &name);

    const DesktopHome home;
    PrivateSession bus;
    const AccessibilityBus reader;
    XSession session;
    std::optional<Program> program;
    bool isOpen = false;

private:
    const qreal m_scale; // of the screen's pixels to those in which a screen reader is told places
};
