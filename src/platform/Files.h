#pragma once

#include <QString>

#include <expected>
#include <fcntl.h>
#include <functional>
#include <memory>
#include <optional>
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

// Both ends of a pipe, which the programs that are started do not get.
struct Pipe {
    // Absent, with errno set, when there are no descriptors left.
    static std::optional<Pipe> open();

    Descriptor readEnd;
    Descriptor writeEnd;
};

FileProblem problemFrom(int error); // an error number of the system

// True when something stands at the path, whatever it is; symbolic links are followed.
bool fileExists(const QString &path);

// Reads a whole regular file, and never half of what this process is writing into it. A FIFO or a
// device is refused without waiting for it.
std::expected<std::string, FileProblem> readFile(const QString &path,
                                                 std::size_t maxBytes = maxDocumentBytes);

// The same for a file into which other programs may be writing: while its last change is younger
// than a tenth of a second and `isWhole` denies the content, it is read again.
std::expected<std::string, FileProblem>
readWhole(const QString &path, std::size_t maxBytes,
          const std::function<bool(std::string_view)> &isWhole);

// The same as readFile() for a file that is open.
std::expected<std::string, FileProblem> readOpenFile(int fd,
                                                     std::size_t maxBytes = maxDocumentBytes);

struct RegularFile {
    Descriptor descriptor;
    struct stat attributes; // when it was opened
};

// Opens a regular file only, and waits for nobody: neither for the other end of a FIFO nor for a
// device. The path in the system's encoding; `flags` as of open().
std::expected<RegularFile, FileProblem> openRegular(const std::string &path, int flags = O_RDONLY);

// Whether the file was left alone between two looks at it, as far as its file system tells.
bool isSameContent(const struct stat &one, const struct stat &other);

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

} // namespace ostrelle
