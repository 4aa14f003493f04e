#include "ui/FieldAccessibility.h"

#include <QAccessible>
#include <QAccessibleObject>
#include <QQuickItem>
#include <QQuickWindow>

namespace ostrelle
{

using namespace Qt::StringLiterals;

namespace
{

bool holdsSecret(const QObject *object)
{
    const QVariant echoMode = object == nullptr ? QVariant() : object->property("echoMode");
    return echoMode.isValid() && echoMode.toInt() != 0; // 0 shows what is typed
}

class FieldInterface : public QAccessibleObject,
                       public QAccessibleActionInterface,
                       public QAccessibleTextInterface
{
public:
    explicit FieldInterface(QQuickItem *field)
        : QAccessibleObject(field)
    {
    }

    void *interface_cast(QAccessible::InterfaceType type) override
    {
        switch (type) {
        case QAccessible::ActionInterface:
            return static_cast<QAccessibleActionInterface *>(this);
        case QAccessible::TextInterface:
            return static_cast<QAccessibleTextInterface *>(this);
        default:
            return nullptr;
        }
    }

    QWindow *window() const override { return field()->window(); }
    QRect rect() const override { return onScreen(field()->boundingRect()); }
    QAccessible::Role role() const override { return QAccessible::EditableText; }
    int childCount() const override { return 0; }
    QAccessibleInterface *child(int /*index*/) const override { return nullptr; }
    int indexOfChild(const QAccessibleInterface * /*child*/) const override { return -1; }

    QAccessibleInterface *parent() const override
    {
        for (QQuickItem *item = field()->parentItem(); item != nullptr; item = item->parentItem()) {
            // Null for those that mean nothing to assistive technology.
            if (QAccessibleInterface *interface = QAccessible::queryAccessibleInterface(item)) {
                return interface;
            }
        }
        return QAccessible::queryAccessibleInterface(field()->window());
    }

    QString text(QAccessible::Text kind) const override
    {
        switch (kind) {
        case QAccessible::Name:
            return field()->property("accessibleName").toString();
        case QAccessible::Value:
            return shown();
        default:
            return {};
        }
    }

    QAccessible::State state() const override
    {
        QAccessible::State state;
        state.focusable = true;
        state.focused = field()->hasActiveFocus();
        state.disabled = !field()->isEnabled();
        state.invisible = !field()->isVisible();
        state.selectableText = true;
        state.editable = true;
        state.passwordEdit = holdsSecret(field());
        return state;
    }

    QStringList actionNames() const override { return {setFocusAction()}; }
    QStringList keyBindingsForAction(const QString & /*action*/) const override { return {}; }

    void doAction(const QString &action) override
    {
        if (action == setFocusAction()) {
            field()->forceActiveFocus(Qt::OtherFocusReason);
        }
    }

    int characterCount() const override { return static_cast<int>(shown().size()); }
    QString text(int start, int end) const override { return shown().mid(start, end - start); }
    int cursorPosition() const override { return number("cursorPosition"); }

    void setCursorPosition(int position) override
    {
        field()->setProperty("cursorPosition", position);
    }

    int selectionCount() const override
    {
        return number("selectionStart") == number("selectionEnd") ? 0 : 1;
    }

    void selection(int /*index*/, int *start, int *end) const override
    {
        *start = number("selectionStart");
        *end = number("selectionEnd");
    }

    void addSelection(int start, int end) override { setSelection(0, start, end); }
    void removeSelection(int /*index*/) override { QMetaObject::invokeMethod(field(), "deselect"); }

    void setSelection(int /*index*/, int start, int end) override
    {
        QMetaObject::invokeMethod(field(), "select", Q_ARG(int, start), Q_ARG(int, end));
    }

    QRect characterRect(int offset) const override
    {
        QRectF place;
        QMetaObject::invokeMethod(field(), "positionToRectangle", Q_RETURN_ARG(QRectF, place),
                                  Q_ARG(int, offset));
        return onScreen(place);
    }

    int offsetAtPoint(const QPoint & /*point*/) const override { return -1; }
    void scrollToSubstring(int /*start*/, int /*end*/) override {}

    QString attributes(int /*offset*/, int *start, int *end) const override
    {
        *start = 0;
        *end = characterCount();
        return {};
    }

private:
    QQuickItem *field() const { return static_cast<QQuickItem *>(object()); }
    QString shown() const { return field()->property("displayText").toString(); }
    int number(const char *property) const { return field()->property(property).toInt(); }

    QRect onScreen(const QRectF &place) const
    {
        const QRect inWindow = field()->mapRectToScene(place).toRect();
        const QWindow *const window = field()->window();
        return window == nullptr ? inWindow
                                 : QRect(window->mapToGlobal(inWindow.topLeft()), inWindow.size());
    }
};

// Qt calls this with the name of each class that the object is of.
QAccessibleInterface *makeInterface(const QString &className, QObject *object)
{
    auto *const field =
        className == "QQuickTextInput"_L1 ? qobject_cast<QQuickItem *>(object) : nullptr;
    return field == nullptr ? nullptr : new FieldInterface(field); // Qt owns it
}

void tellOf(QAccessibleEvent *event)
{
    if (!tellsSecret(*event)) {
        QAccessible::installUpdateHandler(nullptr); // to the platform, not here again
        QAccessible::updateAccessibility(event);
        QAccessible::installUpdateHandler(&tellOf);
    }
}

} // namespace

bool tellsSecret(const QAccessibleEvent &event)
{
    return event.type() == QAccessible::TextUpdated && holdsSecret(event.object());
}

void installFieldAccessibility()
{
    QAccessible::installFactory(&makeInterface);
    QAccessible::installUpdateHandler(&tellOf);
}

} // namespace ostrelle
