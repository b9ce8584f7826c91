#include "platform/linux/session/SecretServiceWatch.h"

#include "platform/linux/session/BusCalls.h"
#include "platform/linux/session/SecretService.h"

namespace quenby {

SecretServiceWatch::SecretServiceWatch(const QDBusConnection& bus, QObject* parent)
    : QObject(parent)
    , bus_(bus)
    , owner_(secretService::name, bus_, QDBusServiceWatcher::WatchForOwnerChange) {
    connect(&owner_, &QDBusServiceWatcher::serviceOwnerChanged, this,
            [this](const QString&, const QString& before, const QString& now) {
                if (!before.isEmpty())
                    Q_EMIT went();
                if (!now.isEmpty())
                    Q_EMIT came();
            });
    bus_.connect(secretService::name, {}, secretService::propertiesInterface, QStringLiteral("PropertiesChanged"),
                 {secretService::collectionInterface}, QStringLiteral("sa{sv}as"), this,
                 SLOT(propertiesChanged(QString, QVariantMap, QStringList)));
    bus_.connect(secretService::name, secretService::path, secretService::serviceInterface,
                 QStringLiteral("CollectionChanged"), this, SLOT(collectionChanged(QDBusObjectPath)));
}

void SecretServiceWatch::propertiesChanged(const QString&, const QVariantMap& values, const QStringList&) {
    const QVariant locked = values.value(QStringLiteral("Locked"));
    if (locked.isValid() && !locked.toBool())
        Q_EMIT unlocked();
}

void SecretServiceWatch::collectionChanged(const QDBusObjectPath& collection) {
    if (!isWaitingForUnlock_)
        return;
    whenAnswered(
        this, bus_.asyncCall(secretService::lockedQuestion(collection.path())), [this](const QDBusMessage& reply) {
            if (isWaitingForUnlock_ && reply.type() == QDBusMessage::ReplyMessage && !secretService::saysLocked(reply))
                Q_EMIT unlocked();
        });
}

} // namespace quenby
