#include "desktop/XSession.h"

#include "support/Patience.h"
#include "support/Processes.h"

#include <QTest>

using namespace Qt::StringLiterals;

namespace
{

// The visible windows of the program, by their places.
QList<QRect> windows()
{
    QList<QRect> places;
    const QByteArray found =
        outputOf(u"xdotool"_s, {u"search"_s, u"--onlyvisible"_s, u"--class"_s, u"^ostrelle$"_s});
    for (const QByteArray &window : found.split('\n').sliced(0, found.count('\n'))) {
        const QByteArray geometry = outputOf(
            u"xdotool"_s, {u"getwindowgeometry"_s, u"--shell"_s, QString::fromLatin1(window)});
        const auto value = [&](const QByteArray &name) {
            const qsizetype at = geometry.indexOf("\n" + name + "=") + name.size() + 2;
            return geometry.mid(at, geometry.indexOf('\n', at) - at).toInt();
        };
        places.append({value("X"), value("Y"), value("WIDTH"), value("HEIGHT")});
    }
    return places;
}

std::optional<QRect> windowWhere(bool (*fits)(const QRect &place))
{
    for (const QRect &place : windows()) {
        if (fits(place)) {
            return place;
        }
    }
    return std::nullopt;
}

} // namespace

XSession::XSession()
{
    // Without -noreset the server begins anew, deaf for a while, whenever its last client goes.
    m_server.start(u"Xvfb"_s, {u"-displayfd"_s, u"1"_s, u"-screen"_s, u"0"_s, u"1280x1600x24"_s,
                               u"-noreset"_s});
    if (!m_server.waitForReadyRead(patienceMilliseconds)) {
        qFatal("no X server");
    }
    qputenv("DISPLAY", ":" + m_server.readAllStandardOutput().trimmed());
    m_windowManager.start(u"openbox"_s, QStringList());
    // Until it manages, it is about to take the focus from whatever has it.
    const auto manages = [] {
        QProcess question;
        question.start(u"xdotool"_s, {u"get_desktop"_s});
        question.waitForFinished();
        return question.exitCode() == 0;
    };
    if (!QTest::qWaitFor(manages, patienceMilliseconds)) {
        qFatal("no window manager");
    }
    m_trayHost.start(u"trayer"_s, {u"--edge"_s, u"top"_s, u"--align"_s, u"right"_s, u"--height"_s,
                                   u"24"_s, u"--width"_s, u"10"_s});
    m_trayHost.waitForStarted();
}

XSession::~XSession()
{
    endProcess(m_trayHost);
    endProcess(m_windowManager);
    endProcess(m_server);
    qunsetenv("DISPLAY");
}

std::optional<QRect> XSession::icon()
{
    return windowWhere([](const QRect &place) { return place.width() > 4 && place.width() < 64; });
}

std::optional<QRect> XSession::waitForIcon()
{
    std::optional<QRect> place;
    const auto rests = [&] {
        const std::optional<QRect> last = place;
        place = icon();
        return place && place == last;
    };
    if (!QTest::qWaitFor(rests, patienceMilliseconds)) {
        qWarning() << outputOf(u"xwininfo"_s, {u"-root"_s, u"-tree"_s}).constData();
        return std::nullopt;
    }
    return place;
}

std::optional<QRect> XSession::panel()
{
    return windowWhere([](const QRect &place) {
        bool isScaled = false;
        const qreal scale = qEnvironmentVariable("QT_SCALE_FACTOR").toDouble(&isScaled);
        return place.size() == QSize(380, 700) * (isScaled ? scale : 1);
    });
}

void XSession::click(QPoint place, int times)
{
    QStringList arguments{u"mousemove"_s, QString::number(place.x()), QString::number(place.y())};
    for (int i = 0; i < times; ++i) { // without a pause, in which a busy machine may forget it
        arguments << u"mousedown"_s << u"1"_s << u"mouseup"_s << u"1"_s;
    }
    outputOf(u"xdotool"_s, arguments);
}

void XSession::press(const QString &key)
{
    outputOf(u"xdotool"_s, {u"key"_s, key});
}

void XSession::type(const QString &text)
{
    outputOf(u"xdotool"_s, {u"type"_s, text});
}

void XSession::useLayouts(const QString &layouts)
{
    outputOf(u"setxkbmap"_s, {layouts});
}
