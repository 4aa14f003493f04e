// Reads any preferences file, sets a name in it and reads it again: either the name is there with
// all that was there before, or the file is what it was.

#include "Input.h"
#include "ScratchFile.h"
#include "settings/Preferences.h"
#include "settings/SettingsQueues.h"

using namespace ostrelle;

namespace
{

struct Known {
    bool usesNames;
    QString key;

    explicit Known(const Preferences &preferences)
        : usesNames(preferences.value(preference::useMagicDNS))
        , key(preferences.value(preference::geminiAPIKey()))
    {
    }
    friend bool operator==(const Known &, const Known &) = default;
};

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    const QByteArray content = bytesOf(data, size);
    const ScratchFile file(content);
    const TextPreference name = preference::customAgentName(QStringLiteral("main/1"), {});
    const QString given = QStringLiteral("Ada, \"first\"");
    const auto before = std::make_shared<Preferences>(file.path());
    const Known known(*before);
    before->set(name, given);
    settingsQueue().waitForDone();
    require(file.files() == 1);
    if (file.read() == content) {
        return 0;
    }
    require(before->opens());
    // QSettings takes a file of the same size and millisecond for the one that it knows.
    const ScratchFile copy(file.read());
    const auto after = std::make_shared<Preferences>(copy.path());
    require(after->value(name) == given && Known(*after) == known);
    return 0;
}
