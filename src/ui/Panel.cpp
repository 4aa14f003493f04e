#include "ui/Panel.h"

#include "displayserver/X11Windows.h"
#include "platform/Heap.h"
#include "tray/PearlIcon.h"
#include "ui/FieldAccessibility.h"
#include "ui/QmlTypes.h"
#include "ui/SymbolProvider.h"

#include <QGuiApplication>
#include <QPainterPath>
#include <QQmlEngine>
#include <QQuickItem>
#include <QScreen>

namespace ostrelle
{

using namespace Qt::StringLiterals;

namespace
{

constexpr int cornerRadius = 12;
constexpr QColor background(0x0F, 0x0F, 0x1F); // until the first frame, and behind the corners
constexpr QColor iconColor(0x00, 0xBF, 0xBF);  // the pearl's of the program's icon files

// What window managers put around a window, and bars, of which Wayland does not tell.
constexpr QMargins usualFrame(8, 40, 8, 8);
constexpr int usualBar = 48;

// After the panel was opened. The end of an earlier focus may come that late; the new one follows.
constexpr std::chrono::milliseconds focusReturnsIn{300};

// The shape of the panel beside its icon. Cut, not seen through: that needs no compositor.
QRegion roundedShape(QSize size)
{
    QPainterPath outline;
    outline.addRoundedRect(QRectF(QPointF(), size), cornerRadius, cornerRadius);
    return {outline.toFillPolygon().toPolygon()};
}

} // namespace

Panel::Panel(const Models &models, PanelEvents events, std::chrono::milliseconds keptAfterClosing)
    : m_events(std::move(events))
    , m_models(models)
{
    m_patience.setSingleShot(true);
    m_patience.setInterval(keptAfterClosing);
    connect(&m_patience, &QTimer::timeout, this, &Panel::letGo);
    m_focusReturns.setSingleShot(true);
    m_focusReturns.setInterval(focusReturnsIn);
    connect(&m_focusReturns, &QTimer::timeout, this, &Panel::closeUnlessFocusReturned);
    load(models);
    connect(&m_view, &QWindow::activeChanged, this, &Panel::followActivity);
    connect(&m_view, &QWindow::visibleChanged, this, &Panel::followVisibility);
    connect(&m_appearance, &DesktopAppearance::changed, this, &Panel::showAppearance);
}

Panel::~Panel()
{
    m_view.disconnect(this);
}

void Panel::load(const Models &models)
{
    installFieldAccessibility();
    QQmlEngine *const engine = m_view.engine();
    engine->addImportPath(u"qrc:/qt/qml"_s);
    engine->addImageProvider(QString::fromLatin1(SymbolProvider::name),
                             new SymbolProvider); // the engine owns it
    // For good, whether anybody composes or not: what Qt has drawn for a window of one depth does
    // not fit one of another.
    QSurfaceFormat format = m_view.format();
    format.setAlphaBufferSize(8);
    m_view.setFormat(format);
    m_view.setTitle(u"Ostrelle"_s);
    m_view.setIcon(pearlIcon(iconColor));
    m_view.setColor(background);
    m_view.setResizeMode(QQuickView::SizeRootObjectToView);
    m_view.setInitialProperties(
        {{u"models"_s, QVariant::fromValue(&m_models)},
         {u"gatewayVM"_s, QVariant::fromValue(models.gatewayVM)},
         {u"voiceVM"_s, QVariant::fromValue(models.voiceVM)},
         {u"serviceManager"_s, QVariant::fromValue(models.serviceManager)},
         {u"setupManager"_s, QVariant::fromValue(models.setupManager)},
         {u"statusServer"_s, QVariant::fromValue(models.statusServer)},
         {u"projectTrackingEnabled"_s, models.gatewaySettings->projectTrackingEnabled()}});
    m_view.setSource(QUrl(u"qrc:/qt/qml/Ostrelle/shell/PanelRoot.qml"_s));
    if (QQuickItem *const root = m_view.rootObject()) {
        connect(root, SIGNAL(closeRequested()), &m_view, SLOT(hide()));
    }
    connect(models.gatewaySettings, &GatewaySettings::projectTrackingEnabledChanged, &m_view,
            [this, settings = models.gatewaySettings] {
                if (QQuickItem *const root = m_view.rootObject()) {
                    root->setProperty("projectTrackingEnabled", settings->projectTrackingEnabled());
                }
            });
}

void Panel::open(const std::optional<QRect> &place)
{
    if (isOpen() && m_isBesideIcon == place.has_value()) {
        m_view.raise();
        m_view.requestActivate();
        return;
    }
    m_isBesideIcon = place.has_value();
    m_hadFocus = false;
    m_hadEarlierFocus = m_view.isActive();
    m_focusReturns.start();
    if (place) {
        beBesideIcon(*place);
    } else {
        beOrdinary();
    }
    if (QQuickItem *const root = m_view.rootObject()) {
        root->setProperty("active", true);
        root->setVisible(true);
    }
    m_view.show();
    m_view.raise();
    m_view.requestActivate();
}

void Panel::beOrdinary()
{
    beTranslucent(false);
    beFramed(true);
    m_view.setFlags(Qt::Window);
    m_view.setMask({});
    setFixedSize(ordinarySize());
}

void Panel::beBesideIcon(const QRect &place)
{
    const bool translucent = isComposited();
    beTranslucent(translucent);
    beFramed(false);
    m_view.setFlags(Qt::Tool | Qt::FramelessWindowHint | Qt::WindowStaysOnTopHint);
    setFixedSize(place.size());
    m_view.setPosition(place.topLeft());
    m_view.setMask(translucent ? QRegion() : roundedShape(place.size()));
    m_view.create();
    keepOutOfTaskbars(m_view);
}

void Panel::beTranslucent(bool translucent)
{
    m_view.setColor(translucent ? QColor(Qt::transparent) : background);
    if (QQuickItem *const root = m_view.rootObject()) {
        root->setProperty("translucent", translucent);
    }
}

void Panel::beFramed(bool framed)
{
    if (QQuickItem *const root = m_view.rootObject()) {
        root->setProperty("framed", framed);
    }
}

void Panel::setFixedSize(QSize size)
{
    m_view.setMinimumSize(size);
    m_view.setMaximumSize(size);
    m_view.resize(size);
}

// As designed, or what the screen has room for with a frame around it.
QSize Panel::ordinarySize() const
{
    QSize room = m_view.screen()->availableSize().shrunkBy(usualFrame);
    if (QGuiApplication::platformName() == "wayland"_L1) {
        room.rheight() -= usualBar;
    }
    return panelSize.boundedTo(room);
}

void Panel::followActivity()
{
    if (m_view.isActive()) {
        m_hadFocus = true;
    } else if (m_hadFocus || !m_focusReturns.isActive()) {
        closeForLostFocus();
    }
}

void Panel::closeUnlessFocusReturned()
{
    if (m_hadEarlierFocus && !m_view.isActive()) {
        closeForLostFocus();
    }
}

void Panel::closeForLostFocus()
{
    if (m_isBesideIcon && isOpen()) {
        m_events.lostFocus();
        close();
    }
}

void Panel::followVisibility()
{
    QQuickItem *const root = m_view.rootObject();
    if (m_view.isVisible()) {
        m_patience.stop();
        m_events.appeared();
    } else {
        m_patience.start();
    }
    if (root != nullptr) {
        root->setVisible(m_view.isVisible()); // animations stop with what they move
        root->forceActiveFocus();
    }
}

void Panel::letGo()
{
    if (QQuickItem *const root = m_view.rootObject()) {
        root->setProperty("active", false);
    }
    m_view.releaseResources();
    m_view.engine()->collectGarbage();
    m_view.engine()->trimComponentCache();
    trimHeap();
}

void Panel::showAppearance()
{
    if (QQuickItem *const root = m_view.rootObject()) {
        root->setProperty("motion", m_appearance.motion());
        root->setProperty("textScale", m_appearance.textScale());
    }
}

} // namespace ostrelle

#include "moc_Panel.cpp"
