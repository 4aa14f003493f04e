#include "setup/ProgressFeed.h"

#include "setup/SetupManager.h"

#include <algorithm>
#include <deque>
#include <iterator>
#include <mutex>
#include <variant>

namespace ostrelle
{

using namespace std::chrono_literals;

namespace
{

constexpr auto pause = 10ms;
constexpr std::size_t maxBatch = 5'000; // a few milliseconds of work

} // namespace

struct ProgressFeed::Queue {
    using Report = std::variant<QByteArray, Change>;

    // Wakes the feed up when it does not know yet that something is there.
    template<typename Fill>
    void add(Fill fill)
    {
        const std::scoped_lock lock(mutex);
        if (feed == nullptr) {
            return;
        }
        fill(reports);
        if (!isFeedAwake) {
            isFeedAwake = true;
            QMetaObject::invokeMethod(feed, &ProgressFeed::wakeUp, Qt::QueuedConnection);
        }
    }

    std::deque<Report> take()
    {
        const std::scoped_lock lock(mutex);
        const auto end =
            reports.begin() + static_cast<std::ptrdiff_t>(std::min(reports.size(), maxBatch));
        std::deque<Report> batch(std::move_iterator(reports.begin()), std::move_iterator(end));
        reports.erase(reports.begin(), end);
        isFeedAwake = !reports.empty();
        return batch;
    }

    std::mutex mutex;
    // protected by mutex
    ProgressFeed *feed = nullptr; // null once it is gone
    std::deque<Report> reports;
    bool isFeedAwake = false;
};

void ProgressFeed::Writer::addStatus(const QString &message) const
{
    m_queue->add([text = message.toUtf8()](auto &reports) { reports.push_back(text); });
}

void ProgressFeed::Writer::addStatus(QByteArrayList &&messages) const
{
    m_queue->add([&messages](auto &reports) {
        std::move(messages.begin(), messages.end(), std::back_inserter(reports));
    });
}

void ProgressFeed::Writer::publish(Change change) const
{
    m_queue->add([&change](auto &reports) { reports.push_back(std::move(change)); });
}

bool ProgressFeed::Writer::isManagerGone() const
{
    const std::scoped_lock lock(m_queue->mutex);
    return m_queue->feed == nullptr;
}

ProgressFeed::ProgressFeed(SetupManager &manager)
    : m_manager(manager)
    , m_queue(std::make_shared<Queue>())
{
    m_queue->feed = this;
    m_pause.setSingleShot(true);
    connect(&m_pause, &QTimer::timeout, this, &ProgressFeed::takeBatch);
}

ProgressFeed::~ProgressFeed()
{
    const std::scoped_lock lock(m_queue->mutex);
    m_queue->feed = nullptr;
}

void ProgressFeed::wakeUp()
{
    m_pause.start(pause);
}

void ProgressFeed::takeBatch()
{
    QByteArrayList messages;
    for (Queue::Report &report : m_queue->take()) {
        if (auto *message = std::get_if<QByteArray>(&report)) {
            messages.append(std::move(*message));
            continue;
        }
        m_manager.statusMessages()->append(std::exchange(messages, {}));
        std::get<Change>(report)(m_manager);
    }
    m_manager.statusMessages()->append(std::move(messages));
    const std::scoped_lock lock(m_queue->mutex);
    if (m_queue->isFeedAwake) {
        wakeUp();
    }
}

} // namespace ostrelle
