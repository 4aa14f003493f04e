#pragma once

#include "core/RowsModel.h"

#include <functional>
#include <optional>

namespace ostrelle
{

// What views see of an optional text: undefined when it is absent.
inline QVariant orUndefined(const std::optional<QString> &text)
{
    return text ? QVariant(*text) : QVariant();
}

// Shows records to views through a table of roles. Main thread only.
template<typename Record>
class RecordListModel final : public RowsModel<Record>
{
public:
    struct Role {
        QByteArray name;
        std::function<QVariant(const Record &)> value;
    };

    explicit RecordListModel(QList<Role> roles, QObject *parent = nullptr)
        : RowsModel<Record>(parent)
        , m_roles(std::move(roles))
    {
    }

    using RowsModel<Record>::setRows;

    QVariant data(const QModelIndex &index, int role) const override
    {
        const qsizetype which = role - Qt::UserRole;
        const bool known = index.isValid() && which >= 0 && which < m_roles.size();
        return known ? m_roles.at(which).value(this->rows().at(index.row())) : QVariant();
    }

    QHash<int, QByteArray> roleNames() const override
    {
        QHash<int, QByteArray> names;
        for (int i = 0; i < m_roles.size(); ++i) {
            names.insert(Qt::UserRole + i, m_roles.at(i).name);
        }
        return names;
    }

private:
    const QList<Role> m_roles;
};

} // namespace ostrelle
