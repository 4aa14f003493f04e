#include "ui/Panel.h"

#include "ui/FieldAccessibility.h"
#include "ui/QmlTypes.h"
#include "ui/SymbolProvider.h"

#include <QPainterPath>
#include <QQmlEngine>
#include <QQuickItem>
#include <QScreen>

#include <malloc.h>

namespace ostrelle
{

using namespace Qt::StringLiterals;

namespace
{

constexpr QSize ordinarySize(380, 700);
constexpr int cornerRadius = 12;
constexpr QColor background(0x0F, 0x0F, 0x1F); // until the first frame, and behind the corners

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
    m_view.setTitle(u"Ostrelle"_s);
    m_view.setColor(background);
    m_view.setResizeMode(QQuickView::SizeRootObjectToView);
    m_view.setInitialProperties(
        {{u"models"_s, QVariant::fromValue(&m_models)},
         {u"gatewayVM"_s, QVariant::fromValue(models.gatewayVM)},
         {u"voiceVM"_s, QVariant::fromValue(models.voiceVM)},
         {u"serviceManager"_s, QVariant::fromValue(models.serviceManager)},
         {u"setupManager"_s, QVariant::fromValue(models.setupManager)},
         {u"statusServer"_s, QVariant::fromValue(models.statusServer)},
         {u"projectTrackingEnabled"_s,
          models.settings.preferences->value(preference::projectTrackingEnabled)}});
    m_view.setSource(QUrl(u"qrc:/qt/qml/Ostrelle/shell/PanelRoot.qml"_s));
    if (QQuickItem *const root = m_view.rootObject()) {
        connect(root, SIGNAL(closeRequested()), &m_view, SLOT(hide()));
    }
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
    m_view.setFlags(Qt::Window);
    m_view.setMask({});
    const QSize size = ordinarySize.boundedTo(m_view.screen()->availableSize());
    m_view.setMinimumSize(size);
    m_view.setMaximumSize(size);
    m_view.resize(size);
}

void Panel::beBesideIcon(const QRect &place)
{
    m_view.setFlags(Qt::Tool | Qt::FramelessWindowHint | Qt::WindowStaysOnTopHint);
    m_view.setMinimumSize(place.size());
    m_view.setMaximumSize(place.size());
    m_view.setGeometry(place);
    m_view.setMask(roundedShape(place.size()));
}

void Panel::followActivity()
{
    if (m_view.isActive()) {
        m_hadFocus = true;
    } else if (m_hadFocus && m_isBesideIcon && isOpen()) {
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
    ::malloc_trim(0); // else the allocator would keep it
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
