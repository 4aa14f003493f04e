// Draws every symbol of a directory in the sizes that the panel uses, for a person to judge.
// Usage: make-symbol-sheet DIRECTORY PICTURE

#include <QDir>
#include <QGuiApplication>
#include <QPainter>
#include <QSvgRenderer>

#include <array>
#include <cstdio>

using namespace Qt::StringLiterals;

namespace
{

constexpr std::array sizes{10, 13, 20, 40};
constexpr int columns = 3;
constexpr QSize cell(300, 52);
constexpr int margin = 14;
constexpr int scale = 2; // pixels a point, as on a fine screen

constexpr QColor background(0x0F, 0x0F, 0x1F);
constexpr QColor foreground(0xE8, 0xE8, 0xF0);

QImage drawSymbol(const QString &file, int points)
{
    QImage image(QSize(points, points) * scale, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    QSvgRenderer drawing(file);
    drawing.setAspectRatioMode(Qt::KeepAspectRatio);
    QPainter painter(&image);
    drawing.render(&painter);
    painter.setCompositionMode(QPainter::CompositionMode_SourceIn);
    painter.fillRect(image.rect(), foreground);
    painter.end();
    image.setDevicePixelRatio(scale);
    return image;
}

void drawCell(QPainter &painter, const QFileInfo &symbol, QPoint corner)
{
    int x = corner.x() + margin;
    for (const int size : sizes) {
        painter.drawImage(QPoint(x, corner.y() + (cell.height() - size) / 2),
                          drawSymbol(symbol.filePath(), size));
        x += size + margin;
    }
    painter.drawText(QRect(x, corner.y(), corner.x() + cell.width() - x, cell.height()),
                     Qt::AlignVCenter | Qt::TextWrapAnywhere, symbol.completeBaseName());
}

} // namespace

int main(int argc, char **argv)
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    const QGuiApplication application(argc, argv);
    if (argc != 3) {
        std::fputs("usage: make-symbol-sheet DIRECTORY PICTURE\n", stderr);
        return 2;
    }
    const QFileInfoList symbols =
        QDir(QString::fromLocal8Bit(argv[1])).entryInfoList({u"*.svg"_s}, QDir::Files, QDir::Name);
    const int rows = (static_cast<int>(symbols.size()) + columns - 1) / columns;
    QImage sheet(QSize(columns * cell.width(), rows * cell.height()) * scale, QImage::Format_RGB32);
    sheet.setDevicePixelRatio(scale);
    sheet.fill(background);
    QPainter painter(&sheet);
    painter.setPen(foreground);
    QFont font = painter.font();
    font.setPixelSize(10);
    painter.setFont(font);
    for (int i = 0; i < symbols.size(); ++i) {
        drawCell(painter, symbols.at(i), {i / rows * cell.width(), i % rows * cell.height()});
    }
    painter.end();
    return sheet.save(QString::fromLocal8Bit(argv[2])) ? 0 : 1;
}
