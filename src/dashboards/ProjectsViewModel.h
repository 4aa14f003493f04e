#pragma once

#include "dashboards/DashboardModel.h"
#include "dashboards/RecordListModel.h"
#include "gateway/NetworkHelpers.h"
#include "tracker/AgentStatus.h"
#include "tracker/ProjectTracker.h"

#include <memory>
#include <unordered_map>

namespace ostrelle
{

// One project as views have it.
struct ProjectRow {
    ProjectItem project;
    QString key; // tells it from all others, even from one with the same id

    const QString &identity() const { return key; }
    friend bool operator==(const ProjectRow &, const ProjectRow &) = default;
};

// The projects with their workstreams, the agents at work on them and what was finished last. Loads
// when it is made and when it is asked to; main thread only.
class ProjectsViewModel : public DashboardModel
{
    Q_OBJECT
    // The projects in file order. Roles: key (a text of its own for each), name, description,
    // status, progress (percent), workstreams (a model of its own: workstreamId, name, status,
    // progress, note), workstreamCount.
    Q_PROPERTY(QAbstractItemModel *projectList READ projectList CONSTANT)
    Q_PROPERTY(int projectCount READ projectCount NOTIFY projectsChanged)
    Q_PROPERTY(int healthyProjectCount READ healthyProjectCount NOTIFY projectsChanged)
    Q_PROPERTY(QString lastUpdatedText READ lastUpdatedText NOTIFY lastUpdatedTextChanged)
    Q_PROPERTY(QString statusFilePath READ statusFilePath CONSTANT)
    Q_PROPERTY(QString trackerFilePath READ trackerFilePath CONSTANT)

public:
    // Runs a program with arguments to its end and returns its output, or an empty text. Called on
    // background threads.
    using ProcessRunner = std::function<QString(const QString &program, const QStringList &args)>;

    explicit ProjectsViewModel(Settings settings,
                               ProcessRunner runProcess = &NetworkHelpers::runProcess,
                               std::chrono::milliseconds reloadDelay = std::chrono::seconds(30),
                               QObject *parent = nullptr);

    const QList<AgentStatusItem> &agents() const;          // by name
    const QList<AgentCompletionItem> &completions() const; // five at most
    const QList<ProjectItem> &projects() const;
    QAbstractItemModel *projectList(); // has no rows until it was asked for
    int projectCount() const { return static_cast<int>(projects().size()); }
    int healthyProjectCount() const;

    QString lastUpdatedText() const { return m_lastUpdatedText; }
    QString statusFilePath() const { return m_statusFilePath; }
    QString trackerFilePath() const { return m_trackerFilePath; }

    Q_INVOKABLE void load();

    // Asks the gateway to update the project tracker, and loads it half a minute later. Does
    // nothing without the gateway's tool or without its job for that.
    Q_INVOKABLE void triggerProjectSync();

    // Reads the agent status document, in the order of the document, or says what the user is told.
    // Background threads only.
    static std::expected<AgentStatusPayload, QString>
    loadStatusPayload(const QString &statusFilePath, const OstrelleConfig &config,
                      const Tokens &tokens);

Q_SIGNALS:
    void agentsChanged();
    void completionsChanged();
    void projectsChanged();
    void lastUpdatedTextChanged();

private:
    using WorkstreamList = RecordListModel<WorkstreamItem>;
    struct Load;

    static Load read(const QString &statusFilePath, const QString &trackerFilePath,
                     const Settings &settings);
    void publish(const std::shared_ptr<const Load> &load);
    void showProjects();
    QList<RecordListModel<ProjectRow>::Role> projectRoles();
    WorkstreamList *workstreamsOf(const ProjectRow &row);

    const Settings m_settings;
    const ProcessRunner m_runProcess;
    const std::chrono::milliseconds m_reloadDelay;
    const QString m_statusFilePath;
    const QString m_trackerFilePath;
    PassLimit m_syncs{4};
    std::shared_ptr<const Load> m_shown;
    bool m_isListed = false; // somebody has asked for the list
    // By project's key; of those whose workstreams were asked for.
    std::unordered_map<QString, std::unique_ptr<WorkstreamList>> m_workstreams;
    RecordListModel<ProjectRow> m_projectList;
    Q_OBJECT_BINDABLE_PROPERTY(ProjectsViewModel, QString, m_lastUpdatedText,
                               &ProjectsViewModel::lastUpdatedTextChanged)
};

} // namespace ostrelle
