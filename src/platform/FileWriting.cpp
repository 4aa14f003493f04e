#include "platform/FileWriting.h"

#include "platform/FileLocks.h"
#include "platform/Log.h"

#include <QFile>
#include <QFileInfo>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <fcntl.h>
#include <unistd.h>
#include <vector>

namespace ostrelle
{

using namespace Qt::StringLiterals;

namespace
{

constexpr mode_t permissionBits = 0777;

// Between the save beside a file and the last byte of the write in place; disks are slow at times.
constexpr time_t longestWrite = 60;

std::string_view viewOf(const QByteArray &content)
{
    return {content.constData(), static_cast<std::size_t>(content.size())};
}

// Where the new content of a file is while that is written in place.
QString unfinished(const QString &path)
{
    return path + u".unfinished"_s;
}

void removeFile(const QString &path)
{
    ::unlink(QFile::encodeName(path).constData());
}

// Zero or, as below, the system's error number.
int writeAt(int fd, off_t offset, std::string_view content)
{
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

// Grows the file to hold `size` bytes, or leaves it as long as it was.
int reserve(int fd, off_t oldSize, off_t size)
{
    if (size == 0) {
        return 0;
    }
    // Not posix_fallocate(): where a file system cannot reserve, that needs a readable descriptor.
    int error = ::fallocate(fd, 0, 0, size) == 0 ? 0 : errno;
    if (error == EOPNOTSUPP || error == ENOSYS) {
        const std::vector<char> nothing(
            static_cast<std::size_t>(std::max<off_t>(size - oldSize, 0)));
        error = writeAt(fd, oldSize, {nothing.data(), nothing.size()});
    }
    if (error != 0 && size > oldSize && ::ftruncate(fd, oldSize) != 0) {
        return errno;
    }
    return error;
}

int sync(int fd)
{
    return ::fsync(fd) == 0 || errno == EINVAL ? 0 : errno; // what cannot be synced needs no sync
}

int syncPath(const QByteArray &name, int flags)
{
    const Descriptor opened(::open(name.constData(), flags | O_RDONLY | O_CLOEXEC));
    return opened ? sync(opened.get()) : errno;
}

int writeNewFile(const QString &path, std::string_view content, mode_t mode)
{
    const QByteArray name = QFile::encodeName(path);
    ::unlink(name.constData());
    constexpr int onlyNew = O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC;
    const Descriptor file(::open(name.constData(), onlyNew, S_IRUSR | S_IWUSR));
    if (!file) {
        return errno;
    }
    const int error = ::fchmod(file.get(), mode) == 0 ? writeAt(file.get(), 0, content) : errno;
    if (error != 0) {
        ::unlink(name.constData());
    }
    return error;
}

int moveToDisk(const QString &written, const QString &path)
{
    const QByteArray from = QFile::encodeName(written);
    int error = syncPath(from, O_NOFOLLOW);
    if (error == 0 && std::rename(from.constData(), QFile::encodeName(path).constData()) != 0) {
        error = errno;
    }
    if (error != 0) {
        ::unlink(from.constData());
        return error;
    }
    // The name lasts only once the folder is on the disk.
    static_cast<void>(syncPath(QFile::encodeName(QFileInfo(path).path()), O_DIRECTORY));
    return 0;
}

int replaceUnlocked(const QString &path, std::string_view content, mode_t mode)
{
    const QString fresh = path + u".new"_s;
    const int error = writeNewFile(fresh, content, mode);
    return error != 0 ? error : moveToDisk(fresh, path);
}

std::expected<void, FileProblem> resultOf(int error)
{
    if (error != 0) {
        return std::unexpected(problemFrom(error));
    }
    return {};
}

bool isForbiddenByFolder(int error)
{
    return error == EACCES || error == EPERM || error == EROFS || error == ENAMETOOLONG;
}

// A file that is open to be written in place.
class OpenFile
{
public:
    static std::expected<OpenFile, FileProblem> open(const QString &path)
    {
        auto file = openRegular(QFile::encodeName(path).toStdString(), O_WRONLY);
        if (!file) {
            return std::unexpected(file.error());
        }
        return OpenFile(std::move(file->descriptor), file->attributes);
    }

    const struct stat &attributes() const { return m_attributes; }

    struct Filled {
        int error;
        bool isBegun; // else the file has its old content
    };

    Filled fill(std::string_view content) const
    {
        const auto lock = contentLock(m_attributes);
        const std::unique_lock turn(*lock);
        struct stat now{};
        const int fd = m_file.get();
        if (::fstat(fd, &now) != 0) {
            return {.error = errno, .isBegun = false};
        }
        const auto size = static_cast<off_t>(content.size());
        if (const int error = reserve(fd, now.st_size, size); error != 0) {
            const std::array times{now.st_atim, now.st_mtim};
            ::futimens(fd, times.data()); // nothing was edited
            return {.error = error, .isBegun = false};
        }
        int error = writeAt(fd, 0, content);
        if (error == 0 && ::ftruncate(fd, size) != 0) {
            error = errno;
        }
        return {.error = error, .isBegun = true};
    }

    int toDisk() const { return sync(m_file.get()); }

private:
    OpenFile(Descriptor file, const struct stat &attributes)
        : m_file(std::move(file))
        , m_attributes(attributes)
    {
    }

    Descriptor m_file;
    struct stat m_attributes;
};

// With the new content saved beside the file; that is removed once the file has it.
OpenFile::Filled fillAndFinish(const QString &path, const OpenFile &file, std::string_view content)
{
    auto filled = file.fill(content);
    if (filled.error == 0) {
        filled.error = file.toDisk();
    }
    if (filled.error == 0) {
        removeFile(unfinished(path));
    }
    return filled;
}

std::expected<void, FileProblem> writeUnlocked(const QString &path, std::string_view content,
                                               mode_t mode)
{
    const auto file = OpenFile::open(path);
    if (!file && file.error().kind == FileProblem::Kind::Missing) {
        const int error = replaceUnlocked(fileBehind(path), content, mode);
        if (error == 0) {
            removeFile(unfinished(path)); // of a file that is gone
        }
        return resultOf(error);
    }
    if (!file) {
        return std::unexpected(file.error());
    }
    const bool isTorn = fileExists(unfinished(path));
    const mode_t common = mode & file->attributes().st_mode & permissionBits;
    const int error = replaceUnlocked(unfinished(path), content, common | S_IRUSR);
    if (error != 0 && !isForbiddenByFolder(error)) {
        return std::unexpected(problemFrom(error));
    }
    const auto filled = fillAndFinish(path, *file, content);
    if (!filled.isBegun && !isTorn) {
        removeFile(unfinished(path)); // or the next start would write what was said to have failed
    }
    return resultOf(filled.error);
}

struct Draft {
    std::string content;
    struct stat attributes;
};

// What an earlier run has saved beside the file. It is whole, as it has that name.
std::optional<Draft> draftOf(const QString &path)
{
    const auto file =
        openRegular(QFile::encodeName(unfinished(path)).toStdString(), O_RDONLY | O_NOFOLLOW);
    if (!file || file->attributes.st_uid != ::geteuid()) {
        return std::nullopt;
    }
    auto content = readOpenFile(file->descriptor.get());
    return content ? std::optional(Draft{std::move(*content), file->attributes}) : std::nullopt;
}

// Whether the file has the draft's content now. The draft waits for the next start where there is
// something that cannot be written.
bool finishUnlocked(const QString &path, const Draft &draft)
{
    const auto file = OpenFile::open(path);
    if (!file) {
        if (file.error().kind != FileProblem::Kind::Missing ||
            replaceUnlocked(fileBehind(path), draft.content,
                            draft.attributes.st_mode & permissionBits) != 0) {
            return false;
        }
        removeFile(unfinished(path));
        return true;
    }
    if (file->attributes().st_mtime > draft.attributes.st_mtime + longestWrite) {
        removeFile(unfinished(path)); // it was edited since
        return false;
    }
    return fillAndFinish(path, *file, draft.content).error == 0;
}

} // namespace

std::expected<void, FileProblem> replaceFile(const QString &path, std::string_view content,
                                             mode_t mode)
{
    const auto lock = saveLock(QFile::encodeName(path));
    const std::scoped_lock turn(*lock);
    return resultOf(replaceUnlocked(path, content, mode));
}

std::expected<void, FileProblem> replaceFile(const QString &path, const QByteArray &content,
                                             mode_t mode)
{
    return replaceFile(path, viewOf(content), mode);
}

std::expected<void, FileProblem> moveOver(const QString &written, const QString &path)
{
    return resultOf(moveToDisk(written, path));
}

std::expected<void, FileProblem> createAnew(const QString &path, const QByteArray &content,
                                            mode_t mode)
{
    return resultOf(writeNewFile(path, viewOf(content), mode));
}

std::expected<void, FileProblem> writeInPlace(const QString &path, std::string_view content,
                                              mode_t mode)
{
    const auto lock = saveLock(QFile::encodeName(path));
    const std::scoped_lock turn(*lock);
    return writeUnlocked(path, content, mode);
}

std::expected<void, FileProblem> writeInPlace(const QString &path, const QByteArray &content,
                                              mode_t mode)
{
    return writeInPlace(path, viewOf(content), mode);
}

bool finishWriting(const QString &path)
{
    const auto lock = saveLock(QFile::encodeName(path));
    const std::scoped_lock turn(*lock);
    if (const auto draft = draftOf(path); draft && finishUnlocked(path, *draft)) {
        logLine(u"[Ostrelle] Finished an interrupted write of "_s + path);
    }
    return !fileExists(unfinished(path));
}

std::optional<QString> setAside(const QString &path)
{
    const QString file = fileBehind(path);
    QString name = file + u".broken"_s;
    for (int number = 2; fileExists(name); ++number) {
        name = file + u".broken-%1"_s.arg(number);
    }
    return QFile::rename(file, name) ? std::optional(name) : std::nullopt;
}

QString fileBehind(const QString &path)
{
    constexpr int mostLinks = 40;
    QString file = path;
    for (int i = 0; i < mostLinks && QFileInfo(file).isSymLink(); ++i) {
        file = QFileInfo(file).symLinkTarget();
    }
    return file;
}

} // namespace ostrelle
