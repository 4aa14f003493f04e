#pragma once

#include <QByteArray>

#include <map>
#include <memory>
#include <mutex>
#include <shared_mutex>
#include <sys/stat.h>

namespace ostrelle
{

// Mutexes by key, each of which is there as long as somebody has it.
template<typename Key, typename Mutex>
class LockTable
{
public:
    std::shared_ptr<Mutex> of(const Key &key)
    {
        const std::scoped_lock lock(m_mutex);
        std::erase_if(m_locks, [](const auto &entry) { return entry.second.expired(); });
        auto found = m_locks[key].lock();
        if (!found) {
            found = std::make_shared<Mutex>();
            m_locks[key] = found;
        }
        return found;
    }

private:
    std::mutex m_mutex;
    std::map<Key, std::weak_ptr<Mutex>> m_locks;
};

// Inside this process a file's content has one writer at a time, and no reader meanwhile, by
// whatever name it is reached: two writers in place would mix, and a reader would see half of a
// document. Any thread.
std::shared_ptr<std::shared_mutex> contentLock(const struct stat &attributes);

// One save at a time under a file's name, as the files beside it are named after it. Any thread.
std::shared_ptr<std::mutex> saveLock(const QByteArray &path);

} // namespace ostrelle
