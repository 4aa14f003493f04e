#pragma once

#include <QObject>

#include <functional>
#include <memory>

struct _XDisplay;
union _XEvent;

namespace ostrelle
{

// A connection to the X server beside the toolkit's, so that the two do not take each other's
// events. Errors of single requests are ignored. Main thread only.
class X11Connection : public QObject
{
    Q_OBJECT

public:
    using Handler = std::function<void(_XEvent &event)>;

    // To the display that DISPLAY names; null when it cannot be reached. Events come to the handler
    // from the event loop.
    static std::unique_ptr<X11Connection> open(Handler handler);
    ~X11Connection() override;

    _XDisplay *display() const { return m_display; }

private:
    X11Connection(_XDisplay *display, Handler handler);
    void handleEvents();

    _XDisplay *const m_display;
    const Handler m_handler;
};

} // namespace ostrelle
