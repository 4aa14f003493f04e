#include "displayserver/X11Connection.h"

#include <QSocketNotifier>

#include <X11/Xlib.h>
#include <utility>

namespace ostrelle
{

namespace
{

// A window may be gone by the time we ask about it, and Xlib would end the process for that.
int ignoreError(Display * /*display*/, XErrorEvent * /*error*/)
{
    return 0;
}

} // namespace

std::unique_ptr<X11Connection> X11Connection::open(Handler handler)
{
    Display *const display = XOpenDisplay(nullptr);
    if (display == nullptr) {
        return nullptr;
    }
    XSetErrorHandler(&ignoreError);
    return std::unique_ptr<X11Connection>(new X11Connection(display, std::move(handler)));
}

X11Connection::X11Connection(_XDisplay *display, Handler handler)
    : m_display(display)
    , m_handler(std::move(handler))
{
    const auto *notifier =
        new QSocketNotifier(ConnectionNumber(display), QSocketNotifier::Read, this);
    connect(notifier, &QSocketNotifier::activated, this, &X11Connection::handleEvents);
    // Events that arrive while the owner makes its next requests wait in the client's queue, where
    // the socket does not report them.
    QMetaObject::invokeMethod(this, &X11Connection::handleEvents, Qt::QueuedConnection);
}

X11Connection::~X11Connection()
{
    XCloseDisplay(m_display);
}

void X11Connection::handleEvents()
{
    while (XPending(m_display) > 0) {
        XEvent event;
        XNextEvent(m_display, &event);
        m_handler(event);
    }
}

} // namespace ostrelle

#include "moc_X11Connection.cpp"
