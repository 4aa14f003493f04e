#include "platform/Files.h"

#include "platform/NeverDestroyed.h"

#include <QFile>

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <map>
#include <mutex>
#include <unistd.h>
#include <utility>

namespace ostrelle
{

namespace
{

FileProblem problemFrom(int error)
{
    const auto kind = error == ENOENT || error == ENOTDIR ? FileProblem::Kind::Missing
                                                          : FileProblem::Kind::Failed;
    return {kind, QString::fromLocal8Bit(std::strerror(error))};
}

FileProblem notRegular()
{
    return {FileProblem::Kind::NotRegular, QStringLiteral("Not a regular file")};
}

// Inside this process a file has one writer at a time, and no reader meanwhile, by whatever name it
// is reached: two writers in place would mix, and a reader would see half of a document.
class FileLocks
{
public:
    static std::shared_ptr<std::shared_mutex> of(const struct stat &attributes)
    {
        static NeverDestroyed<FileLocks> locks;
        return locks.object().find({attributes.st_dev, attributes.st_ino});
    }

private:
    using Identity = std::pair<dev_t, ino_t>;

    std::shared_ptr<std::shared_mutex> find(const Identity &file)
    {
        const std::scoped_lock lock(m_mutex);
        std::erase_if(m_locks, [](const auto &entry) { return entry.second.expired(); });
        auto found = m_locks[file].lock();
        if (!found) {
            found = std::make_shared<std::shared_mutex>();
            m_locks[file] = found;
        }
        return found;
    }

    std::mutex m_mutex;
    std::map<Identity, std::weak_ptr<std::shared_mutex>> m_locks; // those in use
};

// Opens a regular file only; O_NONBLOCK keeps the open of a FIFO from waiting for its other end.
std::expected<Descriptor, FileProblem> openRegular(const QString &path, int flags, mode_t mode,
                                                   struct stat &attributes)
{
    const QByteArray name = QFile::encodeName(path);
    Descriptor file(::open(name.constData(), flags | O_CLOEXEC | O_NONBLOCK | O_NOCTTY, mode));
    if (!file || ::fstat(file.get(), &attributes) != 0) {
        return std::unexpected(problemFrom(errno));
    }
    if (!S_ISREG(attributes.st_mode)) {
        return std::unexpected(notRegular());
    }
    return file;
}

// Grows the file to hold `size` bytes, or leaves it as long as it was.
int reserve(int fd, off_t oldSize, off_t size)
{
    if (size == 0) {
        return 0;
    }
    // Not posix_fallocate(): where a file system cannot reserve, that needs a readable descriptor.
    int error = ::fallocate(fd, 0, 0, size) == 0 ? 0 : errno;
    if (error == EOPNOTSUPP || error == ENOSYS) {
        error = 0;
    }
    if (error != 0 && size > oldSize && ::ftruncate(fd, oldSize) != 0) {
        return errno;
    }
    return error;
}

int writeAll(int fd, std::string_view content)
{
    off_t offset = 0;
    while (!content.empty()) {
        const ssize_t written = ::pwrite(fd, content.data(), content.size(), offset);
        if (written < 0 && errno == EINTR) {
            continue;
        }
        if (written <= 0) {
            return written < 0 ? errno : EIO;
        }
        offset += written;
        content.remove_prefix(static_cast<std::size_t>(written));
    }
    return 0;
}

std::expected<std::string, FileProblem> readAll(int fd, std::size_t maxBytes)
{
    struct stat attributes{};
    if (::fstat(fd, &attributes) != 0) {
        return std::unexpected(problemFrom(errno));
    }
    const auto tooLarge =
        FileProblem{FileProblem::Kind::TooLarge, QStringLiteral("File too large")};
    if (static_cast<std::size_t>(attributes.st_size) > maxBytes) {
        return std::unexpected(tooLarge);
    }
    std::string content;
    // One byte more than expected, so that the end is seen without growing the buffer.
    content.resize(static_cast<std::size_t>(attributes.st_size) + 1);
    std::size_t filled = 0;
    while (true) {
        const ssize_t count = ::read(fd, content.data() + filled, content.size() - filled);
        if (count < 0 && errno == EINTR) {
            continue;
        }
        if (count < 0) {
            return std::unexpected(problemFrom(errno));
        }
        if (count == 0) {
            break;
        }
        filled += static_cast<std::size_t>(count);
        if (filled > maxBytes) {
            return std::unexpected(tooLarge);
        }
        if (filled == content.size()) {
            content.resize(content.size() * 2);
        }
    }
    content.resize(filled);
    return content;
}

// A file that is open to be written in place.
struct WritableFile {
    Descriptor descriptor;
    struct stat attributes;
    bool isNew; // it was missing

    static std::expected<WritableFile, FileProblem> open(const QString &path, mode_t mode)
    {
        struct stat attributes{};
        auto file = openRegular(path, O_WRONLY, mode, attributes);
        if (file || file.error().kind != FileProblem::Kind::Missing) {
            return finish(std::move(file), attributes, false);
        }
        if (auto created = openRegular(path, O_WRONLY | O_CREAT | O_EXCL, mode, attributes)) {
            return finish(std::move(created), attributes, true);
        }
        // Somebody was faster, or a link names a file that is missing.
        return finish(openRegular(path, O_WRONLY | O_CREAT, mode, attributes), attributes, false);
    }

    bool isGone() const
    {
        struct stat now{};
        return ::fstat(descriptor.get(), &now) == 0 && now.st_nlink == 0;
    }

    // Zero, or the system's error number.
    int fill(std::string_view content) const
    {
        struct stat now{};
        const int fd = descriptor.get();
        if (::fstat(fd, &now) != 0) {
            return errno;
        }
        const auto size = static_cast<off_t>(content.size());
        if (const int error = reserve(fd, now.st_size, size); error != 0) {
            return error;
        }
        if (const int error = writeAll(fd, content); error != 0) {
            return error;
        }
        return ::ftruncate(fd, size) == 0 ? 0 : errno;
    }

private:
    static std::expected<WritableFile, FileProblem>
    finish(std::expected<Descriptor, FileProblem> file, const struct stat &attributes, bool isNew)
    {
        if (!file) {
            return std::unexpected(file.error());
        }
        return WritableFile{std::move(*file), attributes, isNew};
    }
};

} // namespace

bool fileExists(const QString &path)
{
    return ::access(QFile::encodeName(path).constData(), F_OK) == 0;
}

std::expected<std::string, FileProblem> readFile(const QString &path, std::size_t maxBytes)
{
    struct stat attributes{};
    const auto file = openRegular(path, O_RDONLY, 0, attributes);
    if (!file) {
        return std::unexpected(file.error());
    }
    const ReadTurn turn(file->get());
    return readAll(file->get(), maxBytes);
}

ReadTurn::ReadTurn(int fd)
{
    struct stat attributes{};
    if (::fstat(fd, &attributes) == 0) {
        m_fileLock = FileLocks::of(attributes);
        m_lock = std::shared_lock(*m_fileLock);
    }
}

std::expected<void, FileProblem> writeInPlace(const QString &path, std::string_view content,
                                              mode_t mode)
{
    while (true) {
        const auto file = WritableFile::open(path, mode);
        if (!file) {
            return std::unexpected(file.error());
        }
        const auto fileLock = FileLocks::of(file->attributes);
        const std::unique_lock lock(*fileLock);
        if (file->isGone()) {
            continue; // another writer made it, could not fill it and took it back
        }
        if (const int error = file->fill(content); error != 0) {
            if (file->isNew) {
                ::unlink(QFile::encodeName(path).constData());
            }
            return std::unexpected(problemFrom(error));
        }
        return {};
    }
}

std::expected<void, FileProblem> writeInPlace(const QString &path, const QByteArray &content,
                                              mode_t mode)
{
    return writeInPlace(
        path, std::string_view(content.constData(), static_cast<std::size_t>(content.size())),
        mode);
}

std::expected<void, FileProblem> createAnew(const QString &path, const QByteArray &content,
                                            mode_t mode)
{
    const QByteArray name = QFile::encodeName(path);
    ::unlink(name.constData());
    const Descriptor file(
        ::open(name.constData(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, S_IRWXU));
    if (!file || ::fchmod(file.get(), mode) != 0) {
        return std::unexpected(problemFrom(errno));
    }
    const int error =
        writeAll(file.get(),
                 std::string_view(content.constData(), static_cast<std::size_t>(content.size())));
    if (error != 0) {
        ::unlink(name.constData());
        return std::unexpected(problemFrom(error));
    }
    return {};
}

Descriptor::Descriptor(Descriptor &&other) noexcept
    : m_fd(other.release())
{
}

Descriptor &Descriptor::operator=(Descriptor &&other) noexcept
{
    std::swap(m_fd, other.m_fd);
    return *this;
}

Descriptor::~Descriptor()
{
    if (m_fd >= 0) {
        ::close(m_fd);
    }
}

int Descriptor::release() noexcept
{
    return std::exchange(m_fd, -1);
}

} // namespace ostrelle
