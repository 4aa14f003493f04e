// What a program like this has to take at least: a tray icon of Qt Widgets and, where PANEL is
// defined, a window of Qt Quick that a click on it opens.

#include <QApplication>
#include <QPixmap>
#include <QSystemTrayIcon>

#ifdef PANEL
#include <QQuickView>
#endif

int main(int argc, char **argv)
{
#ifdef PANEL
    QQuickWindow::setGraphicsApi(QSGRendererInterface::Software);
#endif
    const QApplication application(argc, argv);
    QPixmap pixmap(22, 22);
    pixmap.fill(Qt::cyan);
    QSystemTrayIcon icon{QIcon(pixmap)};
#ifdef PANEL
    std::unique_ptr<QQuickView> view;
    QObject::connect(&icon, &QSystemTrayIcon::activated, [&view] {
        view = std::make_unique<QQuickView>(QUrl(QStringLiteral("qrc:/Bare.qml")));
        view->show();
    });
#endif
    icon.show();
    return QApplication::exec();
}
