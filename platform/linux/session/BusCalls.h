// Answers of D-Bus calls, without waiting for them.
#pragma once

#include <QDBusMessage>
#include <QDBusPendingCall>
#include <QDBusPendingCallWatcher>

#include <functional>
#include <utility>

namespace quenby {

// Calls the function with the reply or the error, on the context's thread and not after the context's end.
inline void whenAnswered(QObject* context, const QDBusPendingCall& call,
                         std::function<void(const QDBusMessage& reply)> answered) {
    auto* watcher = new QDBusPendingCallWatcher(call, context);
    QObject::connect(watcher, &QDBusPendingCallWatcher::finished, context, [watcher, told = std::move(answered)] {
        watcher->deleteLater();
        told(watcher->reply());
    });
}

} // namespace quenby
