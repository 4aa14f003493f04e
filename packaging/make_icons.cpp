// Draws the program's icon, the pearl as it is while the voice agent dozes, in the sizes that icon
// themes have. Usage: make-icons DIRECTORY

#include "tray/Pearl.h"

#include <QDir>
#include <QImage>

#include <algorithm>
#include <array>
#include <cstdio>

using namespace ostrelle;

int main(int argc, char **argv)
{
    constexpr std::array sizes{16, 22, 24, 32, 48, 64, 128, 256, 512};
    constexpr double trayPoints = 18; // for which the widths of the pearl's lines are made
    if (argc != 2) {
        std::fputs("usage: make-icons DIRECTORY\n", stderr);
        return 2;
    }
    const QDir directory(QString::fromLocal8Bit(argv[1]));
    for (const int size : sizes) {
        // Large icons keep their lines fine.
        const double points = std::max(trayPoints, size / 3.0);
        const QString folder = QStringLiteral("%1x%1/apps").arg(size);
        QImage icon =
            renderPearl(QColor::fromRgbF(0, 0.75F, 0.75F), QSizeF(points, points), size / points);
        icon.setDevicePixelRatio(1);
        if (!directory.mkpath(folder) ||
            !icon.save(directory.filePath(folder + QStringLiteral("/ai.duskrell.ostrelle.png")))) {
            std::fputs("make-icons: cannot write\n", stderr);
            return 1;
        }
    }
    return 0;
}
