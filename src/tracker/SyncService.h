#pragma once

#include "core/BackgroundWork.h"

#include <QObject>
#include <QTimer>

#include <functional>

namespace ostrelle
{

// Runs a pass in the background, once at the start and then every 30 seconds. Passes may overlap
// when the gateway tool is slow; while four run, ticks are dropped. A running pass outlives the
// service. Main thread only.
class SyncService : public QObject
{
    Q_OBJECT

public:
    static constexpr std::chrono::seconds interval{30};

    void start();

    // Hands one pass to the background and returns at once.
    void sync();

protected:
    // The pass runs on a background thread and owns all that it needs.
    explicit SyncService(std::function<void()> pass, QObject *parent);

private:
    const std::function<void()> m_pass;
    PassLimit m_limit{4};
    QTimer m_timer;
};

} // namespace ostrelle
