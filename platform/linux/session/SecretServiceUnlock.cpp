#include "platform/linux/session/SecretServiceUnlock.h"

#include "platform/linux/session/BusCalls.h"
#include "platform/linux/session/SecretService.h"

#include <QDBusArgument>
#include <QDBusPendingReply>

namespace quenby {
namespace {

// How the service writes "no object".
const QString noObject = QStringLiteral("/");

QDBusMessage serviceCall(const QString& method) {
    return QDBusMessage::createMethodCall(secretService::name, secretService::path, secretService::serviceInterface,
                                          method);
}

} // namespace

SecretServiceUnlock::SecretServiceUnlock(const QDBusConnection& bus, Purpose purpose, const KeyringItem& item,
                                         Done done)
    : bus_(bus)
    , done_(std::move(done)) {
    if (purpose == Purpose::use)
        search(item);
    else
        lookAtDefaultCollection();
}

void SecretServiceUnlock::call(const QDBusMessage& message, std::function<void(const QDBusMessage& reply)> next) {
    whenAnswered(this, bus_.asyncCall(message), [this, next = std::move(next)](const QDBusMessage& reply) {
        if (reply.type() == QDBusMessage::ErrorMessage)
            end(secretService::problem(reply));
        else
            next(reply);
    });
}

void SecretServiceUnlock::search(const KeyringItem& item) {
    // The attributes under which the library stores an item.
    QDBusArgument attributes;
    attributes.beginMap(QMetaType(QMetaType::QString), QMetaType(QMetaType::QString));
    for (const auto& [key, value] :
         {std::pair(QStringLiteral("user"), item.accountName), std::pair(QStringLiteral("server"), item.serviceName)}) {
        attributes.beginMapEntry();
        attributes << key << value;
        attributes.endMapEntry();
    }
    attributes.endMap();
    QDBusMessage message = serviceCall(QStringLiteral("SearchItems"));
    message << QVariant::fromValue(attributes);
    call(message, [this](const QDBusMessage& reply) {
        const QDBusPendingReply<Found, Found> found = reply;
        if (found.isError())
            end(secretService::problem(KeyringErrorCode::failed, found.error().message()));
        else if (!found.argumentAt<1>().isEmpty())
            unlock(found.argumentAt<1>());
        else if (!found.argumentAt<0>().isEmpty())
            end({});
        else // a locked collection need not tell what is in it
            lookAtDefaultCollection();
    });
}

void SecretServiceUnlock::lookAtDefaultCollection() {
    QDBusMessage message = serviceCall(QStringLiteral("ReadAlias"));
    message << QStringLiteral("default");
    call(message, [this](const QDBusMessage& reply) {
        const auto collection = reply.arguments().value(0).value<QDBusObjectPath>();
        if (collection.path().isEmpty() || collection.path() == noObject)
            return end({}); // the first item makes one
        call(secretService::lockedQuestion(collection.path()), [this, collection](const QDBusMessage& answer) {
            if (secretService::saysLocked(answer))
                unlock({collection});
            else
                end({});
        });
    });
}

void SecretServiceUnlock::unlock(const Found& objects) {
    QDBusMessage message = serviceCall(QStringLiteral("Unlock"));
    message << QVariant::fromValue(objects);
    call(message, [this](const QDBusMessage& reply) {
        const QString promptPath = reply.arguments().value(1).value<QDBusObjectPath>().path();
        if (promptPath.isEmpty() || promptPath == noObject)
            end({});
        else
            prompt(promptPath);
    });
}

void SecretServiceUnlock::prompt(const QString& promptPath) {
    // A slot whose parameter's type nobody has used yet is refused without a word.
    qRegisterMetaType<QDBusVariant>();
    bus_.connect(secretService::name, promptPath, secretService::promptInterface, QStringLiteral("Completed"), this,
                 SLOT(promptCompleted(bool, QDBusVariant)));
    QDBusMessage message = QDBusMessage::createMethodCall(secretService::name, promptPath,
                                                          secretService::promptInterface, QStringLiteral("Prompt"));
    message << QString(); // no window that the question belongs to
    call(message, [](const QDBusMessage&) {});
}

void SecretServiceUnlock::promptCompleted(bool isDismissed, const QDBusVariant&) {
    end(isDismissed ? MaybeError(secretService::problem(KeyringErrorCode::locked)) : MaybeError());
}

// The function may destroy this object.
void SecretServiceUnlock::end(const MaybeError& error) {
    if (const Done done = std::exchange(done_, nullptr))
        done(error);
}

} // namespace quenby
