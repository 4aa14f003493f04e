#include "setup/ProgressFeed.h"

#include "platform/ChildProcess.h"
#include "setup/SetupManager.h"

#include <QTimer>

#include <condition_variable>
#include <deque>
#include <mutex>
#include <variant>
#include <vector>

namespace ostrelle
{

using namespace std::chrono_literals;

namespace
{

constexpr auto pause = 10ms;
constexpr qsizetype enoughForBatch = 5'000;  // messages; a few milliseconds of work
constexpr std::size_t maxWaitingOutput = 16; // reports, each of what a pipe holds
constexpr auto endOfProgramCheck = 100ms;

} // namespace

struct ProgressFeed::Queue {
    using Report = std::variant<QByteArrayList, Change>;

    void add(Report report)
    {
        const std::scoped_lock lock(mutex);
        addLocked(std::move(report));
    }

    void addWhenThereIsRoom(Report report)
    {
        std::unique_lock lock(mutex);
        const auto hasRoom = [this] { return !feed || reports.size() < maxWaitingOutput; };
        while (!room.wait_for(lock, endOfProgramCheck, hasRoom) && !programEnds()) {
        }
        addLocked(std::move(report));
    }

    // A few reports, and at least one when any is there.
    std::vector<Report> take()
    {
        const std::scoped_lock lock(mutex);
        std::vector<Report> batch;
        for (qsizetype messages = 0; !reports.empty() && messages < enoughForBatch;) {
            const auto *output = std::get_if<QByteArrayList>(&reports.front());
            messages += output ? output->size() : 1;
            batch.push_back(std::move(reports.front()));
            reports.pop_front();
        }
        if (!reports.empty()) {
            wakeFeed();
        }
        room.notify_all();
        return batch;
    }

    void detach()
    {
        const std::scoped_lock lock(mutex);
        feed = nullptr;
        room.notify_all();
    }

    std::mutex mutex;
    std::condition_variable room;
    // protected by mutex
    ProgressFeed *feed = nullptr; // null once it is gone
    std::deque<Report> reports;   // as long as any is there, a wake-up is under way

private:
    void addLocked(Report report)
    {
        if (feed == nullptr) {
            return;
        }
        reports.push_back(std::move(report));
        if (reports.size() == 1) {
            wakeFeed();
        }
    }

    void wakeFeed() const
    {
        const auto wait = [feed = feed] {
            QTimer::singleShot(pause, feed, &ProgressFeed::takeBatch);
        };
        QMetaObject::invokeMethod(feed, wait, Qt::QueuedConnection);
    }
};

void ProgressFeed::Writer::addStatus(const QString &message) const
{
    m_queue->add(QByteArrayList{message.toUtf8()});
}

void ProgressFeed::Writer::addOutput(const QByteArrayList &messages) const
{
    m_queue->addWhenThereIsRoom(messages);
}

void ProgressFeed::Writer::publish(Change change) const
{
    m_queue->add(std::move(change));
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
}

ProgressFeed::~ProgressFeed()
{
    m_queue->detach();
}

void ProgressFeed::takeBatch()
{
    QByteArrayList messages;
    for (const Queue::Report &report : m_queue->take()) {
        if (const auto *some = std::get_if<QByteArrayList>(&report)) {
            messages += *some;
            continue;
        }
        m_manager.statusMessages()->append(std::exchange(messages, {}));
        std::get<Change>(report)(m_manager);
    }
    m_manager.statusMessages()->append(messages);
}

} // namespace ostrelle

#include "moc_ProgressFeed.cpp"
