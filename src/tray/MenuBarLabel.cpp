#include "tray/MenuBarLabel.h"

#include "gateway/GatewayViewModel.h"
#include "state/Quit.h"
#include "state/StateInWords.h"
#include "statusserver/StatusServer.h"
#include "tray/Pearl.h"
#include "tray/PearlIcon.h"
#include "voice/VoiceViewModel.h"

#include <QMenu>
#include <QSystemTrayIcon>

namespace ostrelle
{

using namespace Qt::StringLiterals;

MenuBarLabel::MenuBarLabel(GatewayViewModel *gatewayVM, VoiceViewModel *voiceVM,
                           StatusServer *statusServer, QObject *parent)
    : QObject(parent)
    , m_gatewayVM(gatewayVM)
    , m_voiceVM(voiceVM)
    , m_statusServer(statusServer)
{
}

MenuBarLabel::~MenuBarLabel() = default;

void MenuBarLabel::show()
{
    if (isShown()) {
        return;
    }
    makeMenu();
    m_icon = std::make_unique<QSystemTrayIcon>();
    m_icon->setContextMenu(m_menu.get());
    connect(m_icon.get(), &QSystemTrayIcon::activated, this,
            [this](QSystemTrayIcon::ActivationReason reason) {
                if (reason == QSystemTrayIcon::Trigger) {
                    Q_EMIT clicked();
                } else if (reason == QSystemTrayIcon::DoubleClick) {
                    Q_EMIT doubleClicked();
                }
            });
    const auto follow = [this] { update(); }; // as long as the icon is there
    connect(m_gatewayVM, &GatewayViewModel::gatewayOnlineChanged, m_icon.get(), follow);
    for (const auto changed :
         {&VoiceViewModel::voiceRunningChanged, &VoiceViewModel::stateChanged,
          &VoiceViewModel::stateLabelChanged, &VoiceViewModel::isMutedChanged}) {
        connect(m_voiceVM, changed, m_icon.get(), follow);
    }
    connect(m_statusServer, &StatusServer::portTakenChanged, m_icon.get(), follow);
    update();
    m_icon->show();
}

void MenuBarLabel::hide()
{
    m_icon.reset();
    m_menu.reset();
    m_shownColor = {};
}

QRect MenuBarLabel::geometry() const
{
    return m_icon ? m_icon->geometry() : QRect();
}

void MenuBarLabel::makeMenu()
{
    m_menu = std::make_unique<QMenu>();
    connect(m_menu.get(), &QMenu::aboutToShow, this, &MenuBarLabel::menuOpens);
    m_menu->addAction(u"Open Ostrelle"_s, this, &MenuBarLabel::openChosen);
    m_menu->addSeparator();
    m_stateLine = m_menu->addAction(QString());
    m_stateLine->setEnabled(false);
    m_mute = m_menu->addAction(QString(), m_voiceVM, &VoiceViewModel::toggleMute);
    m_menu->addSeparator();
    m_menu->addAction(u"Quit"_s, &quitProgram);
}

void MenuBarLabel::update()
{
    const QColor color =
        pearlColor(m_gatewayVM->gatewayOnline(), m_voiceVM->voiceRunning(), m_voiceVM->state());
    if (color != m_shownColor) {
        m_shownColor = color;
        m_icon->setIcon(pearlIcon(color));
    }
    const QString words = stateInWords(*m_gatewayVM, *m_voiceVM, *m_statusServer);
    if (const QString line = QString(words).replace(u'&', u"&&"_s); line != m_stateLine->text()) {
        m_stateLine->setText(line);
        m_icon->setToolTip(u"Ostrelle\n"_s + words);
    }
    m_mute->setText(m_voiceVM->isMuted() ? u"Unmute"_s : u"Mute"_s);
    m_mute->setEnabled(m_voiceVM->voiceRunning());
}

} // namespace ostrelle

#include "moc_MenuBarLabel.cpp"
