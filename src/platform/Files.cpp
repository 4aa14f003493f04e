#include "platform/Files.h"

#include <QFile>

#include <cerrno>
#include <cstring>
#include <fcntl.h>
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
        const ssize_t count = ::read(file->get(), content.data() + filled, content.size() - filled);
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

std::expected<void, FileProblem> writeInPlace(const QString &path, std::string_view content,
                                              mode_t mode)
{
    struct stat attributes{};
    const auto file = openRegular(path, O_WRONLY | O_CREAT, mode, attributes);
    if (!file) {
        return std::unexpected(file.error());
    }
    const auto size = static_cast<off_t>(content.size());
    if (const int error = reserve(file->get(), attributes.st_size, size); error != 0) {
        return std::unexpected(problemFrom(error));
    }
    if (const int error = writeAll(file->get(), content); error != 0) {
        return std::unexpected(problemFrom(error));
    }
    if (::ftruncate(file->get(), size) != 0) {
        return std::unexpected(problemFrom(errno));
    }
    return {};
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
