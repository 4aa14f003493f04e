#include "platform/SessionServices.h"

#include "platform/Module.h"

namespace ostrelle
{

SessionServices *sessionServices()
{
    static auto *const services =
        loadModuleAs<SessionServices>(QString::fromLatin1(SessionServices::moduleName));
    return services;
}

} // namespace ostrelle
