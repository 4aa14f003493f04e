#include "ui/AgentAppearance.h"

namespace ostrelle
{

namespace
{

QString trimmedOr(const QString &text, const QString &fallback)
{
    const QString trimmed = text.trimmed();
    return trimmed.isEmpty() ? fallback : trimmed;
}

} // namespace

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
    m_viewModel.value()->appearances().save(m_agentId, trimmedOr(name, m_fallbackName),
                                            trimmedOr(emoji, m_fallbackEmoji));
}

void AgentAppearance::reset()
{
    m_viewModel.value()->appearances().reset(m_agentId);
}

} // namespace ostrelle

#include "moc_AgentAppearance.cpp"
