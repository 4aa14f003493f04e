#include "control/ControlCommands.h"
#include "control/OnceLoaded.h"
#include "control/OnceStored.h"
#include "dashboards/AgentsTopologyViewModel.h"

namespace ostrelle::command
{

using namespace Qt::StringLiterals;

namespace
{

using Change = void (*)(const AgentNode &agent, AgentAppearanceStore &appearances,
                        const Question &wish);

// The agents that the user may mean, by their id or by what they are called.
QList<AgentNode> agentsCalled(const QString &called, const AgentsTopologyViewModel &model)
{
    const AgentAppearanceStore appearances = model.appearances();
    QList<AgentNode> named;
    for (const AgentNode &agent : model.nodes()) {
        if (agent.id == called) {
            return {agent};
        }
        if (appearances.name(agent.id, agent.name).compare(called, Qt::CaseInsensitive) == 0) {
            named.append(agent);
        }
    }
    return named;
}

QString notFound(const AgentsTopologyViewModel &model)
{
    const QString problem = model.errorMessage(); // perhaps nobody could be asked for them
    return problem.isEmpty() ? u"there is no agent with that name or id"_s : problem;
}

void changeAgent(const ControlContext &context, const AgentsTopologyViewModel &model,
                 Question *question, Change change)
{
    const QList<AgentNode> agents = agentsCalled(question->text("agent"_L1), model);
    if (agents.size() != 1) {
        question->fail(agents.isEmpty() ? notFound(model)
                                        : u"more than one agent has that name; say the id"_s);
        return;
    }
    const AgentNode &agent = agents.first();
    AgentAppearanceStore appearances = model.appearances();
    change(agent, appearances, *question);
    answerOnceStored(context, question,
                     {{"id"_L1, agent.id},
                      {"name"_L1, appearances.name(agent.id, agent.name)},
                      {"emoji"_L1, appearances.emoji(agent.id, agent.defaultEmoji())}});
}

void changeOnceLoaded(const ControlContext &context, Question *question, Change change)
{
    onceLoaded<AgentsTopologyViewModel>(
        context, question,
        [context, question, change](const AgentsTopologyViewModel &model,
                                    const PassLimit::Pass & /*pass*/) {
            changeAgent(context, model, question, change);
        });
}

} // namespace

// What is left out stays as it is.
void setAgent(const ControlContext &context, Question *question)
{
    if (question->text("name"_L1).trimmed().isEmpty() &&
        question->text("emoji"_L1).trimmed().isEmpty()) {
        question->fail(u"there is neither a name nor an emoji"_s);
        return;
    }
    changeOnceLoaded(
        context, question,
        [](const AgentNode &agent, AgentAppearanceStore &appearances, const Question &wish) {
            const QString name = wish.text("name"_L1);
            const QString emoji = wish.text("emoji"_L1);
            appearances.save(agent.id, typedOr(name, appearances.name(agent.id, agent.name)),
                             typedOr(emoji, appearances.emoji(agent.id, agent.defaultEmoji())));
        });
}

void resetAgent(const ControlContext &context, Question *question)
{
    changeOnceLoaded(context, question,
                     [](const AgentNode &agent, AgentAppearanceStore &appearances,
                        const Question & /*wish*/) { appearances.reset(agent.id); });
}

} // namespace ostrelle::command
