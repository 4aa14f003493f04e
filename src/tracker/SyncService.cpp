#include "tracker/SyncService.h"

#include "platform/Heap.h"

#include <algorithm>

namespace ostrelle
{

namespace
{

constexpr std::ptrdiff_t mostThatMayWork = 4;

} // namespace

SyncService::SyncService(Pass pass, QObject *parent, std::chrono::milliseconds every)
    : QObject(parent)
    , m_pass(std::move(pass))
{
    m_timer.setInterval(every);
    connect(&m_timer, &QTimer::timeout, this, &SyncService::sync);
}

void SyncService::start()
{
    sync();
    m_timer.start();
}

void SyncService::sync()
{
    stopOldest();
    const PassLimit::Pass underWay = m_limit.begin();
    if (!underWay) {
        return;
    }
    std::stop_source stop;
    m_underWay.push_back({underWay, stop});
    utilityPool().start([pass = m_pass, underWay, stop = stop.get_token()] {
        pass(stop);
        trimHeap(); // a list of very many sessions takes hundreds of megabytes
    });
}

// So that one more can begin.
void SyncService::stopOldest()
{
    std::erase_if(m_underWay, [](const UnderWay &run) { return run.pass.expired(); });
    const auto works = [](const UnderWay &run) { return !run.stop.stop_requested(); };
    if (std::ranges::count_if(m_underWay, works) >= mostThatMayWork) {
        std::ranges::find_if(m_underWay, works)->stop.request_stop();
    }
}

} // namespace ostrelle

#include "moc_SyncService.cpp"
