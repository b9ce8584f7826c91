// Makes sure that what one keyring operation touches is unlocked, asking the user where it is not.
//
// The library below would ask, too; but it takes a dismissed question for an entry that is not there, and when the
// service dies while the question is on the screen, its call never ends and every later one waits behind it.
//
// Threads: the main thread; nothing blocks. Destroying the object gives up.
#pragma once

#include "platform/Keyring.h"

#include <QDBusConnection>
#include <QDBusObjectPath>
#include <QDBusVariant>

namespace quenby {

class SecretServiceUnlock final : public QObject {
    Q_OBJECT

public:
    enum class Purpose {
        use,   // read or remove the item
        store, // create it in the default collection, or replace it there
    };
    using Done = std::function<void(const MaybeError& error)>;

    // Calls done once, through the event loop: with nothing when all is unlocked, else with the reason.
    SecretServiceUnlock(const QDBusConnection& bus, Purpose purpose, const KeyringItem& item, Done done);

private Q_SLOTS:
    void promptCompleted(bool isDismissed, const QDBusVariant& result);

private:
    using Found = QList<QDBusObjectPath>;

    // Goes on with the reply's arguments, or ends with the error.
    void call(const QDBusMessage& message, std::function<void(const QDBusMessage& reply)> next);
    void search(const KeyringItem& item);
    void lookAtDefaultCollection();
    void unlock(const Found& objects);
    void prompt(const QString& promptPath);
    void end(const MaybeError& error);

    QDBusConnection bus_;
    Done done_;
};

} // namespace quenby
