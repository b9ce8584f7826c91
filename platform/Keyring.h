// Secrets at rest: one item per service name and account name, in the desktop's keyring.
//
// Threads: the main thread; nothing blocks. Completions come through core/CompletionGate.h. A locked keyring is waited
// for without limit while the desktop asks the user to unlock it.
#pragma once

#include "core/CompletionGate.h"
#include "core/Result.h"
#include "platform/Service.h"

#include <QByteArray>
#include <QObject>

#include <functional>

namespace quenby {

inline const QString keyringErrorDomain = QStringLiteral("org.quenby.Keyring");
enum class KeyringErrorCode : int {
    itemNotFound = 1,
    locked = 2,      // the user was asked to unlock it and would not
    unavailable = 3, // there is none, or it went away
    failed = 4,      // anything else the keyring said
};

struct KeyringItem {
    QString serviceName;
    QString accountName;

    friend bool operator==(const KeyringItem&, const KeyringItem&) = default;
};

class Keyring : public QObject, public PlatformService {
    Q_OBJECT

public:
    using Read = std::function<void(const Result<QByteArray>& data)>;
    using Done = std::function<void(const MaybeError& error)>;

    virtual CompletionTicket read(const KeyringItem& item, QObject* context, Read read) = 0;
    // Replaces what the item held.
    virtual CompletionTicket write(const KeyringItem& item, const QByteArray& data, QObject* context, Done done) = 0;
    // An item that is not there counts as removed.
    virtual CompletionTicket remove(const KeyringItem& item, QObject* context, Done done) = 0;

Q_SIGNALS:
    // The keyring was unlocked, or came (back): what failed before is worth another try.
    void becameAvailable();
};

} // namespace quenby
