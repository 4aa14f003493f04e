#pragma once

#include <QObject>
#include <QPointer>
#include <QQuickWindow>
#include <QtQml/qqmlregistration.h>

namespace ostrelle
{

// Tells QML that the user does something in a window, with whatever and wherever. Takes no event
// away. Main thread only.
class UserInput : public QObject
{
    Q_OBJECT
    QML_ELEMENT
    Q_PROPERTY(QQuickWindow *window READ window WRITE setWindow NOTIFY windowChanged)

public:
    using QObject::QObject;

    QQuickWindow *window() const { return m_window; }
    void setWindow(QQuickWindow *window);

Q_SIGNALS:
    void windowChanged();
    void happened(); // a key or a button was pressed, a wheel turned, a screen touched

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    QPointer<QQuickWindow> m_window;
};

} // namespace ostrelle
