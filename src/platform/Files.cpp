#include "platform/Files.h"

#include "platform/FileLocks.h"

#include <QFile>

#include <array>
#include <cerrno>
#include <chrono>
#include <cstring>
#include <thread>
#include <unistd.h>
#include <utility>

namespace ostrelle
{

namespace
{

FileProblem notRegular()
{
    return {FileProblem::Kind::NotRegular, QStringLiteral("Not a regular file")};
}

std::expected<std::string, FileProblem> readAll(int fd, std::size_t expected, std::size_t maxBytes)
{
    const auto tooLarge =
        FileProblem{FileProblem::Kind::TooLarge, QStringLiteral("File too large")};
    if (expected > maxBytes) {
        return std::unexpected(tooLarge);
    }
    std::string content;
    // One byte more than expected, so that the end is seen without growing the buffer.
    content.resize(expected + 1);
    std::size_t filled = 0;
    while (true) {
        const ssize_t count = ::pread(fd, content.data() + filled, content.size() - filled,
                                      static_cast<off_t>(filled));
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

// True while somebody may still be at it.
bool isFresh(const QString &path)
{
    constexpr std::chrono::milliseconds longestPause{100};
    struct stat attributes{};
    if (::stat(QFile::encodeName(path).constData(), &attributes) != 0) {
        return false;
    }
    const auto changed = std::chrono::seconds(attributes.st_mtim.tv_sec) +
                         std::chrono::nanoseconds(attributes.st_mtim.tv_nsec);
    const auto age = std::chrono::system_clock::now().time_since_epoch() - changed;
    return std::chrono::abs(age) < longestPause;
}

} // namespace

FileProblem problemFrom(int error)
{
    const auto kind = error == ENOENT || error == ENOTDIR ? FileProblem::Kind::Missing
                                                          : FileProblem::Kind::Failed;
    return {kind, QString::fromLocal8Bit(std::strerror(error))};
}

bool isSameContent(const struct stat &one, const struct stat &other)
{
    return one.st_size == other.st_size && one.st_ctim.tv_sec == other.st_ctim.tv_sec &&
           one.st_ctim.tv_nsec == other.st_ctim.tv_nsec;
}

bool fileExists(const QString &path)
{
    return ::access(QFile::encodeName(path).constData(), F_OK) == 0;
}

std::expected<std::string, FileProblem> readFile(const QString &path, std::size_t maxBytes)
{
    const auto file = openRegular(QFile::encodeName(path).toStdString());
    if (!file) {
        return std::unexpected(file.error());
    }
    return readOpenFile(file->descriptor.get(), maxBytes);
}

std::expected<std::string, FileProblem>
readWhole(const QString &path, std::size_t maxBytes,
          const std::function<bool(std::string_view)> &isWhole)
{
    constexpr int mostAttempts = 40; // at a file that never comes to rest
    constexpr std::chrono::milliseconds untilNext{5};
    auto content = readFile(path, maxBytes);
    for (int i = 1; i < mostAttempts && content && isFresh(path) && !isWhole(*content); ++i) {
        std::this_thread::sleep_for(untilNext);
        content = readFile(path, maxBytes);
    }
    return content;
}

std::expected<std::string, FileProblem> readOpenFile(int fd, std::size_t maxBytes)
{
    constexpr int mostAttempts = 5; // at a file that another program is writing to
    const ReadTurn turn(fd);
    struct stat before{};
    if (::fstat(fd, &before) != 0) {
        return std::unexpected(problemFrom(errno));
    }
    for (int attempt = 1;; ++attempt) {
        auto content = readAll(fd, static_cast<std::size_t>(before.st_size), maxBytes);
        struct stat after{};
        if (!content || attempt == mostAttempts || ::fstat(fd, &after) != 0 ||
            isSameContent(before, after)) {
            return content;
        }
        before = after;
    }
}

std::expected<RegularFile, FileProblem> openRegular(const std::string &path, int flags)
{
    Descriptor file(::open(path.c_str(), flags | O_CLOEXEC | O_NONBLOCK | O_NOCTTY));
    struct stat attributes{};
    if (!file || ::fstat(file.get(), &attributes) != 0) {
        return std::unexpected(problemFrom(errno));
    }
    if (!S_ISREG(attributes.st_mode)) {
        return std::unexpected(notRegular());
    }
    return RegularFile{std::move(file), attributes};
}

ReadTurn::ReadTurn(int fd)
{
    struct stat attributes{};
    if (::fstat(fd, &attributes) == 0) {
        m_fileLock = contentLock(attributes);
        m_lock = std::shared_lock(*m_fileLock);
    }
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

std::optional<Pipe> Pipe::open()
{
    std::array<int, 2> ends{};
    if (::pipe2(ends.data(), O_CLOEXEC) != 0) {
        return std::nullopt;
    }
    return Pipe{.readEnd = Descriptor(ends[0]), .writeEnd = Descriptor(ends[1])};
}

} // namespace ostrelle
