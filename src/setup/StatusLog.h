#pragma once

#include <QAbstractListModel>
#include <QStringList>

#include <deque>

namespace ostrelle
{

// The progress log, oldest message first, never trimmed. An installer may print a hundred
// megabytes, so messages are kept as UTF-8 and come in batches. Main thread only.
class StatusLog : public QAbstractListModel
{
    Q_OBJECT

public:
    enum Role { MessageRole = Qt::DisplayRole };

    using QAbstractListModel::QAbstractListModel;

    void append(QByteArrayList &&messages);
    void clear();

    // Every message at once; for short logs.
    QStringList messages() const;

    int rowCount(const QModelIndex &parent = {}) const override;
    QVariant data(const QModelIndex &index, int role) const override;
    QHash<int, QByteArray> roleNames() const override;

private:
    std::deque<QByteArray> m_messages; // grows without ever moving what is there
};

} // namespace ostrelle
