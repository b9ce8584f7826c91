#include "platform/linux/session/SecretService.h"

#include <QDBusError>
#include <QDBusVariant>

namespace quenby::secretService {
namespace {

QString reasonFor(KeyringErrorCode code, const QString& detail) {
    switch (code) {
    case KeyringErrorCode::itemNotFound:
        return QStringLiteral("The keyring has no such entry.");
    case KeyringErrorCode::locked:
        return QStringLiteral("The keyring is locked. Unlock it with its password, and try again.");
    case KeyringErrorCode::unavailable:
        return QStringLiteral("The keyring does not answer. Start the desktop's keyring service (gnome-keyring, for "
                              "instance), and try again.");
    case KeyringErrorCode::failed:
        break;
    }
    return QStringLiteral("The keyring could not do it: %1. Look at your passwords in the desktop's own program for "
                          "them, and try again.")
        .arg(detail);
}

bool meansAway(const QDBusMessage& failed) {
    switch (QDBusError(failed).type()) {
    case QDBusError::ServiceUnknown:
    case QDBusError::NoReply:
    case QDBusError::Timeout:
    case QDBusError::TimedOut:
    case QDBusError::NoServer:
    case QDBusError::NoNetwork:
    case QDBusError::Disconnected:
        return true;
    default:
        return failed.errorName() == QLatin1String("org.freedesktop.DBus.Error.NameHasNoOwner") ||
               failed.errorName().startsWith(QLatin1String("org.freedesktop.DBus.Error.Spawn."));
    }
}

} // namespace

Error problem(KeyringErrorCode code, const QString& detail) {
    return Error(keyringErrorDomain, static_cast<qint64>(code), {{errorKey::reason, reasonFor(code, detail)}});
}

Error problem(const QDBusMessage& failed) {
    if (meansAway(failed))
        return problem(KeyringErrorCode::unavailable);
    if (failed.errorName() == QLatin1String("org.freedesktop.Secret.Error.IsLocked"))
        return problem(KeyringErrorCode::locked);
    return problem(KeyringErrorCode::failed, failed.errorMessage());
}

QDBusMessage lockedQuestion(const QString& collection) {
    QDBusMessage message = QDBusMessage::createMethodCall(name, collection, propertiesInterface, QStringLiteral("Get"));
    message << collectionInterface << QStringLiteral("Locked");
    return message;
}

bool saysLocked(const QDBusMessage& reply) {
    return reply.type() == QDBusMessage::ReplyMessage &&
           reply.arguments().value(0).value<QDBusVariant>().variant().toBool();
}

} // namespace quenby::secretService
