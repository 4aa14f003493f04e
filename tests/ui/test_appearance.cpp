#include "support/BusStandIn.h"
#include "support/PrivateSession.h"
#include "support/Rows.h"
#include "support/ScratchHome.h"
#include "ui/DesktopAppearance.h"

#include <QDBusMetaType>
#include <QDBusVariant>
#include <QTest>

using namespace ostrelle;
using namespace Qt::StringLiterals;
using Groups = QMap<QString, QVariantMap>;

namespace
{

const QString gnome = u"org.gnome.desktop.interface"_s;
const QString portalService = u"org.freedesktop.portal.Desktop"_s;

} // namespace

class TestAppearance : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { qDBusRegisterMetaType<Groups>(); }

    void isAsTheDesktopSays_data()
    {
        const Rows<QString, QVariant, bool, double> row("service", "answer", "motion", "scale");
        const auto portal = [&](const char *name, Groups groups, bool motion, double scale) {
            groups[u"org.freedesktop.appearance"_s].insert(u"color-scheme"_s, 1U); // told as well
            groups[gnome].insert(u"gtk-timeout-initial"_s, 200);
            groups[u"org.kde.kdeglobals.KDE"_s].insert(u"widgetStyle"_s, u"Breeze"_s);
            groups[u"org.kde.kdeglobals.General"_s].insert(u"menuFont"_s, u"Noto Sans,8"_s);
            row(name, portalService, QVariant::fromValue(groups), motion, scale);
        };
        portal("GNOME with small text", {{gnome, {{u"text-scaling-factor"_s, 0.75}}}}, true, 0.75);
        portal(
            "GNOME with a large font and no animations",
            {{gnome, {{u"enable-animations"_s, false}, {u"font-name"_s, u"Noto Sans Bold 22"_s}}}},
            false, 2);
        portal(
            "Plasma",
            {{u"org.kde.kdeglobals.General"_s, {{u"font"_s, u"Noto Sans,15,-1,5,50,0,0,0,0,0"_s}}},
             {u"org.kde.kdeglobals.KDE"_s, {{u"AnimationDurationFactor"_s, u"0"_s}}}},
            false, 1.5);
        portal("values that are none",
               {{gnome,
                 {{u"enable-animations"_s, false},
                  {u"font-name"_s, u"Sans"_s},
                  {u"text-scaling-factor"_s, 0.0}}}},
               false, 1);
        portal("beyond reason, with quick animations",
               {{gnome, {{u"text-scaling-factor"_s, 40.0}}},
                {u"org.kde.kdeglobals.KDE"_s, {{u"AnimationDurationFactor"_s, u"0.5"_s}}}},
               true, 4);
        row("GTK alone", u"org.gtk.Settings"_s, QVariant::fromValue(QDBusVariant(false)), false, 1);
    }

    void isAsTheDesktopSays()
    {
        QFETCH(QString, service);
        QFETCH(QVariant, answer);
        QFETCH(bool, motion);
        QFETCH(double, scale);
        const BusStandIn desktop(service, u"/org"_s, answer);
        const DesktopAppearance appearance;
        QTRY_COMPARE(std::pair(appearance.motion(), appearance.textScale()),
                     std::pair(motion, scale));
    }

    void followsTheDesktop()
    {
        const BusStandIn desktop(portalService, u"/org"_s, QVariant::fromValue(Groups()));
        const DesktopAppearance appearance;
        QTRY_VERIFY(desktop.wasAsked());
        for (const bool reduced : {true, false}) {
            auto change = QDBusMessage::createSignal(u"/org/freedesktop/portal/desktop"_s,
                                                     u"org.freedesktop.portal.Settings"_s,
                                                     u"SettingChanged"_s);
            desktop.send(change << u"org.freedesktop.appearance"_s << u"reduced-motion"_s
                                << QVariant::fromValue(QDBusVariant(reduced ? 1U : 0U)));
            QTRY_COMPARE(appearance.motion(), !reduced);
        }
    }

private:
    const ScratchHome m_home;
    const PrivateSession m_session; // for all: a process knows one bus address
};

QTEST_GUILESS_MAIN(TestAppearance)
#include "test_appearance.moc"
