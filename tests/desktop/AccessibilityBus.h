#pragma once

#include <QDBusConnection>
#include <QProcess>
#include <QRect>
#include <QString>

#include <optional>

// What a screen reader gets to know of the program: its controls by role and name, and where they
// stand. Needs a session bus, and is made before the program starts.
class AccessibilityBus
{
public:
    AccessibilityBus();
    ~AccessibilityBus();
    AccessibilityBus(const AccessibilityBus &) = delete;
    AccessibilityBus &operator=(const AccessibilityBus &) = delete;

    struct Control {
        QString role; // as AT-SPI names it: "push button", "page tab", "text"
        QString name;
        QString service;
        QString path;
        uint states = 0; // those that AT-SPI numbers from 0 to 31, a bit each

        bool has(int state) const { return (states >> state & 1U) != 0; }
        bool isFocusable() const { return has(11); }
        bool hasFocus() const { return has(12); }
        bool isShowing() const { return has(25); }
    };

    // Every control of the running program that is shown.
    QList<Control> controls() const;

    // The control that the keyboard is at.
    std::optional<Control> focused() const;

    // Where the control with that name stands on the screen, once it is shown.
    std::optional<QRect> waitFor(const QString &name, const QString &role = {}) const;

    // The text that the field gives away.
    QString text(const Control &field) const;

private:
    void collect(const Control &parent, QList<Control> &found, int depth) const;
    QList<Control> children(const Control &parent) const;
    QRect place(const Control &control) const;
    // The first of what the control answers; nothing where it is gone.
    QVariant ask(const Control &control, const QString &interface, const QString &method,
                 const QVariantList &arguments = {}) const;

    QProcess m_launcher;
    std::optional<QDBusConnection> m_bus;
};
