#pragma once

#include <QProcess>
#include <QRect>
#include <QString>

#include <optional>

// An X server of the test's own with a window manager and a tray host, and DISPLAY set to it, for
// as long as the object lives. What is seen and done there is what a user sees and does.
class XSession
{
public:
    XSession();
    ~XSession();
    XSession(const XSession &) = delete;
    XSession &operator=(const XSession &) = delete;

    // Where the program's icon stands in the tray; nothing while it is not there.
    static std::optional<QRect> icon();
    // The same once it rests there: on its way into the tray its window comes and goes.
    static std::optional<QRect> waitForIcon();
    // Where the program's panel stands; nothing while it is closed.
    static std::optional<QRect> panel();

    static void click(QPoint place, int times = 1);
    static void press(const QString &key); // for instance "Escape", "super+shift+m"
    static void type(const QString &text);
    // The keyboard's layouts, as "us,fr"; the first one is in use.
    static void useLayouts(const QString &layouts);

private:
    QProcess m_server;
    QProcess m_windowManager;
    QProcess m_trayHost;
};
