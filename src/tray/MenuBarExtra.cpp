#include "tray/MenuBarExtra.h"

#include "platform/Module.h"
#include "tray/PanelPlacement.h"

#include <QCursor>
#include <QFontMetrics>
#include <QGuiApplication>
#include <QScreen>
#include <QTimer>

namespace ostrelle
{

using namespace Qt::StringLiterals;

namespace
{

constexpr QSize panelSize(380, 700);

// A session that is just starting gets its tray a moment after its first programs.
constexpr std::chrono::seconds hostPatience{3};

// A click on the icon takes the focus from the panel before it tells of itself.
constexpr std::chrono::milliseconds sameClick{300};

// After the start's own work, and before anybody is likely to click.
constexpr std::chrono::milliseconds whileNobodyWaits{500};

// The desktop's font database takes a good part of the panel's first opening, if that finds it not
// yet loaded.
void loadFonts()
{
    static_cast<void>(QFontMetrics(QGuiApplication::font()).horizontalAdvance(u"Ostrelle"_s));
}

const QScreen *screenAt(QPoint place)
{
    const QScreen *screen = QGuiApplication::screenAt(place);
    return screen != nullptr ? screen : QGuiApplication::primaryScreen();
}

// Only X11 lets a program place its window and know where the pointer is.
bool canPlaceWindows()
{
    return QGuiApplication::platformName() == "xcb"_L1;
}

} // namespace

MenuBarExtra::MenuBarExtra(const Models &models, const TrayHostWatcher &hosts)
    : m_models(models)
    , m_events{.appeared = [this] { Q_EMIT panelAppeared(); },
               .lostFocus = [this] { m_sinceLostFocus.start(); }}
    , m_hosts(hosts)
    , m_label(models.gatewayVM, models.voiceVM)
{
    connect(&hosts, &TrayHostWatcher::hostPresentChanged, this, &MenuBarExtra::showLabel);
    connect(&m_label, &MenuBarLabel::clicked, this, &MenuBarExtra::togglePanel);
    connect(&m_label, &MenuBarLabel::openChosen, this, &MenuBarExtra::openPanel);
    QTimer::singleShot(hostPatience, this, &MenuBarExtra::openIfThereIsNoTray);
    QTimer::singleShot(whileNobodyWaits, this, &loadFonts);
}

MenuBarExtra::~MenuBarExtra() = default;

void MenuBarExtra::showLabel()
{
    if (m_hosts.hostPresent()) {
        m_label.show();
        Q_EMIT iconShown();
    }
}

void MenuBarExtra::openIfThereIsNoTray()
{
    if (!m_hosts.hostPresent()) {
        openPanel();
    }
}

void MenuBarExtra::togglePanel()
{
    if (m_panel && m_panel->isOpen()) {
        m_panel->close();
    } else if (!m_sinceLostFocus.isValid() || m_sinceLostFocus.hasExpired(sameClick.count())) {
        openPanel();
    }
}

void MenuBarExtra::openPanel()
{
    if (PanelWindow *const window = panel()) {
        window->open(panelPlace());
    }
}

PanelWindow *MenuBarExtra::panel()
{
    if (!m_panel) {
        if (auto *const module =
                loadModuleAs<PanelModule>(QString::fromLatin1(PanelModule::name))) {
            m_panel = module->makePanel(m_models, m_events);
        }
    }
    return m_panel.get();
}

std::optional<QRect> MenuBarExtra::panelPlace() const
{
    if (!m_hosts.hostPresent() || !canPlaceWindows()) {
        return std::nullopt;
    }
    QRect icon = m_label.geometry();
    const QScreen *screen = screenAt(icon.isEmpty() ? QCursor::pos() : icon.center());
    if (icon.isEmpty() && !screen->availableGeometry().contains(QCursor::pos())) {
        icon = QRect(QCursor::pos(), QSize(1, 1)); // the pointer is on the bar: a click on the icon
    }
    return placePanel(icon, {.whole = screen->geometry(), .available = screen->availableGeometry()},
                      panelSize);
}

} // namespace ostrelle

#include "moc_MenuBarExtra.cpp"
