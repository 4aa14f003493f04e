#pragma once

#include <QDBusMessage>
#include <QDBusVariant>
#include <QObject>
#include <QProperty>
#include <QVariantMap>

namespace ostrelle
{

// How the user wants programs to look, as the desktop's settings portal tells it, now and whenever
// it changes; where there is no portal, as GTK's settings on the bus tell it. Main thread only.
class DesktopAppearance : public QObject
{
    Q_OBJECT

public:
    // Has the defaults until the desktop has answered; waits for nothing.
    explicit DesktopAppearance(QObject *parent = nullptr);

    // False: nothing shall move that need not.
    bool motion() const { return m_motion; }

    // How much larger than designed texts shall be; from 0.5 to 4.
    double textScale() const { return m_textScale; }

Q_SIGNALS:
    void changed();

private Q_SLOTS:
    void adopt(const QString &group, const QString &key, const QDBusVariant &value);

private:
    void askPortal();
    void askGtk();

    void showTextScale();

    template<typename Answer>
    void ask(const QDBusMessage &question, Answer answer);

    double m_textFactor = 1;
    double m_fontFactor = 1; // how much larger the desktop's font is than it is by default

    Q_OBJECT_BINDABLE_PROPERTY_WITH_ARGS(DesktopAppearance, bool, m_motion, true,
                                         &DesktopAppearance::changed)
    Q_OBJECT_BINDABLE_PROPERTY_WITH_ARGS(DesktopAppearance, double, m_textScale, 1.0,
                                         &DesktopAppearance::changed)
};

} // namespace ostrelle
