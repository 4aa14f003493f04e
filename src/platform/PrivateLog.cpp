#include "platform/PrivateLog.h"

#include <QFile>

#include <fcntl.h>
#include <unistd.h>

namespace ostrelle
{

namespace
{

bool isOurs(const struct stat &attributes)
{
    return S_ISREG(attributes.st_mode) && attributes.st_uid == ::geteuid() &&
           attributes.st_nlink == 1;
}

} // namespace

Descriptor openPrivateLog(const QString &path)
{
    // O_NONBLOCK keeps the open of a FIFO from waiting for its reader.
    Descriptor log(::open(
        QFile::encodeName(path).constData(),
        O_WRONLY | O_APPEND | O_CREAT | O_NOFOLLOW | O_CLOEXEC | O_NONBLOCK | O_NOCTTY, ownerOnly));
    struct stat attributes{};
    if (!log || ::fstat(log.get(), &attributes) != 0 || !isOurs(attributes) ||
        ::fchmod(log.get(), ownerOnly) != 0) {
        return Descriptor();
    }
    return log;
}

} // namespace ostrelle
