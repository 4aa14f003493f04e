#pragma once

#include <QDBusMessage>
#include <QDBusVariant>
#include <QObject>
#include <QProperty>
#include <QVariantMap>

namespace ostrelle
{

// How the user wants programs to look, now and whenever it changes: as the desktop's settings
// portal says, or, where there is no portal, GTK's settings on the bus. Main thread only.
class DesktopAppearance : public QObject
{
    Q_OBJECT

public:
    // Has the defaults until the desktop has answered; does not wait for that.
    explicit DesktopAppearance(QObject *parent = nullptr);

    // False: only what must move may move.
    bool motion() const { return m_motion; }

    // How much larger than designed texts are wanted; from 0.5 to 4.
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
