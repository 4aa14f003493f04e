#pragma once

#include <QByteArrayList>
#include <QObject>
#include <QString>

#include <functional>
#include <memory>

namespace ostrelle
{

class SetupManager;
class StatusLog;

// Brings what background work reports to the main thread, in the order of the reports: messages for
// the log, and changes of the manager's fields. They are handed over in batches with pauses between
// them, so that a flood of output leaves the main thread free.
class ProgressFeed : public QObject
{
    Q_OBJECT

    struct Queue;

public:
    using Change = std::function<void(SetupManager &)>;

    // The end that background work holds. It may outlive the feed; its reports are then dropped.
    // Any thread.
    class Writer
    {
    public:
        explicit Writer(std::shared_ptr<Queue> queue)
            : m_queue(std::move(queue))
        {
        }

        void addStatus(const QString &message) const;
        // Waits while there is more than the main thread can take at once; background threads only.
        void addOutput(const QByteArrayList &messages) const;
        // The change runs on the main thread, and not at all once the manager is gone.
        void publish(Change change) const;
        bool isManagerGone() const;

    private:
        std::shared_ptr<Queue> m_queue;
    };

    explicit ProgressFeed(SetupManager &manager);
    ~ProgressFeed() override;

    Writer writer() const { return Writer(m_queue); }

private:
    void takeBatch();

    SetupManager &m_manager;
    const std::shared_ptr<Queue> m_queue;
};

} // namespace ostrelle
