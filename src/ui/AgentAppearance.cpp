#include "ui/AgentAppearance.h"

namespace ostrelle
{

AgentAppearance::AgentAppearance(QObject *parent)
    : QObject(parent)
{
    // All that a binding depends on is read each time, also where one part would do: in Qt 6.4 a
    // dependency that is new in a later evaluation may make it read freed memory.
    m_name.setBinding([this] {
        static_cast<void>(m_refreshKey.value());
        const auto *const viewModel = m_viewModel.value();
        const QString id = m_agentId;
        const QString fallback = m_fallbackName;
        return viewModel != nullptr ? viewModel->appearances().name(id, fallback) : fallback;
    });
    m_emoji.setBinding([this] {
        static_cast<void>(m_refreshKey.value());
        const auto *const viewModel = m_viewModel.value();
        const QString id = m_agentId;
        const QString fallback = m_fallbackEmoji;
        return viewModel != nullptr ? viewModel->appearances().emoji(id, fallback) : fallback;
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
