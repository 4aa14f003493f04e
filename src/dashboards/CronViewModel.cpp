#include "dashboards/CronViewModel.h"

#include "settings/OstrelleConfig.h"
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

// What a job keeps from run to run.
QStringList nature(const CronJobItem &job)
{
    return {job.name, job.schedule, job.payload.value_or(QString())};
}

// Hands out the keys of the rows that are shown. A job without an id of its own comes with another
// one each time: it gets the key of a row of the same nature whose id is gone.
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
                m_byId.insert(row.job.id, row.key);
            } else {
                m_byNature[nature(row.job)].append(row.key);
            }
        }
    }

    QString take(const CronJobItem &job)
    {
        QString key = m_byId.take(job.id);
        const auto left = m_byNature.find(nature(job));
        if (key.isEmpty() && left != m_byNature.end() && !left->isEmpty()) {
            key = left->takeFirst();
        }
        return onlyOnce(key.isEmpty() ? job.id : key);
    }

private:
    // An id may stand in the file twice, or be the key of a row whose job has another one by now.
    QString onlyOnce(QString key)
    {
        while (m_given.contains(key)) {
            key += u'+';
        }
        m_given.insert(key);
        return key;
    }

    QSet<QString> m_given;
    QHash<QString, QString> m_byId;
    QHash<QStringList, QStringList> m_byNature;
};

QList<CronRow> keyed(const QList<CronJobItem> &jobs, const QList<CronRow> &shown)
{
    Keys keys(shown, jobs);
    QList<CronRow> rows;
    rows.reserve(jobs.size());
    for (const CronJobItem &job : jobs) {
        rows.append({.job = job, .key = keys.take(job)});
    }
    return rows;
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
        m_jobs = load.jobs;
        m_jobList.setRows(keyed(m_jobs, m_jobList.rows()));
        Q_EMIT jobsChanged();
    }
    m_lastUpdatedText = load.lastUpdatedText;
    setErrorMessage(load.errorMessage);
}

} // namespace ostrelle

#include "moc_CronViewModel.cpp"
