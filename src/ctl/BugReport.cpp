#include "ctl/Commands.h"
#include "ctl/Input.h"
#include "platform/Files.h"

#include <QFile>

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <unistd.h>

namespace ostrelle
{

using namespace Qt::StringLiterals;

namespace
{

// Only to a new file, and for its owner: what is in it is for whom he gives it to.
bool writeNew(const QString &path, const QByteArray &text)
{
    const Descriptor file(::open(QFile::encodeName(path).constData(),
                                 O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, ownerOnly));
    if (!file) {
        return false;
    }
    const bool isWhole = writeAll(file.get(), text);
    if (!isWhole) {
        const int reason = errno;
        ::unlink(QFile::encodeName(path).constData());
        errno = reason;
    }
    return isWhole;
}

} // namespace

int diagnose(const ReportFile &file)
{
    const Asked asked = ask({.command = u"diagnose"_s}, Otherwise::FilesTell);
    if (const auto failed = complaint(asked)) {
        return *failed;
    }
    const QString text = printableLines(asked.answer->value("text"_L1).toString());
    print(text, Terminal::ofOutput());
    const int status = statusOf(asked);
    if (file.path == "-"_L1 ||
        (!file.isAgreed && !isAgreed(u"Write this to "_s + file.path + u"? [y/N] "_s))) {
        return status;
    }
    if (!writeNew(file.path, text.toUtf8())) {
        complain(file.path + u": "_s + QString::fromLocal8Bit(std::strerror(errno)));
        return SomethingIsWrong;
    }
    return status;
}

} // namespace ostrelle
