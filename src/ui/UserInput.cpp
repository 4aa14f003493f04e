#include "ui/UserInput.h"

#include <QEvent>

namespace ostrelle
{

void UserInput::setWindow(QQuickWindow *window)
{
    if (window == m_window) {
        return;
    }
    if (m_window) {
        m_window->removeEventFilter(this);
    }
    m_window = window;
    if (m_window) {
        m_window->installEventFilter(this);
    }
    Q_EMIT windowChanged();
}

bool UserInput::eventFilter(QObject * /*watched*/, QEvent *event)
{
    switch (event->type()) {
    case QEvent::KeyPress:
    case QEvent::MouseButtonPress:
    case QEvent::Wheel:
    case QEvent::TouchBegin:
        Q_EMIT happened();
        break;
    default:
        break;
    }
    return false;
}

} // namespace ostrelle

#include "moc_UserInput.cpp"
