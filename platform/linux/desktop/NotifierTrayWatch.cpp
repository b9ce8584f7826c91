#include "platform/linux/desktop/NotifierTrayWatch.h"

#include "platform/linux/desktop/BusCall.h"

#include <QDBusMessage>
#include <QDBusPendingReply>
#include <QDBusVariant>

namespace quenby {
namespace {

const QString watcherName = QStringLiteral("org.kde.StatusNotifierWatcher");
const QString watcherPath = QStringLiteral("/StatusNotifierWatcher");

} // namespace

NotifierTrayWatch::NotifierTrayWatch(const QDBusConnection& bus)
    : bus_(bus)
    , service_(bus, watcherName) {
    connect(&service_, &BusService::came, this, &NotifierTrayWatch::ask);
    connect(&service_, &BusService::went, this, &NotifierTrayWatch::forgetWatcher);
    // Not every watcher tells of a panel that went while itself stays; those that do use one of these.
    for (const char* signal : {"StatusNotifierHostRegistered", "StatusNotifierHostUnregistered"})
        bus_.connect(QString(), watcherPath, watcherName, QLatin1String(signal), this, SLOT(ask()));
    if (bus_.isConnected())
        ask();
    else
        setState(State::absent);
}

NotifierTrayWatch::~NotifierTrayWatch() = default;

void NotifierTrayWatch::ask() {
    QDBusMessage question = QDBusMessage::createMethodCall(
        watcherName, watcherPath, QStringLiteral("org.freedesktop.DBus.Properties"), QStringLiteral("Get"));
    question << watcherName << QStringLiteral("IsStatusNotifierHostRegistered");
    // A tray is looked for, not started.
    question.setAutoStartService(false);
    whenReplied(bus_.asyncCall(question), this,
                [this, number = ++lastQuestion_](const QDBusPendingReply<QDBusVariant>& reply) {
                    if (number != lastQuestion_)
                        return;
                    const bool isThere = reply.isValid() && reply.value().variant().toBool();
                    setState(isThere ? State::there : State::absent);
                });
}

void NotifierTrayWatch::forgetWatcher() {
    ++lastQuestion_;
    setState(State::absent);
}

} // namespace quenby
