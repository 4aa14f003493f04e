#pragma once

#include "dashboards/DashboardModel.h"
#include "dashboards/RecordListModel.h"
#include "tracker/CronTracker.h"

namespace ostrelle
{

// One job as views have it.
struct CronRow {
    CronJobItem job;
    QString key; // stays the same from load to load, even for a job without an id of its own

    const QString &identity() const { return key; }
    friend bool operator==(const CronRow &, const CronRow &) = default;
};

// The gateway's scheduled jobs. Loads when it is made and when it is asked to; main thread only.
class CronViewModel : public DashboardModel
{
    Q_OBJECT
    // The jobs in file order. Roles: key, name, schedule, status, lastRun, nextRun,
    // payload (undefined when absent), isEnabled.
    Q_PROPERTY(QAbstractItemModel *jobList READ jobList CONSTANT)
    Q_PROPERTY(int jobCount READ jobCount NOTIFY jobsChanged)
    Q_PROPERTY(int activeJobCount READ activeJobCount NOTIFY jobsChanged)
    Q_PROPERTY(QString lastUpdatedText READ lastUpdatedText NOTIFY lastUpdatedTextChanged)
    Q_PROPERTY(QString cronFilePath READ cronFilePath CONSTANT)

public:
    explicit CronViewModel(Settings settings, QObject *parent = nullptr);

    const QList<CronJobItem> &jobs() const { return m_jobs; }
    QAbstractItemModel *jobList(); // has no rows until it was asked for
    int jobCount() const { return static_cast<int>(jobs().size()); }
    int activeJobCount() const;

    QString lastUpdatedText() const { return m_lastUpdatedText; }
    QString cronFilePath() const { return m_cronFilePath; }

    Q_INVOKABLE void load();

Q_SIGNALS:
    void jobsChanged();
    void lastUpdatedTextChanged();

private:
    struct Load;

    static Load read(const QString &cronFilePath, const Settings &settings);
    void publish(const Load &load);
    void showJobs();

    const Settings m_settings;
    const QString m_cronFilePath;
    QList<CronJobItem> m_jobs;
    bool m_isListed = false; // somebody has asked for the list
    RecordListModel<CronRow> m_jobList;
    Q_OBJECT_BINDABLE_PROPERTY(CronViewModel, QString, m_lastUpdatedText,
                               &CronViewModel::lastUpdatedTextChanged)
};

} // namespace ostrelle
