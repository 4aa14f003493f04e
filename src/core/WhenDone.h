#pragma once

#include <QFutureWatcher>

namespace ostrelle
{

// Calls `publish` with the result of background work, on the owner's thread. Never before this
// function has returned, and never after the owner is gone. Owner's thread only.
//
// QFuture::then() with a context keeps neither promise in Qt 6.4: when the work is done already it
// calls at once, and it looks at the owner from the pool's thread, where the owner may be going
// just then.
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
