#pragma once

#include <QString>

namespace ostrelle
{

// Why the document of another machine could not be fetched.
class FetchError
{
public:
    static FetchError notReachable() { return FetchError(Case::NotReachable); }
    static FetchError authRejected() { return FetchError(Case::AuthRejected); }
    static FetchError badData(const QString &message) { return FetchError(Case::BadData, message); }

    // A text for the user.
    QString description() const;

    friend bool operator==(const FetchError &, const FetchError &) = default;

private:
    enum class Case { NotReachable, AuthRejected, BadData };

    explicit FetchError(Case which, QString message = {})
        : m_case(which)
        , m_message(std::move(message))
    {
    }

    Case m_case;
    QString m_message; // of BadData
};

} // namespace ostrelle
