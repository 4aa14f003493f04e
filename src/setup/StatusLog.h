#pragma once

#include <QAbstractListModel>
#include <QStringList>

#include <limits>
#include <vector>

namespace ostrelle
{

// The progress log, oldest message first, never trimmed. An installer may print a hundred megabytes
// in lines of one letter. So messages come in batches and are kept one behind the other in blocks
// of UTF-8, which takes three bytes for such a line. Main thread only.
class StatusLog : public QAbstractListModel
{
    Q_OBJECT

public:
    enum Role { MessageRole = Qt::DisplayRole };

    using QAbstractListModel::QAbstractListModel;

    void append(const QByteArrayList &messages);
    void clear();

    // Every message at once; for short logs.
    QStringList messages() const;

    QString messageAt(int row) const;

    // How many messages there have been before the ones that are there.
    qint64 cleared() const { return m_cleared; }

    int rowCount(const QModelIndex &parent = {}) const override;
    QVariant data(const QModelIndex &index, int role) const override;
    QHash<int, QByteArray> roleNames() const override;

private:
    // Full once its text is longer than an offset can hold.
    struct Block {
        int firstRow = 0;
        std::vector<quint16> begins = {}; // of the messages, in the text
        QByteArray text = {};

        bool isFull() const { return text.size() > std::numeric_limits<quint16>::max(); }
    };

    void append(const QByteArray &message);

    std::vector<Block> m_blocks;
    int m_count = 0;
    qint64 m_cleared = 0;
};

} // namespace ostrelle
