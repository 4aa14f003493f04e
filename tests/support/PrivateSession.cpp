#include "support/PrivateSession.h"

#include "support/Patience.h"
#include "support/Processes.h"

#include <QTest>

#include <csignal>
#include <ranges>
#include <sys/prctl.h>

using namespace Qt::StringLiterals;

namespace
{

// Without service directories: nothing appears on this bus that the test did not start.
constexpr const char *busConfiguration = R"(<busconfig>
  <type>session</type>
  <listen>unix:tmpdir=/tmp</listen>
  <policy context="default">
    <allow send_destination="*"/>
    <allow receive_sender="*"/>
    <allow own="*"/>
  </policy>
</busconfig>)";

} // namespace

PrivateSession::PrivateSession()
{
    m_configuration.open();
    m_configuration.write(busConfiguration);
    m_configuration.flush();
    QProcess &bus = start(u"dbus-daemon"_s, {u"--config-file"_s, m_configuration.fileName(),
                                             u"--nofork"_s, u"--print-address"_s});
    while (!bus.canReadLine() && bus.waitForReadyRead(patienceMilliseconds)) {
    }
    const QByteArray address = bus.readLine().trimmed();
    if (address.isEmpty()) {
        qFatal("no session bus: %s", qPrintable(bus.errorString()));
    }
    qputenv("DBUS_SESSION_BUS_ADDRESS", address);
}

PrivateSession::~PrivateSession()
{
    for (const auto &process : std::views::reverse(m_processes)) {
        endProcess(*process);
    }
    qunsetenv("DBUS_SESSION_BUS_ADDRESS");
}

QProcess &PrivateSession::start(const QString &program, const QStringList &arguments)
{
    QProcess &process = *m_processes.emplace_back(std::make_unique<QProcess>());
    process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    // A test that is killed leaves nobody behind.
    process.setChildProcessModifier([] { ::prctl(PR_SET_PDEATHSIG, SIGTERM); });
    process.start(program, arguments);
    if (!process.waitForStarted()) {
        qFatal("cannot start %s: %s", qPrintable(program), qPrintable(process.errorString()));
    }
    return process;
}

QProcess &PrivateSession::startKeyring()
{
    QProcess &keyring = start(u"gnome-keyring-daemon"_s,
                              {u"--foreground"_s, u"--unlock"_s, u"--components=secrets"_s});
    keyring.write("test password");
    keyring.waitForBytesWritten();
    keyring.closeWriteChannel();
    if (!waitForService(u"org.freedesktop.secrets"_s)) {
        qFatal("the keyring does not appear on the bus");
    }
    return keyring;
}

QProcess &PrivateSession::startNotificationDaemon()
{
    QProcess &server = start(u"Xvfb"_s, {u"-displayfd"_s, u"1"_s, u"-screen"_s, u"0"_s,
                                         u"640x480x24"_s, u"-nolisten"_s, u"tcp"_s});
    while (!server.canReadLine() && server.waitForReadyRead(patienceMilliseconds)) {
    }
    const QString display = u':' + QString::fromLatin1(server.readLine().trimmed());
    QProcess &daemon = start(
        u"env"_s, {u"DISPLAY="_s + display, u"dunst"_s, u"-conf"_s, u"/dev/null"_s, u"-print"_s});
    if (!waitForService(u"org.freedesktop.Notifications"_s)) {
        qFatal("the notification daemon does not appear on the bus");
    }
    return daemon;
}

bool PrivateSession::waitForService(const QString &name)
{
    const QString seconds = QString::number(patienceMilliseconds / 1000);
    return QProcess::execute(u"gdbus"_s,
                             {u"wait"_s, u"--session"_s, u"--timeout"_s, seconds, name}) == 0;
}

void PrivateSession::freeze(bool isFrozen)
{
    ::kill(static_cast<pid_t>(m_processes.front()->processId()), isFrozen ? SIGSTOP : SIGCONT);
}
