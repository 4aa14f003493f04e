#include "dashboards/AgentsTopologyViewModel.h"
#include "dashboards/CronViewModel.h"
#include "dashboards/DashboardHome.h"
#include "dashboards/ProjectTrackerJob.h"
#include "dashboards/ProjectsViewModel.h"
#include "gateway/StandInGateway.h"
#include "platform/Files.h"
#include "support/Rows.h"

#include <QAbstractItemModelTester>
#include <QSignalSpy>
#include <QTest>

#include <array>
#include <sys/inotify.h>
#include <unistd.h>

using namespace ostrelle;
using namespace std::chrono_literals;
using namespace Qt::StringLiterals;

namespace
{

const QString notReachable =
    u"Gateway not reachable — check connection and ensure Duskrell is running on the remote device."_s;
const QString remoteUnusable = u"Remote gateway not reachable — check connection or token."_s;

const auto noProcess = [](const QString &, const QStringList &) { return QString(); };

QByteArray project(const QByteArray &id, const QByteArray &status, int workstreamProgress = 0)
{
    return R"({"id":")" + id + R"(","name":"n","description":"d","progress":5,"status":")" +
           status + R"(","workstreams":[{"id":"w","name":"n","status":"s","progress":)" +
           QByteArray::number(workstreamProgress) + "}]}";
}

QByteArray tracker(const QByteArray &projects)
{
    return R"({"agents":{"a":{}},"version":1,"updated":"today","projects":[)" + projects + "]}";
}

QByteArray cron(const QByteArray &jobs)
{
    return R"({"version":1,"updated":"now","jobs":[)" + jobs + "]}";
}

int role(const QAbstractItemModel *model, const QByteArray &name)
{
    return model->roleNames().key(name);
}

} // namespace

class TestLists : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void projects()
    {
        const DashboardHome home;
        home.write(u"status"_s,
                   R"({"agents":{"1":{"name":"beta"},"2":{"name":"Alpha"},"3":{"name":"alpha"}},)"
                   R"("completions":[{"ts":"1"},{"ts":"2"},{"ts":"3"},{"ts":"4"},{"ts":"5"},{}]})");
        home.write(u"tracker"_s, tracker(project("b", "Green") + "," + project("a", "green") + "," +
                                         project("c", "red")));
        ProjectsViewModel model(home.settings(), noProcess);
        const QSignalSpy agentsChanged(&model, &ProjectsViewModel::agentsChanged);
        const QSignalSpy completionsChanged(&model, &ProjectsViewModel::completionsChanged);
        QTRY_VERIFY(!model.isLoading());
        QCOMPARE(agentsChanged.count() + completionsChanged.count(), 2);
        QCOMPARE(model.errorMessage(), QString());
        QStringList ids;
        for (const AgentStatusItem &agent : model.agents()) {
            ids.append(agent.id);
        }
        QCOMPARE(ids, (QStringList{u"2"_s, u"3"_s, u"1"_s}));
        QCOMPARE(model.completions().size(), 5);
        QCOMPARE(model.completions().at(0).ts, u"1"_s);
        QCOMPARE(model.projects().at(0).id, u"b"_s);
        QCOMPARE(model.healthyProjectCount(), 2);
        QCOMPARE(model.lastUpdatedText(), u"today"_s);
    }

    void projectProblems_data()
    {
        const Rows<QByteArray, QByteArray, QString, int> row("status", "file", "error", "projects");
        row("no tracker", "{}", {}, notReachable, 0);
        row("no description", "{}", tracker(project("a", "b").replace("description", "x")),
            u"Tracker unreadable: projects[0].description: missing"_s, 0);
        row("no status, no tracker", {}, {}, u"Status unreadable: Empty: no JSON found"_s, 0);
        row("status is not JSON, tracker fine", "{", tracker(project("a", "b")),
            u"Status unreadable: JSON document ended early in the middle of an object or array."_s,
            1);
    }

    void projectProblems()
    {
        QFETCH(QByteArray, status);
        QFETCH(QByteArray, file);
        const DashboardHome home;
        writeUnlessNull(home, u"status"_s, status);
        writeUnlessNull(home, u"tracker"_s, file);
        ProjectsViewModel model(home.settings(), noProcess);
        QTRY_VERIFY(!model.isLoading());
        QTEST(model.errorMessage(), "error");
        QTEST(model.projectCount(), "projects");
    }

    void anOpenProjectKeepsItsRows()
    {
        const DashboardHome home;
        home.write(u"status"_s, "{}");
        home.write(u"tracker"_s, tracker(project("a", "red") + "," + project("b", "red")));
        ProjectsViewModel model(home.settings(), noProcess);
        QTRY_COMPARE(model.projects().size(), 2);
        QAbstractItemModel *list = model.projectList();
        const QAbstractItemModelTester tester(list);
        const auto workstreamsOf = [&](int row) {
            return qobject_cast<QAbstractItemModel *>(
                list->data(list->index(row, 0), role(list, "workstreams")).value<QObject *>());
        };
        QPointer<QAbstractItemModel> ofA = workstreamsOf(0);
        QSignalSpy projectsChanged(&model, &ProjectsViewModel::projectsChanged);
        QSignalSpy insideA(ofA, &QAbstractItemModel::dataChanged);
        load(model);
        QCOMPARE(projectsChanged.count(), 0);

        const auto askAtOnce = [&] { workstreamsOf(0); };
        connect(list, &QAbstractItemModel::rowsMoved, this, askAtOnce);
        home.write(u"tracker"_s, tracker(project("b", "red", 8) + "," + project("a", "red", 7)));
        load(model);
        QCOMPARE(projectsChanged.count(), 1);
        QCOMPARE(insideA.count(), 1);
        QCOMPARE(workstreamsOf(1), ofA.data());
        QCOMPARE(ofA->data(ofA->index(0, 0), role(ofA, "progress")).toInt(), 7);
        const QAbstractItemModel *ofB = workstreamsOf(0);
        QCOMPARE(ofB->data(ofB->index(0, 0), role(ofB, "progress")).toInt(), 8);

        home.write(u"tracker"_s, tracker(project("b", "red") + "," + project("b", "red", 9)));
        load(model);
        QVERIFY(ofA.isNull());
        const QAbstractItemModel *second = workstreamsOf(1); // of two with the same id
        QVERIFY(second != workstreamsOf(0));
        QCOMPARE(second->data(second->index(0, 0), role(second, "progress")).toInt(), 9);
    }

    void cronJobs_data()
    {
        const Rows<QByteArray, int, int, QString> row("file", "jobs", "active", "error");
        row("jobs",
            cron(R"({"id":"1","status":"idle"},{"id":"2","status":"Disabled"},)"
                 R"({"id":"3","status":"green","enabled":false})"),
            3, 1, {});
        row("what the tool printed", "no jobs\n", 0, 0,
            u"Cron data unreadable: Problem while parsing an atom starting with the letter 'n'"_s);
        row("missing", {}, 0, 0, notReachable);
    }

    void cronJobs()
    {
        QFETCH(QByteArray, file);
        const DashboardHome home;
        writeUnlessNull(home, u"cron"_s, file);
        CronViewModel model(home.settings());
        QTRY_VERIFY(!model.isLoading());
        const QAbstractItemModelTester tester(model.jobList());
        writeUnlessNull(home, u"cron"_s, QByteArray(file).replace("idle", "blue")); // the same ids
        model.load();
        QTRY_VERIFY(!model.isLoading());
        QTEST(model.jobList()->rowCount(), "jobs");
        QTEST(model.activeJobCount(), "active");
        QCOMPARE(model.lastUpdatedText(), model.jobCount() > 0 ? u"now"_s : QString());
        QTEST(model.errorMessage(), "error");
    }

    void anotherMachine_data()
    {
        const Rows<QByteArray, QByteArray, QString, int> row("projects", "cronJobs", "error",
                                                             "count");
        const QByteArray empty = StandInGateway::response(200, "{}");
        row("documents", StandInGateway::response(200, tracker(project("a", "b"))),
            StandInGateway::response(200, cron("{}")), {}, 1);
        row("refused token", StandInGateway::response(401), StandInGateway::response(403),
            remoteUnusable, 0);
        row("no documents", empty, empty, remoteUnusable, 0);
    }

    void anotherMachine()
    {
        QFETCH(QByteArray, projects);
        QFETCH(QByteArray, cronJobs);
        const DashboardHome home;
        // An address of this machine that is not known as such.
        home.useGateway(u"http://127.94.18.7:18789"_s);
        StandInGateway machine(QHostAddress(u"127.94.18.7"_s), 18794);
        machine.answer("/status", projects);
        machine.answer("/projects", projects);
        machine.answer("/cron", cronJobs);
        const Settings settings = home.settings();
        const Descriptor watch(::inotify_init1(IN_NONBLOCK | IN_CLOEXEC));
        QVERIFY(::inotify_add_watch(watch.get(), qPrintable(settings.config->file()),
                                    IN_OPEN | IN_CLOSE) >= 0);
        ProjectsViewModel projectsModel(settings, noProcess);
        QTRY_VERIFY(!projectsModel.isLoading());
        // However many documents a load reads, it opens the configuration once, and closes it.
        std::array<inotify_event, 10> events{};
        QCOMPARE(::read(watch.get(), events.data(), sizeof events),
                 ssize_t{2 * sizeof(inotify_event)});
        CronViewModel cronModel(settings);
        QTRY_VERIFY(!cronModel.isLoading());
        AgentsTopologyViewModel agentsModel(settings);
        QTRY_VERIFY(!agentsModel.isLoading());
        QTEST(projectsModel.errorMessage(), "error");
        QTEST(cronModel.errorMessage(), "error");
        QTEST(static_cast<int>(agentsModel.childNodes().size()), "count");
        QTEST(projectsModel.projectCount(), "count");
        QTEST(cronModel.jobCount(), "count");
    }

    void runsTheTrackerJob_data()
    {
        const Rows<QString, QString, QString> row("found", "list", "lastCommand");
        const QString tool = u" /bin/true\n"_s;
        const QString listing = u"/bin/true cron list --json --all"_s;
        const QString job = u"{\"name\":\"OSTRELLE Project Tracker\",\"id\":%1}"_s;
        row("no tool", u"\n"_s, u""_s, u"/usr/bin/env which duskrell"_s);
        row("where npm puts it", u"\n"_s, u""_s,
            u"~/.npm-global/bin/duskrell cron list --json --all"_s);
        row("no list", tool, u"error"_s, listing);
        row("another job", tool, u"{\"jobs\":[{\"name\":\"OSTRELLE project tracker\"}]}"_s,
            listing);
        row("no id", tool, u"{\"jobs\":[%1]}"_s.arg(job.arg(7)), listing);
        row("an option for an id", tool, u"{\"jobs\":[%1]}"_s.arg(job.arg(u"\"--all\""_s)),
            listing);
        row("the first of two", tool,
            u"{\"jobs\":[{},%1,%2]}"_s.arg(job.arg(u"\"a\""_s), job.arg(u"\"b\""_s)),
            u"/bin/true cron run a"_s);
    }

    void runsTheTrackerJob()
    {
        QFETCH(QString, found);
        QFETCH(QString, list);
        QFETCH(QString, lastCommand);
        const ScratchHome home;
        if (lastCommand.startsWith(u'~')) {
            home.writeScript(u".npm-global/bin/duskrell"_s, {});
        }
        QStringList commands;
        const auto runs =
            runProjectTrackerJob([&](const QString &program, const QStringList &args) {
                commands.append((QStringList(program) + args).join(u' '));
                return args.contains(u"which"_s) ? found : list;
            });
        QCOMPARE(commands.last().replace(home.path(), u"~"_s), lastCommand);
        QCOMPARE(runs.has_value(), lastCommand.contains(u"run"_s));
    }

    void loadsAgainAfterTheTrackerJob()
    {
        const DashboardHome home;
        ProjectsViewModel model(
            home.settings(),
            [](const QString &, const QStringList &args) {
                return args.contains(u"which"_s)
                           ? u"/bin/true"_s
                           : u"{\"jobs\":[{\"name\":\"OSTRELLE Project Tracker\",\"id\":\"1\"}]}"_s;
            },
            1ms);
        QTRY_VERIFY(!model.isLoading());
        QSignalSpy loading(&model, &ProjectsViewModel::isLoadingChanged);
        model.triggerProjectSync();
        QTRY_COMPARE(loading.count(), 2);
    }

private:
    static void writeUnlessNull(const ScratchHome &home, const QString &file,
                                const QByteArray &content)
    {
        if (!content.isNull()) {
            home.write(file, content);
        }
    }

    static void load(ProjectsViewModel &model)
    {
        model.load();
        QTRY_VERIFY(!model.isLoading());
    }
};

QTEST_GUILESS_MAIN(TestLists)
#include "test_lists.moc"
