#include "setup/StatusLog.h"

#include <algorithm>
#include <utility>

namespace ostrelle
{

void StatusLog::append(const QByteArrayList &messages)
{
    if (messages.isEmpty()) {
        return;
    }
    beginInsertRows({}, m_count, m_count + static_cast<int>(messages.size()) - 1);
    for (const QByteArray &message : messages) {
        append(message);
    }
    endInsertRows();
}

void StatusLog::append(const QByteArray &message)
{
    if (m_blocks.empty() || m_blocks.back().isFull()) {
        m_blocks.push_back({.firstRow = m_count});
    }
    Block &block = m_blocks.back();
    block.begins.push_back(static_cast<quint16>(block.text.size()));
    block.text += message;
    ++m_count;
    if (block.isFull()) {
        block.begins.shrink_to_fit();
        block.text.squeeze();
    }
}

void StatusLog::clear()
{
    if (m_count == 0) {
        return;
    }
    beginResetModel();
    m_blocks.clear();
    m_cleared += std::exchange(m_count, 0);
    endResetModel();
}

QStringList StatusLog::messages() const
{
    QStringList texts;
    for (int row = 0; row < m_count; ++row) {
        texts.append(messageAt(row));
    }
    return texts;
}

QString StatusLog::messageAt(int row) const
{
    const Block &block = *std::prev(std::ranges::upper_bound(m_blocks, row, {}, &Block::firstRow));
    const auto index = static_cast<std::size_t>(row - block.firstRow);
    const qsizetype begin = block.begins[index];
    const qsizetype end =
        index + 1 < block.begins.size() ? block.begins[index + 1] : block.text.size();
    return QString::fromUtf8(QByteArrayView(block.text).sliced(begin, end - begin));
}

int StatusLog::rowCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : m_count;
}

QVariant StatusLog::data(const QModelIndex &index, int role) const
{
    if (!checkIndex(index, CheckIndexOption::IndexIsValid) || role != MessageRole) {
        return {};
    }
    return messageAt(index.row());
}

QHash<int, QByteArray> StatusLog::roleNames() const
{
    return {{MessageRole, "message"}};
}

} // namespace ostrelle

#include "moc_StatusLog.cpp"
