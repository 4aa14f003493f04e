#include "ui/Panel.h"

#include <QQmlExtensionPlugin>

Q_IMPORT_QML_PLUGIN(OstrellePlugin)

namespace ostrelle
{

class PanelPlugin : public QObject, public PanelModule
{
    Q_OBJECT
    Q_PLUGIN_METADATA(IID "ai.duskrell.ostrelle.PanelModule")
    Q_INTERFACES(ostrelle::PanelModule)

public:
    std::unique_ptr<PanelWindow> makePanel(const Models &models, PanelEvents events) override
    {
        // Without a graphics processor: it is up in a third of the time and half of the memory.
        // Before the first window, which settles it.
        QQuickWindow::setGraphicsApi(QSGRendererInterface::Software);
        return std::make_unique<Panel>(models, std::move(events));
    }
};

} // namespace ostrelle

#include "PanelPlugin.moc"
