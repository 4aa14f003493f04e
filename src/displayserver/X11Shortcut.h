#pragma once

#include "displayserver/GlobalShortcut.h"
#include "displayserver/X11Connection.h"

namespace ostrelle
{

// Hears the shortcut through the raw key events of XInput 2, without taking it from the window that
// has the focus.
class X11Shortcut : public GlobalShortcut
{
    Q_OBJECT

public:
    // Null where there is no X server that can be listened to.
    static std::unique_ptr<X11Shortcut> listen();

private:
    X11Shortcut() = default;
    bool selectRawKeys();
    bool followState();
    void handle(_XEvent &event);
    bool isShortcut(unsigned int keycode) const;

    std::unique_ptr<X11Connection> m_connection;
    int m_inputOpcode = 0;
    int m_stateEvent = 0; // the type of the events that tell of the keyboard's state
    // The modifiers at the time of the events that were read so far. Asking the server later might
    // give newer ones.
    unsigned int m_modifiers = 0;
    int m_group = 0;
};

} // namespace ostrelle
