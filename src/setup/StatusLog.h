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
    QString messageAt(int row) const;

    std::vector<Block> m_blocks;
    int m_count = 0;
};

} // namespace ostrelle
