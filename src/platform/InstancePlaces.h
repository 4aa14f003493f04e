#pragma once

#include <QString>
#include <QStringList>

namespace ostrelle
{

// Where the running program is found: a lock that it holds, which names the socket that it listens
// on. Any thread.

// The lock's file. Its folder is made.
QString instanceLockFile();

// The socket of a program that is started in this session. Fits into 108 bytes whatever the home
// directory is called, unless the runtime directory's own name does not.
QString instanceSocket();

// Where the running program may listen, the likeliest place first. Makes nothing.
QStringList instanceSockets();

// What the lock says, which in another session may be in another directory than ours would be;
// instanceSocket() where it says nothing. Reads the disk.
QString socketToldBy(const QString &lockFile);

// Whether a process of this user is at the other end of the local socket.
bool isPeerOurs(qintptr socket);

} // namespace ostrelle
