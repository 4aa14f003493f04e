#include "tracker/FetchError.h"

namespace ostrelle
{

using namespace Qt::StringLiterals;

QString FetchError::description() const
{
    switch (m_case) {
    case Case::NotReachable:
        return u"Gateway not reachable — check connection and ensure Duskrell is running on the "
               "remote device."_s;
    case Case::AuthRejected:
        return u"Gateway rejected token — tap the 🔑 icon on the profile to update it."_s;
    case Case::BadData:
        return u"Data format error: "_s + m_message;
    }
    return {};
}

} // namespace ostrelle
