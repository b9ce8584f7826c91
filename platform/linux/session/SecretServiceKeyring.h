// The keyring of the desktop: the Secret Service through QtKeychain, which takes KWallet on KDE's desktop.
//
// An item's service name and account name are the library's service and key. Nothing is ever stored outside of the
// keyring. Operations run one after the other, in the order in which they were asked for. Making the object costs
// nothing; the first operation connects to the bus and loads the library.
#pragma once

#include "platform/Keyring.h"

#include <QDBusConnection>
#include <QPointer>

#include <deque>
#include <memory>

namespace QKeychain {
class Job;
}

namespace quenby {

class SecretServiceUnlock;
class SecretServiceWatch;

class SecretServiceKeyring final : public Keyring {
    Q_OBJECT

public:
    explicit SecretServiceKeyring(QObject* parent = nullptr);
    ~SecretServiceKeyring() override;

    // Asks the bus, and nobody behind it.
    QString unavailableBecause() const override;
    CompletionTicket read(const KeyringItem& item, QObject* context, Read read) override;
    CompletionTicket write(const KeyringItem& item, const QByteArray& data, QObject* context, Done done) override;
    CompletionTicket remove(const KeyringItem& item, QObject* context, Done done) override;

private:
    struct Operation {
        enum class Kind { read, write, remove };

        Kind kind;
        KeyringItem item;
        QByteArray data;
        CompletionGate<Result<QByteArray>> readGate;
        CompletionGate<MaybeError> doneGate;
    };
    using JobDone = void (SecretServiceKeyring::*)(QKeychain::Job& job);

    void enqueue(Operation operation);
    void startNext();
    // Unlocked, as far as it can be known.
    void perform();
    void startJob(QKeychain::Job* job, JobDone done);
    void dataRemoved(QKeychain::Job& job);
    void storeData();
    void jobDone(QKeychain::Job& job);
    void failedFor(const QString& detail);
    void finish(const Result<QByteArray>& outcome);
    void serviceWent();
    void serviceIsUsable();

    std::deque<Operation> operations_; // the first one is being done
    quint64 number_ = 0;               // of that one
    bool isBusy_ = false;
    std::unique_ptr<SecretServiceWatch> watch_; // with the first operation
    std::unique_ptr<SecretServiceUnlock> unlock_;
    QPointer<QKeychain::Job> job_;
    // Its service went away. It cannot be destroyed before it has ended, because the library would still call it.
    QPointer<QKeychain::Job> abandoned_;
    bool hasUsedLibrary_ = false; // since the service came
    bool hasFailed_ = false;      // something failed that becameAvailable() may help
};

} // namespace quenby
