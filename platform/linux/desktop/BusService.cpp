#include "platform/linux/desktop/BusService.h"

#include "platform/linux/desktop/BusCall.h"

#include <QDBusMessage>
#include <QDBusPendingReply>
#include <QDBusServiceWatcher>

namespace quenby {
namespace {

QDBusMessage questionToBus(const QString& method) {
    const QString name = QStringLiteral("org.freedesktop.DBus");
    return QDBusMessage::createMethodCall(name, QStringLiteral("/org/freedesktop/DBus"), name, method);
}

} // namespace

BusService::BusService(const QDBusConnection& bus, const QString& name)
    : bus_(bus)
    , name_(name)
    , watcher_(new QDBusServiceWatcher(name, bus, QDBusServiceWatcher::WatchForOwnerChange, this)) {
    connect(watcher_, &QDBusServiceWatcher::serviceOwnerChanged, this,
            [this](const QString&, const QString&, const QString& owner) { setOwner(owner); });
    if (bus_.isConnected())
        ask();
    else
        presence_ = Presence::absent;
}

BusService::~BusService() = default;

void BusService::ask() {
    QDBusMessage question = questionToBus(QStringLiteral("NameHasOwner"));
    question << name_;
    whenReplied(bus_.asyncCall(question), this, [this](const QDBusPendingReply<bool>& reply) {
        if (wasTold_)
            return; // of what happened after this reply, which a signal may overtake
        if (reply.isValid() && reply.value()) {
            presence_ = Presence::running;
            Q_EMIT came();
        } else {
            askWhetherStartable();
        }
    });
}

void BusService::askWhetherStartable() {
    const QDBusMessage question = questionToBus(QStringLiteral("ListActivatableNames"));
    whenReplied(bus_.asyncCall(question), this, [this](const QDBusPendingReply<QStringList>& reply) {
        if (presence_ == Presence::running)
            return;
        presence_ = reply.isValid() && reply.value().contains(name_) ? Presence::startable : Presence::absent;
    });
}

void BusService::setOwner(const QString& owner) {
    wasTold_ = true;
    const bool wasRunning = presence_ == Presence::running;
    presence_ = owner.isEmpty() ? Presence::unknown : Presence::running;
    if (owner.isEmpty())
        askWhetherStartable();
    if (wasRunning)
        Q_EMIT went();
    if (!owner.isEmpty())
        Q_EMIT came();
}

} // namespace quenby
