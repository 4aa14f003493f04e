#include "settings/SettingsQueues.h"

#include "platform/NeverDestroyed.h"

#include <cstdlib>

namespace ostrelle
{

namespace
{

constexpr std::chrono::milliseconds patienceAtTheEnd(175); // for each of the two

struct Queues {
    Queues()
    {
        // main leaves by the quick way, libraries by the other.
        std::at_quick_exit(&finish);
        std::atexit(&finish);
    }

    static Queues &instance()
    {
        static NeverDestroyed<Queues> queues;
        return queues.object();
    }

    static void finish()
    {
        instance().settings.waitForDone(patienceAtTheEnd);
        instance().tokens.waitForDone(patienceAtTheEnd);
    }

    WorkPool settings;
    WorkPool tokens;
};

} // namespace

WorkPool &settingsQueue()
{
    return Queues::instance().settings;
}

WorkPool &tokenQueue()
{
    return Queues::instance().tokens;
}

} // namespace ostrelle
