#pragma once

#include "core/BackgroundWork.h"

#include <QObject>
#include <QTimer>

#include <functional>
#include <memory>
#include <stop_token>
#include <vector>

namespace ostrelle
{

// Runs a pass in the background, once at the start and then at intervals. Passes may overlap
// when the gateway tool is slow; when four run already, the oldest hangs and makes way for the
// next. A running pass outlives the service. Main thread only.
class SyncService : public QObject
{
    Q_OBJECT

public:
    void start();

    // Hands one pass to the background and returns at once.
    void sync();

protected:
    // The pass runs on a background thread and owns all that it needs. It ends soon once it is told
    // to stop.
    using Pass = std::function<void(const std::stop_token &stop)>;
    SyncService(Pass pass, QObject *parent,
                std::chrono::milliseconds every = std::chrono::seconds(30));

private:
    struct UnderWay {
        std::weak_ptr<const void> pass; // empty when it has ended
        std::stop_source stop;
    };

    void stopOldest();

    const Pass m_pass;
    PassLimit m_limit{8}; // for the case that a pass does not end although it was told to
    std::vector<UnderWay> m_underWay; // the oldest first
    QTimer m_timer;
};

} // namespace ostrelle
