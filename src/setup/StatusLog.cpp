#include "setup/StatusLog.h"

#include <iterator>

namespace ostrelle
{

void StatusLog::append(QByteArrayList &&messages)
{
    if (messages.isEmpty()) {
        return;
    }
    const int first = rowCount();
    beginInsertRows({}, first, first + static_cast<int>(messages.size()) - 1);
    std::move(messages.begin(), messages.end(), std::back_inserter(m_messages));
    endInsertRows();
}

void StatusLog::clear()
{
    beginResetModel();
    m_messages.clear();
    endResetModel();
}

QStringList StatusLog::messages() const
{
    QStringList texts;
    for (const QByteArray &message : m_messages) {
        texts.append(QString::fromUtf8(message));
    }
    return texts;
}

int StatusLog::rowCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : static_cast<int>(m_messages.size());
}

QVariant StatusLog::data(const QModelIndex &index, int role) const
{
    if (!checkIndex(index, CheckIndexOption::IndexIsValid) || role != MessageRole) {
        return {};
    }
    return QString::fromUtf8(m_messages[static_cast<std::size_t>(index.row())]);
}

QHash<int, QByteArray> StatusLog::roleNames() const
{
    return {{MessageRole, "message"}};
}

} // namespace ostrelle
