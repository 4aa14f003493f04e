#include "platform/OutputPipe.h"

#include "platform/ProcessDescriptor.h"

#include <algorithm>
#include <csignal>
#include <fcntl.h>
#include <filesystem>
#include <unistd.h>
#include <utility>

namespace ostrelle
{

namespace
{

constexpr qsizetype pieceBytes = qsizetype{64} * 1024;

// Only to write: a child that is just being started has a copy of all ends until it is another
// program.
bool holds(const std::filesystem::path &process, const QByteArray &pipe)
{
    std::error_code error;
    for (std::filesystem::directory_iterator entry(process / "fd", error), end;
         !error && entry != end; entry.increment(error)) {
        std::error_code closedMeanwhile;
        const auto mode = std::filesystem::symlink_status(*entry, closedMeanwhile).permissions();
        const bool writes =
            (mode & std::filesystem::perms::owner_write) != std::filesystem::perms::none;
        if (writes && std::filesystem::read_symlink(*entry, closedMeanwhile) == pipe.constData()) {
            return true;
        }
    }
    return false;
}

} // namespace

OutputPipe::OutputPipe(Pipe pipe)
    : m_pipe(std::move(pipe))
{
}

std::optional<OutputPipe> OutputPipe::open()
{
    auto pipe = Pipe::open();
    if (!pipe) {
        return std::nullopt;
    }
    ::fcntl(pipe->readEnd.get(), F_SETFL, O_NONBLOCK);
    return OutputPipe(std::move(*pipe));
}

QByteArray OutputPipe::read()
{
    QByteArray piece(pieceBytes, Qt::Uninitialized);
    const ssize_t count =
        m_pipe.readEnd ? ::read(m_pipe.readEnd.get(), piece.data(), pieceBytes) : ssize_t{0};
    if (count == 0) {
        m_pipe.readEnd = Descriptor();
    }
    piece.truncate(std::max<ssize_t>(count, 0));
    return piece;
}

void OutputPipe::killHolders() const
{
    struct stat attributes{};
    if (::fstat(m_pipe.readEnd.get(), &attributes) != 0) {
        return;
    }
    // As the system names it among what a process has open.
    const QByteArray pipe = "pipe:[" + QByteArray::number(quint64{attributes.st_ino}) + ']';
    std::error_code error;
    for (std::filesystem::directory_iterator entry("/proc", error), end; !error && entry != end;
         entry.increment(error)) {
        const pid_t pid = QByteArray::fromStdString(entry->path().filename().string()).toInt();
        if (pid <= 0 || pid == ::getpid() || !holds(entry->path(), pipe)) {
            continue;
        }
        // A second look once the descriptor is there: the number may be somebody else's by now.
        const Descriptor process = processDescriptor(pid);
        if (process && holds(entry->path(), pipe)) {
            sendSignal(process, SIGKILL);
        }
    }
}

} // namespace ostrelle
