#include "ui/DesktopAppearance.h"

#include "tray/DesktopBus.h"

#include <QDBusArgument>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QGuiApplication>

#include <algorithm>

namespace ostrelle
{

using namespace Qt::StringLiterals;

namespace
{

const QString portalService = u"org.freedesktop.portal.Desktop"_s;
const QString portalPath = u"/org/freedesktop/portal/desktop"_s;
const QString portalInterface = u"org.freedesktop.portal.Settings"_s;
const QString gtkInterface = u"org.gtk.Settings"_s;

const QString freedesktopGroup = u"org.freedesktop.appearance"_s;
const QString gnomeGroup = u"org.gnome.desktop.interface"_s;
const QString kdeGroup = u"org.kde.kdeglobals.KDE"_s;
const QString kdeFontGroup = u"org.kde.kdeglobals.General"_s;

// In points, as long as the user has changed nothing.
constexpr double gnomeFontSize = 11;
constexpr double kdeFontSize = 10;

using Groups = QMap<QString, QVariantMap>;

// How much larger than usual a font of that size is; 1 for a size that is none.
double fontFactor(const QString &size, double usualSize)
{
    const double points = size.toDouble();
    return points > 0 ? points / usualSize : 1;
}

} // namespace

DesktopAppearance::DesktopAppearance(QObject *parent)
    : QObject(parent)
{
    withSessionBus(this, [this](QDBusConnection bus) {
        if (bus.isConnected()) {
            bus.connect(portalService, portalPath, portalInterface, u"SettingChanged"_s, this,
                        SLOT(adopt(QString, QString, QDBusVariant)));
            askPortal();
        }
    });
}

template<typename Answer>
void DesktopAppearance::ask(const QDBusMessage &question, Answer answer)
{
    const auto *call =
        new QDBusPendingCallWatcher(QDBusConnection::sessionBus().asyncCall(question), this);
    connect(call, &QDBusPendingCallWatcher::finished, this,
            [answer](QDBusPendingCallWatcher *finished) {
                finished->deleteLater();
                answer(*finished);
            });
}

void DesktopAppearance::askPortal()
{
    auto question =
        QDBusMessage::createMethodCall(portalService, portalPath, portalInterface, u"ReadAll"_s);
    question << QStringList{freedesktopGroup, gnomeGroup, kdeGroup, kdeFontGroup};
    ask(question, [this](const QDBusPendingReply<> &reply) {
        if (reply.isError()) {
            askGtk();
            return;
        }
        const auto groups = qdbus_cast<Groups>(reply.reply().arguments().value(0));
        for (auto group = groups.cbegin(); group != groups.cend(); ++group) {
            for (auto entry = group->cbegin(); entry != group->cend(); ++entry) {
                adopt(group.key(), entry.key(), QDBusVariant(entry.value()));
            }
        }
    });
}

void DesktopAppearance::askGtk()
{
    auto question = QDBusMessage::createMethodCall(gtkInterface, u"/org/gtk/Settings"_s,
                                                   u"org.freedesktop.DBus.Properties"_s, u"Get"_s);
    question << gtkInterface << u"EnableAnimations"_s;
    question.setAutoStartService(false);
    ask(question, [this](const QDBusPendingReply<QDBusVariant> &reply) {
        if (reply.isValid()) {
            adopt(gnomeGroup, u"enable-animations"_s, reply.value());
        }
    });
}

void DesktopAppearance::adopt(const QString &group, const QString &key, const QDBusVariant &value)
{
    const QVariant setting = value.variant();
    if (group == gnomeGroup && key == "enable-animations"_L1) {
        m_motion = setting.toBool();
    } else if (group == kdeGroup && key == "AnimationDurationFactor"_L1) {
        m_motion = setting.toDouble() > 0;
    } else if (group == freedesktopGroup && key == "reduced-motion"_L1) {
        m_motion = setting.toUInt() != 1;
    } else if (group == gnomeGroup && key == "text-scaling-factor"_L1 && setting.toDouble() > 0) {
        m_textFactor = setting.toDouble();
    } else if (group == gnomeGroup && key == "font-name"_L1) { // as "Cantarell 11"
        m_fontFactor = fontFactor(setting.toString().section(u' ', -1), gnomeFontSize);
    } else if (group == kdeFontGroup && key == "font"_L1) { // as "Noto Sans,10,-1,5,50,0,0,0,0,0"
        m_fontFactor = fontFactor(setting.toString().section(u',', 1, 1), kdeFontSize);
    }
    showTextScale();
}

// On X11 the desktop also tells the factor as a resolution, by which Qt scales all of the panel.
void DesktopAppearance::showTextScale()
{
    const bool isX11 = QGuiApplication::platformName() == "xcb"_L1;
    const auto [least, most] = std::minmax({1.0, m_textFactor});
    const double scaledAlready = isX11 ? std::clamp(qGuiApp->devicePixelRatio(), least, most) : 1;
    m_textScale = std::clamp(m_textFactor / scaledAlready * m_fontFactor, 0.5, 4.0);
}

} // namespace ostrelle

#include "moc_DesktopAppearance.cpp"
