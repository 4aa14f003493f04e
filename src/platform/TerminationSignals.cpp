#include "platform/TerminationSignals.h"

#include <QSocketNotifier>

#include <csignal>
#include <sys/eventfd.h>
#include <system_error>
#include <thread>
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

// Readable once one of the signals has come.
int requested()
{
    static const int event = ::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK);
    return event;
}

} // namespace

bool TerminationSignals::watch(std::chrono::milliseconds patience, void (*giveUp)())
{
    const sigset_t signals = terminationSignals();
    ::sigprocmask(SIG_BLOCK, &signals, nullptr);
    const auto wait = [signals, patience, giveUp] {
        int signal = 0;
        while (::sigwait(&signals, &signal) != 0) {
        }
        ::eventfd_write(requested(), 1);
        std::this_thread::sleep_for(patience);
        giveUp();
    };
    try {
        std::thread(wait).detach();
    } catch (const std::system_error &) {
        return false;
    }
    return true;
}

TerminationSignals::TerminationSignals(QObject *parent)
    : QObject(parent)
{
    auto *const notifier = new QSocketNotifier(requested(), QSocketNotifier::Read, this);
    connect(notifier, &QSocketNotifier::activated, this, [this, notifier] {
        notifier->setEnabled(false);
        Q_EMIT terminationRequested();
    });
}

} // namespace ostrelle

#include "moc_TerminationSignals.cpp"
