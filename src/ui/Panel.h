#pragma once

#include "tray/PanelWindow.h"
#include "ui/DesktopAppearance.h"
#include "ui/PanelModels.h"

#include <QQuickView>
#include <QSize>
#include <QTimer>

#include <chrono>

namespace ostrelle
{

// The panel's window with its engine. Nothing is drawn while it is closed, and when it has been for
// a while, what the selected tab holds is let go.
class Panel : public QObject, public PanelWindow
{
    Q_OBJECT

public:
    Panel(const Models &models, PanelEvents events,
          std::chrono::milliseconds keptAfterClosing = std::chrono::minutes(2));
    ~Panel() override;

    void open(const std::optional<QRect> &place) override;
    void close() override { m_view.hide(); }
    bool isOpen() const override { return m_view.isVisible(); }

    QQuickView &view() { return m_view; }

private:
    void load(const Models &models);
    void beOrdinary();
    void beBesideIcon(const QRect &place);
    void beTranslucent(bool translucent);
    void beFramed(bool framed);
    void setFixedSize(QSize size);
    QSize ordinarySize() const;
    void followActivity();
    void closeUnlessFocusReturned();
    void closeForLostFocus();
    void followVisibility();
    void letGo();
    void showAppearance();

    const PanelEvents m_events;
    PanelModels m_models;
    DesktopAppearance m_appearance;
    QTimer m_patience;
    QQuickView m_view;
    bool m_isBesideIcon = false;
    bool m_hadFocus = false;        // since it was opened
    bool m_hadEarlierFocus = false; // or so the toolkit thought when it was opened
    QTimer m_focusReturns;          // or does not, and the panel closes
};

} // namespace ostrelle
