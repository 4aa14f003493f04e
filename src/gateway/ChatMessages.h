#pragma once

#include <QAbstractListModel>

namespace ostrelle
{

struct ChatMessage {
    QString role; // "user" or "assistant"
    QString text;

    friend bool operator==(const ChatMessage &, const ChatMessage &) = default;
};

// The visible conversation, oldest first; it never holds more than six messages. Main thread only.
class ChatMessages : public QAbstractListModel
{
    Q_OBJECT
    Q_PROPERTY(int count READ count NOTIFY countChanged)

public:
    enum Role { RoleRole = Qt::UserRole, TextRole };

    using QAbstractListModel::QAbstractListModel;

    // Drops the oldest message when there are too many.
    void append(const ChatMessage &message);

    int count() const { return static_cast<int>(m_messages.size()); }
    const QList<ChatMessage> &messages() const { return m_messages; }

    int rowCount(const QModelIndex &parent = {}) const override;
    QVariant data(const QModelIndex &index, int role) const override;
    QHash<int, QByteArray> roleNames() const override;

Q_SIGNALS:
    void countChanged();

private:
    QList<ChatMessage> m_messages;
};

} // namespace ostrelle
