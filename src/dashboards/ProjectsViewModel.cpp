#include "dashboards/ProjectsViewModel.h"

#include "core/ExpandPath.h"
#include "core/NameOrder.h"
#include "core/WhenDone.h"
#include "dashboards/ProjectTrackerJob.h"
#include "settings/OstrelleConfig.h"
#include "tracker/TrackerDocument.h"

#include <QTimer>

namespace ostrelle
{

using namespace Qt::StringLiterals;

// What one load found, ready to be shown.
struct ProjectsViewModel::Load {
    QList<AgentStatusItem> agents;
    QList<AgentCompletionItem> completions;
    QList<ProjectItem> projects;
    QString lastUpdatedText;
    QString errorMessage; // the first problem

    void report(const QString &problem)
    {
        if (errorMessage.isEmpty()) {
            errorMessage = problem;
        }
    }
};

namespace
{

constexpr qsizetype shownCompletions = 5;

QList<AgentStatusItem> sortedByName(const QList<AgentStatusItem> &agents)
{
    const NameOrder order;
    return stablySorted(agents, [&](const AgentStatusItem &a, const AgentStatusItem &b) {
        return order.compare(a.name, b.name);
    });
}

QList<RecordListModel<WorkstreamItem>::Role> workstreamRoles()
{
    return {
        {"workstreamId", [](const WorkstreamItem &item) { return item.id; }},
        {"name", [](const WorkstreamItem &item) { return item.name; }},
        {"status", [](const WorkstreamItem &item) { return item.status; }},
        {"progress", [](const WorkstreamItem &item) { return item.progress; }},
        {"note", [](const WorkstreamItem &item) { return item.note.value_or(QString()); }},
    };
}

// The key is the id, with a number that tells projects with the same id apart.
QList<ProjectRow> keyed(const QList<ProjectItem> &projects)
{
    QHash<QString, int> seen;
    QList<ProjectRow> rows;
    rows.reserve(projects.size());
    for (const ProjectItem &project : projects) {
        const int occurrence = seen[project.identity()]++;
        rows.append(
            {.project = project, .key = QString::number(occurrence) + u' ' + project.identity()});
    }
    return rows;
}

} // namespace

ProjectsViewModel::ProjectsViewModel(Settings settings, ProcessRunner runProcess,
                                     std::chrono::milliseconds reloadDelay, QObject *parent)
    : DashboardModel(parent)
    , m_settings(std::move(settings))
    , m_runProcess(std::move(runProcess))
    , m_reloadDelay(reloadDelay)
    , m_statusFilePath(expandPath(m_settings.config->current().paths.statusFile))
    , m_trackerFilePath(expandPath(m_settings.config->current().paths.trackerFile))
    , m_shown(std::make_shared<const Load>())
    , m_projectList(projectRoles())
{
    load();
}

QList<RecordListModel<ProjectRow>::Role> ProjectsViewModel::projectRoles()
{
    using Row = ProjectRow;
    return {
        {"key", [](const Row &row) { return row.key; }},
        {"name", [](const Row &row) { return row.project.name; }},
        {"description", [](const Row &row) { return row.project.description; }},
        {"status", [](const Row &row) { return row.project.status; }},
        {"progress", [](const Row &row) { return row.project.progress; }},
        {"workstreams",
         [this](const Row &row) { return QVariant::fromValue<QObject *>(workstreamsOf(row)); }},
        {"workstreamCount", [](const Row &row) { return row.project.workstreams.size(); }},
    };
}

QAbstractItemModel *ProjectsViewModel::projectList()
{
    if (!std::exchange(m_isListed, true)) {
        showProjects();
    }
    return &m_projectList;
}

const QList<AgentStatusItem> &ProjectsViewModel::agents() const
{
    return m_shown->agents;
}

const QList<AgentCompletionItem> &ProjectsViewModel::completions() const
{
    return m_shown->completions;
}

const QList<ProjectItem> &ProjectsViewModel::projects() const
{
    return m_shown->projects;
}

int ProjectsViewModel::healthyProjectCount() const
{
    return static_cast<int>(std::ranges::count_if(projects(), [](const ProjectItem &project) {
        return project.status.toLower() == "green"_L1;
    }));
}

void ProjectsViewModel::load()
{
    startLoad([status = m_statusFilePath, tracker = m_trackerFilePath,
               settings = m_settings] { return read(status, tracker, settings); },
              [this](const auto &load) { publish(load); });
}

std::expected<AgentStatusPayload, QString>
ProjectsViewModel::loadStatusPayload(const QString &statusFilePath, const OstrelleConfig &config,
                                     const Tokens &tokens)
{
    TrackerDocument document = obtainDocument(u"/status"_s, statusFilePath, config, tokens);
    if (!document.isRemote && !document.text) {
        document.text = std::string(); // a missing file is read like an empty one
    }
    return readDocument(document, u"Status unreadable: "_s, readAgentStatus);
}

ProjectsViewModel::Load ProjectsViewModel::read(const QString &statusFilePath,
                                                const QString &trackerFilePath,
                                                const Settings &settings)
{
    Load load;
    const OstrelleConfig config = settings.config->snapshot();
    if (const auto status = loadStatusPayload(statusFilePath, config, *settings.tokens)) {
        load.agents = sortedByName(status->agents);
        load.completions =
            status->completions.first(std::min(status->completions.size(), shownCompletions));
    } else {
        load.report(status.error());
    }
    const auto document = obtainDocument(u"/projects"_s, trackerFilePath, config, *settings.tokens);
    const auto tracker = readDocument(document, u"Tracker unreadable: "_s, readProjectTracker);
    if (tracker) {
        load.projects = tracker->projects;
        load.lastUpdatedText = tracker->updated;
    } else {
        load.report(tracker.error());
    }
    return load;
}

void ProjectsViewModel::publish(const std::shared_ptr<const Load> &load)
{
    const auto before = std::exchange(m_shown, load);
    if (before->agents != load->agents) {
        Q_EMIT agentsChanged();
    }
    if (before->completions != load->completions) {
        Q_EMIT completionsChanged();
    }
    if (before->projects != load->projects) {
        if (m_isListed) {
            showProjects();
        }
        Q_EMIT projectsChanged();
    }
    m_lastUpdatedText = load->lastUpdatedText;
    setErrorMessage(load->errorMessage);
}

// A workstreams' model lives as long as its project, so that an open card keeps its rows.
ProjectsViewModel::WorkstreamList *ProjectsViewModel::workstreamsOf(const ProjectRow &row)
{
    auto &workstreams = m_workstreams[row.key];
    if (!workstreams) {
        workstreams = std::make_unique<WorkstreamList>(workstreamRoles(), this);
        workstreams->setRows(row.project.workstreams);
    }
    return workstreams.get();
}

void ProjectsViewModel::showProjects()
{
    const QList<ProjectRow> rows = keyed(projects());
    m_projectList.setRows(rows);
    QSet<QString> current;
    // Only now: whoever asks while rows move is given those of the project's old row.
    for (const ProjectRow &row : rows) {
        current.insert(row.key);
        if (const auto known = m_workstreams.find(row.key); known != m_workstreams.end()) {
            known->second->setRows(row.project.workstreams);
        }
    }
    std::erase_if(m_workstreams, [&](const auto &entry) { return !current.contains(entry.first); });
}

void ProjectsViewModel::triggerProjectSync()
{
    const PassLimit::Pass pass = m_syncs.begin();
    if (!pass) {
        return;
    }
    const auto runJob = [run = m_runProcess, pass] { return runProjectTrackerJob(run); };
    whenDone(userInitiatedPool().run(runJob), this, [this](const auto &started) {
        if (started) {
            QTimer::singleShot(m_reloadDelay, this, &ProjectsViewModel::load);
        }
    });
}

} // namespace ostrelle

#include "moc_ProjectsViewModel.cpp"
