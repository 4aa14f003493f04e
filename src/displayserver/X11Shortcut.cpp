#include "displayserver/X11Shortcut.h"

#include <X11/XKBlib.h>
#include <X11/Xlib.h>
#include <X11/extensions/XInput2.h>
#include <X11/keysym.h>
#include <array>

namespace ostrelle
{

namespace
{

// The symbol that the key gives without modifiers in the current layout, or, where that is not
// Latin, in the first of the user's layouts that is. So the shortcut stays on the same key while a
// Cyrillic layout is in use.
KeySym latinSymbol(Display *display, unsigned int keycode, int group)
{
    const auto symbol = [&](int ofGroup) {
        return XkbKeycodeToKeysym(display, static_cast<KeyCode>(keycode), ofGroup, 0);
    };
    const auto isLatin = [](KeySym given) { return given >= XK_space && given <= XK_ydiaeresis; };
    KeySym found = symbol(group);
    for (int other = 0; other < XkbNumKbdGroups && !isLatin(found); ++other) {
        found = symbol(other);
    }
    return found;
}

} // namespace

std::unique_ptr<X11Shortcut> X11Shortcut::listen()
{
    std::unique_ptr<X11Shortcut> shortcut(new X11Shortcut);
    shortcut->m_connection =
        X11Connection::open([raw = shortcut.get()](XEvent &event) { raw->handle(event); });
    if (!shortcut->m_connection || !shortcut->selectRawKeys() || !shortcut->followState()) {
        return nullptr;
    }
    return shortcut;
}

bool X11Shortcut::selectRawKeys()
{
    Display *const display = m_connection->display();
    int firstEvent = 0;
    int firstError = 0;
    int major = 2;
    int minor = 1; // from here on raw events come also while another client grabs the keyboard
    if (XQueryExtension(display, "XInputExtension", &m_inputOpcode, &firstEvent, &firstError) ==
            False ||
        XIQueryVersion(display, &major, &minor) != Success) {
        return false;
    }
    std::array<unsigned char, XIMaskLen(XI_LASTEVENT)> bits{};
    XISetMask(bits.data(), XI_RawKeyPress);
    XIEventMask mask{.deviceid = XIAllMasterDevices,
                     .mask_len = static_cast<int>(bits.size()),
                     .mask = bits.data()};
    XISelectEvents(display, DefaultRootWindow(display), &mask, 1);
    XFlush(display);
    return true;
}

bool X11Shortcut::followState()
{
    Display *const display = m_connection->display();
    int opcode = 0;
    int error = 0;
    int major = XkbMajorVersion;
    int minor = XkbMinorVersion;
    constexpr unsigned long followed = XkbModifierStateMask | XkbGroupStateMask;
    XkbStateRec state{};
    if (XkbQueryExtension(display, &opcode, &m_stateEvent, &error, &major, &minor) == False ||
        XkbSelectEventDetails(display, XkbUseCoreKbd, XkbStateNotify, followed, followed) ==
            False ||
        XkbGetState(display, XkbUseCoreKbd, &state) != Success) {
        return false;
    }
    m_modifiers = state.mods;
    m_group = state.group;
    return true;
}

void X11Shortcut::handle(_XEvent &event)
{
    if (event.type == m_stateEvent) {
        const XkbEvent &keyboard = reinterpret_cast<const XkbEvent &>(event);
        if (keyboard.any.xkb_type == XkbStateNotify) {
            m_modifiers = keyboard.state.mods;
            m_group = keyboard.state.group;
        }
        return;
    }
    XGenericEventCookie &cookie = event.xcookie;
    if (cookie.type != GenericEvent || cookie.extension != m_inputOpcode ||
        XGetEventData(m_connection->display(), &cookie) == False) {
        return;
    }
    const bool hit =
        cookie.evtype == XI_RawKeyPress &&
        isShortcut(static_cast<unsigned int>(static_cast<XIRawEvent *>(cookie.data)->detail));
    XFreeEventData(m_connection->display(), &cookie);
    if (hit) {
        Q_EMIT pressed();
    }
}

bool X11Shortcut::isShortcut(unsigned int keycode) const
{
    Display *const display = m_connection->display();
    if (latinSymbol(display, keycode, m_group) != XK_m) {
        return false;
    }
    const unsigned int super = XkbKeysymToModifiers(display, XK_Super_L);
    return (m_modifiers & ShiftMask) != 0 && (m_modifiers & super) != 0;
}

} // namespace ostrelle

#include "moc_X11Shortcut.cpp"
