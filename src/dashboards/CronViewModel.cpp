#include "dashboards/CronViewModel.h"

#include "settings/OstrelleConfig.h"
#include "tracker/TrackerDocument.h"

#include <algorithm>

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

QList<RecordListModel<CronRow>::Role> jobRoles()
{
    using Row = CronRow;
    return {
        {"key", [](const Row &row) { return row.key; }},
        {"name", [](const Row &row) { return row.job.name; }},
        {"schedule", [](const Row &row) { return row.job.schedule; }},
        {"status", [](const Row &row) { return row.job.status; }},
        {"lastRun", [](const Row &row) { return orUndefined(row.job.lastRun); }},
        {"nextRun", [](const Row &row) { return orUndefined(row.job.nextRun); }},
        {"payload", [](const Row &row) { return orUndefined(row.job.payload); }},
        {"isEnabled", [](const Row &row) { return row.job.enabled; }},
    };
}

// What stays the same in a job from run to run.
QStringList nature(const CronJobItem &job)
{
    return {job.name, job.schedule, job.payload.value_or(QString())};
}

// Gives each job the key of its row, the old one where the job was shown before. A job without an
// id of its own gets another random id with every load: it takes over the key of a row of the same
// nature whose id is gone.
class Keys
{
public:
    Keys(const QList<CronRow> &shown, const QList<CronJobItem> &jobs)
    {
        QSet<QString> ids;
        for (const CronJobItem &job : jobs) {
            ids.insert(job.id);
        }
        for (const CronRow &row : shown) {
            if (ids.contains(row.job.id)) {
                m_byId[row.job.id].append(row.key);
            } else {
                m_byNature[nature(row.job)].append(row.key);
            }
        }
    }

    QString take(const CronJobItem &job)
    {
        if (QStringList &keys = m_byId[job.id]; !keys.isEmpty()) {
            return onlyOnce(keys.takeFirst());
        }
        if (m_byNature.isEmpty()) {
            return onlyOnce(job.id); // to tell the nature of thousands of jobs takes long
        }
        QStringList &alike = m_byNature[nature(job)];
        return onlyOnce(alike.isEmpty() ? job.id : alike.takeFirst());
    }

private:
    // An id may occur twice in the file, or be the key of a row whose job has another id by now.
    QString onlyOnce(QString key)
    {
        while (m_given.contains(key)) {
            key += u'+';
        }
        m_given.insert(key);
        return key;
    }

    QSet<QString> m_given;
    QHash<QString, QStringList> m_byId; // several when the id occurs more than once
    QHash<QStringList, QStringList> m_byNature;
};

QList<CronRow> keyed(const QList<CronJobItem> &jobs, const QList<CronRow> &shown)
{
    QList<CronRow> rows;
    rows.reserve(jobs.size());
    const auto idOf = [](const CronRow &row) { return row.job.id; };
    if (std::ranges::equal(jobs, shown, {}, &CronJobItem::id, idOf)) {
        for (qsizetype i = 0; i < jobs.size(); ++i) { // the same keys; looking for them takes long
            rows.append({.job = jobs[i], .key = shown[i].key});
        }
        return rows;
    }
    Keys keys(shown, jobs);
    for (const CronJobItem &job : jobs) {
        rows.append({.job = job, .key = keys.take(job)});
    }
    return rows;
}

} // namespace

CronViewModel::CronViewModel(Settings settings, QObject *parent)
    : DashboardModel(parent)
    , m_settings(std::move(settings))
    , m_cronFilePath(cronFilePathOf(m_settings.config->current()))
    , m_jobList(jobRoles())
{
    load();
}

QAbstractItemModel *CronViewModel::jobList()
{
    if (!std::exchange(m_isListed, true)) {
        showJobs();
    }
    return &m_jobList;
}

int CronViewModel::activeJobCount() const
{
    return static_cast<int>(std::ranges::count_if(jobs(), [](const CronJobItem &job) {
        return job.enabled && job.status.toLower() != "disabled"_L1;
    }));
}

void CronViewModel::load()
{
    startLoad([path = m_cronFilePath, settings = m_settings] { return read(path, settings); },
              [this](const auto &load) { publish(*load); });
}

CronViewModel::Load CronViewModel::read(const QString &cronFilePath, const Settings &settings)
{
    const auto document =
        obtainDocument(u"/cron"_s, cronFilePath, settings.config->snapshot(), *settings.tokens);
    const auto tracker = readDocument(document, u"Cron data unreadable: "_s, readCronTracker);
    if (!tracker) {
        return {.errorMessage = tracker.error()};
    }
    return {.jobs = tracker->jobs, .lastUpdatedText = tracker->updated};
}

void CronViewModel::publish(const Load &load)
{
    if (jobs() != load.jobs) {
        m_jobs = load.jobs;
        if (m_isListed) {
            showJobs();
        }
        Q_EMIT jobsChanged();
    }
    m_lastUpdatedText = load.lastUpdatedText;
    setErrorMessage(load.errorMessage);
}

void CronViewModel::showJobs()
{
    m_jobList.setRows(keyed(m_jobs, m_jobList.rows()));
}

} // namespace ostrelle

#include "moc_CronViewModel.cpp"
