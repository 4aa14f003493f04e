#include "platform/SecretStore.h"

namespace ostrelle
{

using namespace Qt::StringLiterals;

QString toString(SecretProblem problem)
{
    switch (problem) {
    case SecretProblem::Unreachable:
        return u"the secret store cannot be reached"_s;
    case SecretProblem::NoAnswer:
        return u"the secret store does not answer"_s;
    case SecretProblem::Locked:
        return u"the secret store is locked"_s;
    case SecretProblem::Refused:
        return u"the secret store refused"_s;
    }
    Q_UNREACHABLE();
}

} // namespace ostrelle
