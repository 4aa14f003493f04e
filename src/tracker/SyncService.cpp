#include "tracker/SyncService.h"

namespace ostrelle
{

SyncService::SyncService(std::function<void()> pass, QObject *parent)
    : QObject(parent)
    , m_pass(std::move(pass))
{
    m_timer.setInterval(interval);
    connect(&m_timer, &QTimer::timeout, this, &SyncService::sync);
}

void SyncService::start()
{
    sync();
    m_timer.start();
}

void SyncService::sync()
{
    auto slot = m_limit.begin();
    if (!slot) {
        return;
    }
    // Shared, because the pool's tasks must be copyable.
    const auto underWay = std::make_shared<PassLimit::Pass>(std::move(*slot));
    utilityPool().start([pass = m_pass, underWay] { pass(); });
}

} // namespace ostrelle
