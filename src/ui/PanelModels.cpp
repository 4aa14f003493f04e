#include "ui/PanelModels.h"

#include "dashboards/AgentsTopologyViewModel.h"
#include "dashboards/CronViewModel.h"
#include "dashboards/ProjectsViewModel.h"

#include <utility>

namespace ostrelle
{

namespace
{

template<typename Model>
Model *ownedBy(QObject *view, Model *model)
{
    model->setParent(view);
    return model;
}

} // namespace

PanelModels::PanelModels(Models models, QObject *parent)
    : QObject(parent)
    , m_models(std::move(models))
{
    connect(m_models.settings.config.get(), &ConfigStore::changed, this,
            &PanelModels::gatewayURLChanged);
}

QString PanelModels::gatewayURL() const
{
    return m_models.settings.config->current().gateway.url;
}

QuickChatVM *PanelModels::makeChat(QObject *view) const
{
    return ownedBy(view, new QuickChatVM(m_models.settings.tokens));
}

AgentsTopologyViewModel *PanelModels::makeAgents(QObject *view) const
{
    return ownedBy(view, new AgentsTopologyViewModel(m_models.settings));
}

ProjectsViewModel *PanelModels::makeProjects(QObject *view) const
{
    return ownedBy(view, new ProjectsViewModel(m_models.settings));
}

CronViewModel *PanelModels::makeCron(QObject *view) const
{
    return ownedBy(view, new CronViewModel(m_models.settings));
}

SettingsModels *PanelModels::makeSettings(QObject *view) const
{
    return ownedBy(view, new SettingsModels(m_models));
}

} // namespace ostrelle

#include "moc_PanelModels.cpp"
