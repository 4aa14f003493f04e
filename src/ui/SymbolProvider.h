#pragma once

#include <QQuickImageProvider>

namespace ostrelle
{

// Draws the program's own symbols, each a drawing in one colour, for
// "image://symbols/NAME/AARRGGBB".
class SymbolProvider : public QQuickImageProvider
{
public:
    static constexpr auto name = "symbols";

    SymbolProvider()
        : QQuickImageProvider(QQuickImageProvider::Image)
    {
    }

    // Null for a name that has no drawing.
    QImage requestImage(const QString &id, QSize *size, const QSize &requestedSize) override;
};

} // namespace ostrelle
