#include "tray/MenuBarExtra.h"

#include "platform/Module.h"
#include "tray/DesktopBus.h"
#include "tray/PanelPlacement.h"

#include <QCursor>
#include <QFontMetrics>
#include <QGuiApplication>
#include <QScreen>
#include <QStyleHints>
#include <QTimer>

#include <utility>

namespace ostrelle
{

using namespace Qt::StringLiterals;

namespace
{

// A session that is just starting gets its tray a moment after its first programs.
constexpr std::chrono::seconds hostPatience{3};

// A click on the icon takes the focus from the panel before it tells of itself.
constexpr std::chrono::milliseconds sameClick{300};

// After the start's own work, and before anybody is likely to click.
constexpr std::chrono::milliseconds whileNobodyWaits{500};

PanelModule *loadPanelModule()
{
    return loadModuleAs<PanelModule>(QString::fromLatin1(PanelModule::name));
}

// The panel's libraries and the desktop's font database take a good part of its first opening, if
// that finds them not yet loaded.
void prepareFirstOpening()
{
    static_cast<void>(loadPanelModule());
    static_cast<void>(QFontMetrics(QGuiApplication::font()).horizontalAdvance(u"Ostrelle"_s));
}

ScreenPlace screenAt(QPoint place)
{
    const QScreen *screen = QGuiApplication::screenAt(place);
    if (screen == nullptr) {
        screen = QGuiApplication::primaryScreen();
    }
    return {.whole = screen->geometry(), .available = screen->availableGeometry()};
}

bool isOnWayland()
{
    return QGuiApplication::platformName() == "wayland"_L1;
}

// Only X11 lets a program place its window and know where the pointer is.
bool canPlaceWindows()
{
    return QGuiApplication::platformName() == "xcb"_L1;
}

// The X server of a Wayland session hears of the pointer only over its own windows.
bool hearsOfPointer()
{
    return qEnvironmentVariableIsEmpty("WAYLAND_DISPLAY");
}

bool isWithin(const QElapsedTimer &since, std::chrono::milliseconds time)
{
    return since.isValid() && !since.hasExpired(time.count());
}

std::chrono::milliseconds doubleClick()
{
    return std::chrono::milliseconds(QGuiApplication::styleHints()->mouseDoubleClickInterval());
}

} // namespace

MenuBarExtra::MenuBarExtra(const Models &models, const TrayHostWatcher &hosts)
    : m_models(models)
    , m_events{.appeared = [this] { Q_EMIT panelAppeared(); },
               .lostFocus = [this] { m_sinceLostFocus.start(); }}
    , m_hosts(hosts)
    , m_label(models.gatewayVM, models.voiceVM, models.statusServer)
    , m_seat(isOnWayland() ? WaylandSeat::watch() : nullptr)
{
    connect(&hosts, &TrayHostWatcher::hostPresentChanged, this, &MenuBarExtra::showLabel);
    connect(&hosts, &TrayHostWatcher::busCameBack, this, &MenuBarExtra::renewLabel);
    connect(&m_label, &MenuBarLabel::clicked, this, &MenuBarExtra::handleClick);
    connect(&m_label, &MenuBarLabel::doubleClicked, this, &MenuBarExtra::handleDoubleClick);
    connect(&m_label, &MenuBarLabel::menuOpens, this, &MenuBarExtra::handleMenu);
    connect(&m_label, &MenuBarLabel::openChosen, this, &MenuBarExtra::openPanel);
    if (m_seat) {
        connect(m_seat.get(), &WaylandSeat::appeared, this, [this] {
            if (m_waitsForSeat) {
                openPanel();
            }
        });
    }
    QTimer::singleShot(hostPatience, this, &MenuBarExtra::openIfThereIsNoTray);
    QTimer::singleShot(whileNobodyWaits, this, &prepareFirstOpening);
}

MenuBarExtra::~MenuBarExtra() = default;

void MenuBarExtra::showLabel()
{
    if (m_hosts.hostPresent()) {
        m_label.show();
        Q_EMIT iconShown();
    }
}

// The icon is known to the bus that has ended.
void MenuBarExtra::renewLabel()
{
    if (m_label.isShown()) {
        m_label.hide();
        showLabel();
    }
}

void MenuBarExtra::openIfThereIsNoTray()
{
    if (!m_hosts.hostPresent() && !m_hosts.isBusHostExpected()) {
        openPanel();
    }
}

void MenuBarExtra::handleClick()
{
    m_lastPointer = QCursor::pos();
    const bool isSecond = isWithin(m_sinceClick, doubleClick());
    if (!isSecond && m_panel && m_panel->isOpen()) {
        m_panel->close();
    } else if (isSecond || !isWithin(m_sinceLostFocus, sameClick)) {
        // The second of two quick clicks opens it whatever the first one did, also by taking its
        // focus.
        openPanel();
    }
    // Only now: on a busy machine opening takes longer than the pause between two clicks.
    m_sinceClick.start();
}

void MenuBarExtra::handleDoubleClick()
{
    m_lastPointer = QCursor::pos();
    openPanel();
}

void MenuBarExtra::handleMenu()
{
    if (isAtEdge(QCursor::pos(), screenAt(QCursor::pos()))) {
        m_lastPointer = QCursor::pos();
    }
}

void MenuBarExtra::openPanel()
{
    m_waitsForSeat = m_seat && !m_seat->isPresent();
    if (m_waitsForSeat) {
        return;
    }
    if (m_panel) {
        m_panel->open(panelPlace());
    } else if (!std::exchange(m_waitsForBus, true)) {
        // With the first window that can be read aloud Qt asks the bus, and waits for it.
        onceBusAnswers(this, [this] { openFirst(); });
    }
}

void MenuBarExtra::openFirst()
{
    m_waitsForBus = false;
    if (PanelModule *const module = loadPanelModule()) {
        m_panel = module->makePanel(m_models, m_events);
    }
    if (m_panel) {
        m_panel->open(panelPlace());
    }
}

std::optional<QRect> MenuBarExtra::panelPlace() const
{
    if (!m_hosts.hostPresent() || !canPlaceWindows()) {
        return std::nullopt;
    }
    const QRect icon = iconPlace();
    const QPoint there = icon.isEmpty() ? QCursor::pos() : icon.center();
    return placePanel(icon, screenAt(there), panelSize);
}

// As the tray tells it, unless that is beside all screens, where a bar hides; or where the pointer
// was on it; empty where nobody knows.
QRect MenuBarExtra::iconPlace() const
{
    const QRect told = m_label.geometry();
    const bool isSeen = !told.isEmpty() && QGuiApplication::screenAt(told.center()) != nullptr;
    if (isSeen || !m_lastPointer) {
        return isSeen ? told : QRect();
    }
    const ScreenPlace screen = screenAt(*m_lastPointer);
    const bool isKnown = hearsOfPointer() || !screen.available.contains(*m_lastPointer);
    return isKnown ? iconUnder(*m_lastPointer, screen) : QRect();
}

} // namespace ostrelle

#include "moc_MenuBarExtra.cpp"
