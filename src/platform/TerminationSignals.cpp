#include "platform/TerminationSignals.h"

#include <QSocketNotifier>

#include <csignal>
#include <sys/signalfd.h>
#include <unistd.h>

namespace ostrelle
{

namespace
{

// What was ignored when the program was started, by nohup for instance, stays ignored.
bool isIgnored(int signal)
{
    struct sigaction action{};
    return ::sigaction(signal, nullptr, &action) == 0 && action.sa_handler == SIG_IGN;
}

sigset_t terminationSignals()
{
    sigset_t signals;
    sigemptyset(&signals);
    sigaddset(&signals, SIGTERM);
    for (const int signal : {SIGINT, SIGHUP}) {
        if (!isIgnored(signal)) {
            sigaddset(&signals, signal);
        }
    }
    return signals;
}

int openSignals()
{
    TerminationSignals::block();
    const sigset_t signals = terminationSignals();
    return ::signalfd(-1, &signals, SFD_CLOEXEC | SFD_NONBLOCK);
}

} // namespace

void TerminationSignals::block()
{
    const sigset_t signals = terminationSignals();
    ::sigprocmask(SIG_BLOCK, &signals, nullptr);
}

TerminationSignals::TerminationSignals(QObject *parent)
    : QObject(parent)
    , m_signals(openSignals())
    , m_notifier(new QSocketNotifier(m_signals, QSocketNotifier::Read, this))
{
    connect(m_notifier, &QSocketNotifier::activated, this, [this] {
        signalfd_siginfo information{};
        while (::read(m_signals, &information, sizeof information) > 0) {
            Q_EMIT terminationRequested();
        }
    });
}

TerminationSignals::~TerminationSignals()
{
    m_notifier->setEnabled(false);
    ::close(m_signals);
}

} // namespace ostrelle

#include "moc_TerminationSignals.cpp"
