// Calls on the bus whose answers come through the event loop.
#pragma once

#include <QDBusPendingCallWatcher>

#include <utility>

namespace quenby {

// Calls done(const QDBusPendingCall&) once the reply or an error is there; never when the context died before.
template <typename Done>
void whenReplied(const QDBusPendingCall& call, QObject* context, Done done) {
    auto* watcher = new QDBusPendingCallWatcher(call, context);
    QObject::connect(watcher, &QDBusPendingCallWatcher::finished, context,
                     [done = std::move(done)](QDBusPendingCallWatcher* finished) {
                         finished->deleteLater();
                         done(static_cast<const QDBusPendingCall&>(*finished));
                     });
}

} // namespace quenby
