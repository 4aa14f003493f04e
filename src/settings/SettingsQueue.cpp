#include "settings/SettingsQueue.h"

#include "platform/NeverDestroyed.h"

#include <cstdlib>

namespace ostrelle
{

namespace
{

constexpr int patienceAtTheEnd = 350; // in milliseconds

void finish()
{
    settingsQueue().waitForDone(patienceAtTheEnd);
}

class SettingsQueue : public QThreadPool
{
public:
    SettingsQueue()
    {
        setMaxThreadCount(1);
        // main leaves by the quick way, libraries by the other.
        std::at_quick_exit(&finish);
        std::atexit(&finish);
    }
};

} // namespace

QThreadPool &settingsQueue()
{
    static NeverDestroyed<SettingsQueue> queue;
    return queue.object();
}

} // namespace ostrelle
