#include "dashboards/CronViewModel.h"

#include "core/OstrelleConfig.h"
#include "tracker/TrackerDocument.h"

namespace ostrelle
{

using namespace Qt::StringLiterals;

// What one load found, ready to be shown.
struct CronViewModel::Load {
    QList<CronJobItem> jobs = {};
    QString lastUpdatedText = {};
    QString errorMessage = {};
};

namespace
{

QList<RecordListModel<CronJobItem>::Role> jobRoles()
{
    return {
        {"key", [](const CronJobItem &job) { return job.id; }},
        {"name", [](const CronJobItem &job) { return job.name; }},
        {"schedule", [](const CronJobItem &job) { return job.schedule; }},
        {"status", [](const CronJobItem &job) { return job.status; }},
        {"lastRun", [](const CronJobItem &job) { return orUndefined(job.lastRun); }},
        {"nextRun", [](const CronJobItem &job) { return orUndefined(job.nextRun); }},
        {"payload", [](const CronJobItem &job) { return orUndefined(job.payload); }},
        {"isEnabled", [](const CronJobItem &job) { return job.enabled; }},
    };
}

} // namespace

CronViewModel::CronViewModel(QObject *parent)
    : DashboardModel(parent)
    , m_cronFilePath(cronFilePathOf(OstrelleConfig::load()))
    , m_jobList(jobRoles())
{
    load();
}

int CronViewModel::activeJobCount() const
{
    return static_cast<int>(std::ranges::count_if(jobs(), [](const CronJobItem &job) {
        return job.enabled && job.status.toLower() != "disabled"_L1;
    }));
}

void CronViewModel::load()
{
    setErrorMessage({});
    startLoad([path = m_cronFilePath] { return read(path); },
              [this](const auto &load) { publish(*load); });
}

CronViewModel::Load CronViewModel::read(const QString &cronFilePath)
{
    const auto document = obtainDocument(u"/cron"_s, cronFilePath);
    if (!document.text) {
        return {.errorMessage = FetchError::notReachable().description()};
    }
    const auto tracker = readCronTracker(*document.text);
    if (!tracker) {
        return {.errorMessage = document.isRemote ? remoteUnusableText()
                                                  : u"Cron data unreadable: "_s + tracker.error()};
    }
    return {.jobs = tracker->jobs, .lastUpdatedText = tracker->updated};
}

void CronViewModel::publish(const Load &load)
{
    if (jobs() != load.jobs) {
        m_jobList.setRows(load.jobs);
        Q_EMIT jobsChanged();
    }
    m_lastUpdatedText = load.lastUpdatedText;
    setErrorMessage(load.errorMessage);
}

} // namespace ostrelle
