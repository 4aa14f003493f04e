#pragma once

#include "platform/Files.h"
#include "settings/OstrelleConfig.h"

#include <QFuture>
#include <QObject>

#include <functional>
#include <memory>
#include <mutex>

namespace ostrelle
{

// The only reader and writer of config.json. Calls may come from any thread; the object lives on
// the main thread, where it signals.
class ConfigStore : public QObject, public std::enable_shared_from_this<ConfigStore>
{
    Q_OBJECT

public:
    using Change = std::function<void(OstrelleConfig &)>;

    // Reads the file. Any thread may give up the last handle.
    static std::shared_ptr<ConfigStore> open(const QString &file);

    const QString &file() const { return m_file; }

    // What the file holds now, so that an edit from outside counts; the defaults without a file
    // that can be understood, which stays as it is. What came from an older version is written
    // back. A change that could not be written holds all the same: it is made to what the file
    // holds, and tried again. Reads the disk: the start and background threads only.
    OstrelleConfig snapshot();

    // What was read or written last, without looking at the disk.
    OstrelleConfig current() const;

    struct Changed {
        OstrelleConfig config; // what holds from now on
        std::expected<void, FileProblem> written;
    };
    enum class Write {
        IfChanged,
        Always,
        IfUnderstood, // never over a file that cannot be understood; the change holds all the same
    };
    // Applies the change to what the file then holds, or to what was read last where it cannot be
    // understood, and writes that, in the order in which changes were given. The file that cannot
    // be understood is set aside for that. A failure has also been logged, once.
    QFuture<Changed> change(const Change &apply, Write mode = Write::IfChanged);

Q_SIGNALS:
    // What current() gives has become another.
    void changed();

private:
    explicit ConfigStore(QString file);
    // `written` is what had to be done before; when that failed, nothing is written.
    std::expected<void, FileProblem> write(const OstrelleConfig &config,
                                           std::expected<void, FileProblem> written);
    void rememberUnwritten(const Change &apply, const OstrelleConfig &result);
    void remember(const OstrelleConfig &config);
    Changed changeNow(const Change &apply, Write mode);

    const QString m_file;

    std::mutex m_diskMutex; // one reads or writes at a time
    // Protected by the one above.
    QList<Change> m_unwritten; // in their order; bounded
    bool m_toldFailure = false;

    mutable std::mutex m_mutex; // never held while the disk is used
    OstrelleConfig m_current;   // protected by it
};
} // namespace ostrelle
