// One Notify call under way. Its reply arrives in the order of the bus, before any signal about the notification that
// it names; a watcher of the pending call would let such a signal overtake it.
#pragma once

#include <QDBusConnection>
#include <QDBusError>
#include <QDBusMessage>
#include <QObject>

#include <functional>
#include <optional>
#include <utility>

namespace quenby {

// Owned by its parent until the reply has come; then it deletes itself.
class NotifyCall final : public QObject {
    Q_OBJECT

public:
    // The service's number for the notification; none when the call failed.
    using Replied = std::function<void(std::optional<uint> onServer)>;

    NotifyCall(QDBusConnection bus, const QDBusMessage& call, QObject* parent, Replied replied)
        : QObject(parent)
        , replied_(std::move(replied)) {
        bus.callWithCallback(call, this, SLOT(takeReply(uint)), SLOT(takeError(QDBusError)));
    }

private Q_SLOTS:
    void takeReply(uint onServer) { finish(onServer); }
    void takeError(const QDBusError&) { finish(std::nullopt); }

private:
    void finish(std::optional<uint> onServer) {
        deleteLater();
        replied_(onServer);
    }

    Replied replied_;
};

} // namespace quenby
