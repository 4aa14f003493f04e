#include "settings/SettingsQueues.h"

#include "platform/NeverDestroyed.h"

#include <cstdlib>

namespace ostrelle
{

namespace
{

constexpr int patienceAtTheEnd = 175; // in milliseconds, for each of the two

struct Queues {
    Queues()
    {
        for (QThreadPool *queue : {&settings, &tokens}) {
            queue->setMaxThreadCount(1);
        }
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

    QThreadPool settings;
    QThreadPool tokens;
};

} // namespace

QThreadPool &settingsQueue()
{
    return Queues::instance().settings;
}

QThreadPool &tokenQueue()
{
    return Queues::instance().tokens;
}

} // namespace ostrelle
