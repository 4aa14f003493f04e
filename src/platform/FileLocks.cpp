#include "platform/FileLocks.h"

#include "platform/NeverDestroyed.h"

#include <utility>

namespace ostrelle
{

std::shared_ptr<std::shared_mutex> contentLock(const struct stat &attributes)
{
    static NeverDestroyed<LockTable<std::pair<dev_t, ino_t>, std::shared_mutex>> locks;
    return locks.object().of({attributes.st_dev, attributes.st_ino});
}

std::shared_ptr<std::mutex> saveLock(const QByteArray &path)
{
    static NeverDestroyed<LockTable<QByteArray, std::mutex>> locks;
    return locks.object().of(path);
}

} // namespace ostrelle
