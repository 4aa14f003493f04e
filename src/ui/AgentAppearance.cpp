#include "ui/AgentAppearance.h"

namespace ostrelle
{

AgentAppearance::AgentAppearance(QObject *parent)
    : QObject(parent)
{
    m_name.setBinding([this] {
        static_cast<void>(m_refreshKey.value());
        return m_viewModel.value() != nullptr
                   ? m_viewModel.value()->appearances().name(m_agentId, m_fallbackName)
                   : m_fallbackName;
    });
    m_emoji.setBinding([this] {
        static_cast<void>(m_refreshKey.value());
        return m_viewModel.value() != nullptr
                   ? m_viewModel.value()->appearances().emoji(m_agentId, m_fallbackEmoji)
                   : m_fallbackEmoji;
    });
}

void AgentAppearance::save(const QString &name, const QString &emoji)
{
    m_viewModel.value()->appearances().save(m_agentId, typedOr(name, m_fallbackName),
                                            typedOr(emoji, m_fallbackEmoji));
}

void AgentAppearance::reset()
{
    m_viewModel.value()->appearances().reset(m_agentId);
}

} // namespace ostrelle

#include "moc_AgentAppearance.cpp"
