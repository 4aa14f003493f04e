#pragma once

#include "gateway/QrCode.h"

#include <QQuickPaintedItem>

namespace ostrelle
{

// Shows a QR code so that a camera reads it: dark on white whatever the theme, with its quiet zone,
// and every module the same whole number of the screen's pixels. An empty code shows nothing.
class QrImage : public QQuickPaintedItem
{
    Q_OBJECT
    QML_ELEMENT
    Q_PROPERTY(ostrelle::QrCode code READ code WRITE setCode NOTIFY codeChanged)
    Q_PROPERTY(bool isEmpty READ isEmpty NOTIFY codeChanged)

public:
    explicit QrImage(QQuickItem *parent = nullptr);

    QrCode code() const { return m_code; }
    void setCode(const QrCode &code);
    bool isEmpty() const { return m_code.isEmpty(); }

    void paint(QPainter *painter) override;

Q_SIGNALS:
    void codeChanged();

private:
    QrCode m_code;
};

} // namespace ostrelle
