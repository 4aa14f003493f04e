#include "platform/InstancePlaces.h"

#include "platform/Files.h"
#include "platform/Paths.h"

#include <QCryptographicHash>
#include <QFile>

#include <sys/socket.h>
#include <unistd.h>

namespace ostrelle
{

using namespace Qt::StringLiterals;

namespace
{

constexpr std::size_t maxPathBytes = 4096;
constexpr auto lockName = "/ostrelle.lock"_L1;

// The home directory is part of it, because each has a program of its own.
QString socketName()
{
    const QByteArray digest =
        QCryptographicHash::hash(homeDirectory().toUtf8(), QCryptographicHash::Sha256);
    return u"/ostrelle-"_s + QString::fromLatin1(digest.first(8).toHex());
}

} // namespace

// Where only this user comes in, so that nobody else can hold the lock: below the home, where every
// session finds it, or, when that cannot be written to, in the session's own directory.
QString instanceLockFile()
{
    const auto directory = privateHomeDirectory();
    return (directory ? *directory : runtimeDirectory().value_or(homeDirectory())) + lockName;
}

QString instanceSocket()
{
    return runtimeDirectory().value_or(privateHomeDirectory().value_or(homeDirectory())) +
           socketName();
}

QStringList instanceSockets()
{
    QStringList sockets;
    const QStringList places = privateTemporaryPlaces();
    for (const QString &place : places) {
        sockets.append(place + socketName());
    }
    for (const QString &place : places) {
        const auto told = readFile(place + lockName, maxPathBytes);
        if (told && !told->empty()) {
            sockets.append(QFile::decodeName(QByteArray::fromStdString(*told)));
        }
    }
    sockets.removeDuplicates();
    return sockets;
}

QString socketToldBy(const QString &lockFile)
{
    const auto told = readFile(lockFile, maxPathBytes);
    return told && !told->empty() ? QFile::decodeName(QByteArray::fromStdString(*told))
                                  : instanceSocket();
}

bool isPeerOurs(qintptr socket)
{
    ucred credentials{};
    socklen_t size = sizeof credentials;
    return ::getsockopt(static_cast<int>(socket), SOL_SOCKET, SO_PEERCRED, &credentials, &size) ==
               0 &&
           credentials.uid == ::getuid();
}

} // namespace ostrelle
