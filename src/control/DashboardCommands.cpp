#include "control/ControlCommands.h"
#include "control/OnceLoaded.h"
#include "dashboards/AgentsTopologyViewModel.h"
#include "dashboards/CronViewModel.h"
#include "dashboards/ProjectTrackerJob.h"
#include "dashboards/ProjectsViewModel.h"
#include "state/StatusWords.h"
#include "tracker/RemoteDataSource.h"

namespace ostrelle::command
{

using namespace Qt::StringLiterals;

namespace
{

void insertIfPresent(QJsonObject &object, QLatin1StringView name,
                     const std::optional<QString> &text)
{
    if (text && !text->isEmpty()) {
        object.insert(name, *text);
    }
}

QJsonObject toJson(const AgentNode &agent, const AgentAppearanceStore &appearances)
{
    QJsonObject object{{"id"_L1, agent.id},
                       {"name"_L1, appearances.name(agent.id, agent.name)},
                       {"emoji"_L1, appearances.emoji(agent.id, agent.defaultEmoji())},
                       {"status"_L1, agent.status},
                       {"color"_L1, StatusWords::colorName(agent.status)}};
    insertIfPresent(object, "detail"_L1, agent.detail);
    insertIfPresent(object, "model"_L1, agent.model);
    insertIfPresent(object, "progress"_L1, agent.progressText);
    insertIfPresent(object, "parent"_L1, agent.parentId);
    return object;
}

QJsonObject toJson(const WorkstreamItem &item)
{
    QJsonObject object{{"name"_L1, item.name},
                       {"status"_L1, item.status},
                       {"color"_L1, StatusWords::colorName(item.status)},
                       {"progress"_L1, item.progress}};
    insertIfPresent(object, "note"_L1, item.note);
    return object;
}

QJsonObject toJson(const ProjectItem &project)
{
    QJsonArray workstreams;
    for (const WorkstreamItem &item : project.workstreams) {
        workstreams.append(toJson(item));
    }
    return {{"name"_L1, project.name},         {"description"_L1, project.description},
            {"status"_L1, project.status},     {"color"_L1, StatusWords::colorName(project.status)},
            {"progress"_L1, project.progress}, {"workstreams"_L1, workstreams}};
}

QJsonObject toJson(const CronJobItem &job)
{
    const Light light = StatusWords::job(job.enabled, job.status);
    QJsonObject object{
        {"id"_L1, job.id},           {"name"_L1, job.name},     {"schedule"_L1, job.schedule},
        {"enabled"_L1, job.enabled}, {"status"_L1, light.word}, {"color"_L1, light.color}};
    insertIfPresent(object, "lastRun"_L1, job.lastRun);
    insertIfPresent(object, "nextRun"_L1, job.nextRun);
    insertIfPresent(object, "payload"_L1, job.payload);
    return object;
}

template<typename Items>
QJsonArray listOf(const Items &items)
{
    QJsonArray array;
    for (const auto &item : items) {
        array.append(toJson(item));
    }
    return array;
}

// What puts the data together from copies of what the model has loaded; on any thread.
auto dataMaker(const AgentsTopologyViewModel &model)
{
    return [main = model.mainNode(), children = model.childNodes(),
            appearances = model.appearances()] {
        QJsonArray agents;
        if (main) {
            agents.append(toJson(*main, appearances));
        }
        for (const AgentNode &agent : children) {
            agents.append(toJson(agent, appearances));
        }
        return QJsonObject{{"agents"_L1, agents}};
    };
}

auto dataMaker(const ProjectsViewModel &model)
{
    return [projects = model.projects(), healthy = model.healthyProjectCount(),
            updated = model.lastUpdatedText()] {
        return QJsonObject{
            {"projects"_L1, listOf(projects)}, {"healthy"_L1, healthy}, {"updated"_L1, updated}};
    };
}

auto dataMaker(const CronViewModel &model)
{
    return
        [jobs = model.jobs(), active = model.activeJobCount(), updated = model.lastUpdatedText()] {
            return QJsonObject{
                {"jobs"_L1, listOf(jobs)}, {"active"_L1, active}, {"updated"_L1, updated}};
        };
}

// What the dashboard shows once it has loaded.
template<typename Model>
void tell(const ControlContext &context, Question *question)
{
    if (!context.isRunning &&
        RemoteDataSource::isRemote(context.models.settings.config->current())) {
        question->fail(u"the gateway in use is on another machine, which only a running Ostrelle "
                       "asks"_s);
        return;
    }
    onceLoaded<Model>(context, question,
                      [question](const Model &model, const PassLimit::Pass &pass) {
                          question->answerFromBackground(
                              [makeData = dataMaker(model), problem = model.errorMessage(), pass] {
                                  QJsonObject data = makeData();
                                  if (!problem.isEmpty()) {
                                      data.insert("problem"_L1, problem);
                                  }
                                  return data;
                              });
                      });
}

} // namespace

void tellAgents(const ControlContext &context, Question *question)
{
    tell<AgentsTopologyViewModel>(context, question);
}

void tellProjects(const ControlContext &context, Question *question)
{
    tell<ProjectsViewModel>(context, question);
}

// As a refresh of the panel's does.
void syncProjects(const ControlContext &context, Question *question)
{
    const PassLimit::Pass pass = context.looks->begin();
    if (!pass) {
        question->fail(u"the gateway's tool does not answer"_s);
        return;
    }
    const auto work = [pass] { return runProjectTrackerJob(&NetworkHelpers::runProcess); };
    whenDone(userInitiatedPool().run(work), question,
             [question](const std::expected<void, TrackerJobProblem> &started) {
                 if (started) {
                     question->answer({});
                 } else {
                     question->fail(started.error() == TrackerJobProblem::NoTool
                                        ? u"the gateway's tool was not found"_s
                                        : u"the gateway has no job that tracks projects"_s);
                 }
             });
}

void tellCron(const ControlContext &context, Question *question)
{
    tell<CronViewModel>(context, question);
}

} // namespace ostrelle::command
