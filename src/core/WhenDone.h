#pragma once

#include <QFutureWatcher>

namespace ostrelle
{

// Hands the result of background work to `publish` on the owner's thread, never before this call
// has returned, and not at all once the owner is gone. Owner's thread only.
//
// QFuture::then() with a context does neither in Qt 6.4: it calls at once when the work is done
// already, and looks at the owner from the pool's thread, where that may be going just then.
template<typename Result, typename Publish>
void whenDone(const QFuture<Result> &work, QObject *owner, Publish publish)
{
    auto *watcher = new QFutureWatcher<Result>(owner);
    QObject::connect(watcher, &QFutureWatcherBase::finished, owner,
                     [watcher, publish = std::move(publish)] {
                         watcher->deleteLater();
                         if (watcher->isCanceled()) {
                             return;
                         }
                         if constexpr (std::is_void_v<Result>) {
                             publish();
                         } else {
                             publish(watcher->result());
                         }
                     });
    watcher->setFuture(work);
}

} // namespace ostrelle
