#pragma once

#include "gateway/QuickChatVM.h"
#include "state/Models.h"
#include "ui/SettingsModels.h"

#include <QtQml/qqmlregistration.h>

namespace ostrelle
{

class AgentsTopologyViewModel;
class CronViewModel;
class ProjectsViewModel;

// Makes the models that live only as long as a view: each belongs to the view that asks for it.
// Main thread only.
class PanelModels : public QObject
{
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("made by the program")
    Q_PROPERTY(QString gatewayURL READ gatewayURL NOTIFY gatewayURLChanged)

public:
    explicit PanelModels(Models models, QObject *parent = nullptr);

    // The base URL of the configured gateway.
    QString gatewayURL() const;

    Q_INVOKABLE ostrelle::QuickChatVM *makeChat(QObject *view) const;
    Q_INVOKABLE ostrelle::AgentsTopologyViewModel *makeAgents(QObject *view) const;
    Q_INVOKABLE ostrelle::ProjectsViewModel *makeProjects(QObject *view) const;
    Q_INVOKABLE ostrelle::CronViewModel *makeCron(QObject *view) const;
    Q_INVOKABLE ostrelle::SettingsModels *makeSettings(QObject *view) const;

Q_SIGNALS:
    void gatewayURLChanged();

private:
    const Models m_models;
};

} // namespace ostrelle
