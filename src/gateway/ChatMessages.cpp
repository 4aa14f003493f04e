#include "gateway/ChatMessages.h"

namespace ostrelle
{

namespace
{

constexpr int maxMessages = 6;

} // namespace

void ChatMessages::append(const ChatMessage &message)
{
    const bool full = count() == maxMessages;
    if (full) {
        beginRemoveRows({}, 0, 0);
        m_messages.removeFirst();
        endRemoveRows();
    }
    beginInsertRows({}, count(), count());
    m_messages.append(message);
    endInsertRows();
    if (!full) {
        Q_EMIT countChanged();
    }
}

int ChatMessages::rowCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : count();
}

QVariant ChatMessages::data(const QModelIndex &index, int role) const
{
    if (!checkIndex(index, CheckIndexOption::IndexIsValid)) {
        return {};
    }
    const ChatMessage &message = m_messages.at(index.row());
    switch (role) {
    case RoleRole:
        return message.role;
    case TextRole:
        return message.text;
    default:
        return {};
    }
}

QHash<int, QByteArray> ChatMessages::roleNames() const
{
    return {{RoleRole, "role"}, {TextRole, "text"}};
}

} // namespace ostrelle

#include "moc_ChatMessages.cpp"
