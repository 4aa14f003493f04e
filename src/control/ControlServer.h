#pragma once

#include "control/TailnetDevices.h"
#include "core/BackgroundWork.h"

#include <QObject>

#include <functional>

namespace ostrelle
{

// What the commands work with.
struct ControlContext {
    // All of it, or the settings alone where no program runs.
    Models models;
    QString version = {};
    std::function<void()> openPanel = {}; // null without a display
    bool isRunning = true;                // this is the running program
    TailscalePlaces tailscale = {};
    // Looks at files, keyring and other machines under way. They outlast an answer that did not
    // wait for them, and many who ask must not use up the threads that the panel needs too.
    std::shared_ptr<PassLimit> looks = std::make_shared<PassLimit>(8);
    std::shared_ptr<TailnetDevices> devices = std::make_shared<TailnetDevices>();
};

// Answers ostrellectl: what the panel shows, and what its buttons do. Main thread only.
class ControlServer : public QObject
{
    Q_OBJECT

public:
    explicit ControlServer(ControlContext context, QObject *parent = nullptr);

    // Calls `reply` with the line that answers this one; not at all once the asker is gone.
    void ask(const QByteArray &line, QObject *asker,
             const std::function<void(const QByteArray &line)> &reply) const;

private:
    const ControlContext m_context;
};

} // namespace ostrelle
