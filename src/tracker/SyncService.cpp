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
    if (const PassLimit::Pass underWay = m_limit.begin()) {
        utilityPool().start([pass = m_pass, underWay] { pass(); });
    }
}

} // namespace ostrelle

#include "moc_SyncService.cpp"
