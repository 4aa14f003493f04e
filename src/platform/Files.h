#pragma once

#include <QByteArray>
#include <QString>

#include <expected>
#include <memory>
#include <shared_mutex>
#include <string>
#include <string_view>
#include <sys/stat.h>

namespace ostrelle
{

// Why a file could not be read or written; `text` is the system's own description.
struct FileProblem {
    enum class Kind { Missing, NotRegular, TooLarge, Failed };
    Kind kind;
    QString text;
};

// Larger than any sane configuration or tracker document. A file that is larger is not read.
inline constexpr std::size_t maxDocumentBytes = std::size_t{256} * 1024 * 1024;

// The mode of a file that only its owner reads and writes.
inline constexpr mode_t ownerOnly = 0600;

// True when something stands at the path, whatever it is; symbolic links are followed.
bool fileExists(const QString &path);

// Reads a whole regular file, and never half of what this process is writing into it. A FIFO or a
// device is refused without waiting for it.
std::expected<std::string, FileProblem> readFile(const QString &path,
                                                 std::size_t maxBytes = maxDocumentBytes);

// While it lives, nobody in this process writes in place into the open file. For who reads a file
// in another way than readFile().
class ReadTurn
{
public:
    explicit ReadTurn(int fd);

private:
    std::shared_ptr<std::shared_mutex> m_fileLock;
    std::shared_lock<std::shared_mutex> m_lock;
};

// Replaces a file's content in place, so that links to it and readers that have it open see the new
// one; creates it with `mode` if it is missing. Room is reserved before the first byte changes: on
// a full disk, at a quota or at a file size limit the old content stays, and a file that this call
// has created is removed again. Writers in this process take turns.
std::expected<void, FileProblem> writeInPlace(const QString &path, std::string_view content,
                                              mode_t mode = 0644);

// The same for a document that QJsonDocument wrote.
std::expected<void, FileProblem> writeInPlace(const QString &path, const QByteArray &content,
                                              mode_t mode = 0644);

// Replaces whatever stands at the path by a new file, which has exactly this mode before a byte is
// written into it; never writes through a link. Whoever has the old file open goes on with that.
// Only for a directory that nobody else can write to.
std::expected<void, FileProblem> createAnew(const QString &path, const QByteArray &content,
                                            mode_t mode);

// An open descriptor that is closed at the end of its scope.
class Descriptor
{
public:
    explicit Descriptor(int fd = -1) noexcept
        : m_fd(fd)
    {
    }
    Descriptor(Descriptor &&other) noexcept;
    Descriptor &operator=(Descriptor &&other) noexcept;
    Descriptor(const Descriptor &) = delete;
    Descriptor &operator=(const Descriptor &) = delete;
    ~Descriptor();

    int get() const noexcept { return m_fd; }
    int release() noexcept;
    explicit operator bool() const noexcept { return m_fd >= 0; }

private:
    int m_fd;
};

} // namespace ostrelle
