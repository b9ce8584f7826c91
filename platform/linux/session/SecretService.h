// What the keyring's parts share about the Secret Service (freedesktop.org's Secret Service API, version 0.2).
#pragma once

#include "core/Error.h"
#include "platform/Keyring.h"

#include <QDBusMessage>

namespace quenby::secretService {

inline const QString name = QStringLiteral("org.freedesktop.secrets");
inline const QString path = QStringLiteral("/org/freedesktop/secrets");
inline const QString serviceInterface = QStringLiteral("org.freedesktop.Secret.Service");
inline const QString collectionInterface = QStringLiteral("org.freedesktop.Secret.Collection");
inline const QString promptInterface = QStringLiteral("org.freedesktop.Secret.Prompt");
inline const QString propertiesInterface = QStringLiteral("org.freedesktop.DBus.Properties");

// An error with a sentence for people; the detail is what the keyring itself said.
Error problem(KeyringErrorCode code, const QString& detail = {});
// What the bus or the service answered instead of a reply.
Error problem(const QDBusMessage& failed);

// Asks for a collection's property "Locked".
QDBusMessage lockedQuestion(const QString& collection);
// The answer to it, and to nothing else: false when there is none.
bool saysLocked(const QDBusMessage& reply);

} // namespace quenby::secretService
