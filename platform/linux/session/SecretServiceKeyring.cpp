#include "platform/linux/session/SecretServiceKeyring.h"

#include "platform/linux/session/BusCalls.h"
#include "platform/linux/session/SecretService.h"
#include "platform/linux/session/SecretServiceUnlock.h"
#include "platform/linux/session/SecretServiceWatch.h"

#include <QAbstractEventDispatcher>
#include <QDBusConnectionInterface>
#include <QLibrary>

#include <qt6keychain/keychain.h>

namespace quenby {
namespace {

const QString walletName = QStringLiteral("org.kde.kwalletd5");

// There, the library talks to the desktop's own wallet, which asks for its password by itself.
bool isWalletDesktop() {
    return qEnvironmentVariable("XDG_CURRENT_DESKTOP").split(QLatin1Char(':')).contains(QLatin1String("KDE"));
}

// The library's answers arrive through GLib's main loop, which Qt's event loop is only when it was not told otherwise.
bool hasGlibEventLoop() {
    const auto* dispatcher = QAbstractEventDispatcher::instance();
    return dispatcher && dispatcher->inherits("QEventDispatcherGlib");
}

// As text, an entry is legible in the desktop's program for passwords; other bytes are stored in an encoded form.
bool isText(const QByteArray& data) { return !data.contains('\0') && QString::fromUtf8(data).toUtf8() == data; }

// The library below QtKeychain goes on using its session with a service that has died, and fails with every later one,
// unless it is told to connect anew.
void forgetConnection() {
    QLibrary library(QStringLiteral("secret-1"), 0);
    if (const auto disconnect = library.resolve("secret_service_disconnect"))
        disconnect();
}

} // namespace

SecretServiceKeyring::SecretServiceKeyring(QObject* parent) { setParent(parent); }

// A running job goes on without this object, and destroys itself at its end.
SecretServiceKeyring::~SecretServiceKeyring() {
    if (job_)
        job_->disconnect(this);
}

QString SecretServiceKeyring::unavailableBecause() const {
    const QDBusConnection bus = QDBusConnection::sessionBus();
    if (!bus.isConnected())
        return QStringLiteral("There is no session bus, and so no keyring. Start Quenby from a desktop session.");
    if (!hasGlibEventLoop())
        return QStringLiteral("The keyring needs GLib's event loop. Start Quenby without QT_NO_GLIB.");
    const QString name = isWalletDesktop() ? walletName : secretService::name;
    if (bus.interface()->isServiceRegistered(name) || bus.interface()->activatableServiceNames().value().contains(name))
        return {};
    return QStringLiteral("There is no keyring on this desktop. Install one (the package gnome-keyring, for instance), "
                          "and log in again.");
}

CompletionTicket SecretServiceKeyring::read(const KeyringItem& item, QObject* context, Read read) {
    const CompletionGate<Result<QByteArray>> gate(context, std::move(read));
    enqueue({Operation::Kind::read, item, {}, gate, {}});
    return gate.ticket();
}

CompletionTicket SecretServiceKeyring::write(const KeyringItem& item, const QByteArray& data, QObject* context,
                                             Done done) {
    const CompletionGate<MaybeError> gate(context, std::move(done));
    enqueue({Operation::Kind::write, item, data, {}, gate});
    return gate.ticket();
}

CompletionTicket SecretServiceKeyring::remove(const KeyringItem& item, QObject* context, Done done) {
    const CompletionGate<MaybeError> gate(context, std::move(done));
    enqueue({Operation::Kind::remove, item, {}, {}, gate});
    return gate.ticket();
}

void SecretServiceKeyring::enqueue(Operation operation) {
    operations_.push_back(std::move(operation));
    startNext();
}

void SecretServiceKeyring::startNext() {
    if (isBusy_ || operations_.empty())
        return;
    isBusy_ = true;
    const QDBusConnection bus = QDBusConnection::sessionBus();
    if (!bus.isConnected() || !hasGlibEventLoop() || abandoned_)
        return finish(secretService::problem(KeyringErrorCode::unavailable));
    if (!watch_) {
        watch_ = std::make_unique<SecretServiceWatch>(bus);
        connect(watch_.get(), &SecretServiceWatch::went, this, &SecretServiceKeyring::serviceWent);
        connect(watch_.get(), &SecretServiceWatch::came, this, &SecretServiceKeyring::serviceIsUsable);
        connect(watch_.get(), &SecretServiceWatch::unlocked, this, &SecretServiceKeyring::serviceIsUsable);
    }
    if (isWalletDesktop())
        return perform();
    const auto purpose = operations_.front().kind == Operation::Kind::write ? SecretServiceUnlock::Purpose::store
                                                                            : SecretServiceUnlock::Purpose::use;
    unlock_ =
        std::make_unique<SecretServiceUnlock>(bus, purpose, operations_.front().item, [this](const MaybeError& error) {
            unlock_.release()->deleteLater();
            if (error)
                finish(*error);
            else
                perform();
        });
}

void SecretServiceKeyring::perform() {
    const Operation& operation = operations_.front();
    if (operation.kind == Operation::Kind::read)
        startJob(new QKeychain::ReadPasswordJob(operation.item.serviceName), &SecretServiceKeyring::jobDone);
    else if (operation.kind == Operation::Kind::remove)
        startJob(new QKeychain::DeletePasswordJob(operation.item.serviceName), &SecretServiceKeyring::jobDone);
    else if (isText(operation.data))
        storeData();
    else // an older text under the same names would stand before it
        startJob(new QKeychain::DeletePasswordJob(operation.item.serviceName), &SecretServiceKeyring::dataRemoved);
}

void SecretServiceKeyring::dataRemoved(QKeychain::Job& job) {
    if (job.error() != QKeychain::NoError && job.error() != QKeychain::EntryNotFound)
        return jobDone(job);
    storeData();
}

void SecretServiceKeyring::storeData() {
    const Operation& operation = operations_.front();
    auto* job = new QKeychain::WritePasswordJob(operation.item.serviceName);
    if (isText(operation.data))
        job->setTextData(QString::fromUtf8(operation.data));
    else
        job->setBinaryData(operation.data);
    startJob(job, &SecretServiceKeyring::jobDone);
}

void SecretServiceKeyring::startJob(QKeychain::Job* job, JobDone done) {
    job_ = job;
    hasUsedLibrary_ = true;
    job->setKey(operations_.front().item.accountName);
    job->setInsecureFallback(false);
    connect(job, &QKeychain::Job::finished, this, [this, done](QKeychain::Job* finished) {
        job_ = nullptr;
        (this->*done)(*finished);
    });
    job->start();
}

void SecretServiceKeyring::jobDone(QKeychain::Job& job) {
    switch (job.error()) {
    case QKeychain::NoError:
        if (const auto* read = qobject_cast<QKeychain::ReadPasswordJob*>(&job))
            return finish(read->binaryData());
        return finish(QByteArray());
    case QKeychain::EntryNotFound:
        return finish(secretService::problem(KeyringErrorCode::itemNotFound));
    case QKeychain::AccessDenied:
    case QKeychain::AccessDeniedByUser:
        return finish(secretService::problem(KeyringErrorCode::locked));
    case QKeychain::NoBackendAvailable:
    case QKeychain::NotImplemented:
        return finish(secretService::problem(KeyringErrorCode::unavailable));
    case QKeychain::CouldNotDeleteEntry:
    case QKeychain::OtherError:
        return failedFor(job.errorString());
    }
}

// The library has the same error for a service that refuses and for one that is not there.
void SecretServiceKeyring::failedFor(const QString& detail) {
    const QDBusConnection bus = QDBusConnection::sessionBus();
    const QString name = isWalletDesktop() ? walletName : secretService::name;
    QDBusMessage question =
        QDBusMessage::createMethodCall(QStringLiteral("org.freedesktop.DBus"), QStringLiteral("/org/freedesktop/DBus"),
                                       QStringLiteral("org.freedesktop.DBus"), QStringLiteral("NameHasOwner"));
    question << name;
    const quint64 number = number_;
    whenAnswered(this, bus.asyncCall(question), [this, detail, number](const QDBusMessage& reply) {
        if (number != number_) // the bus has told meanwhile that the service is gone
            return;
        const bool isThere = reply.type() == QDBusMessage::ReplyMessage && reply.arguments().value(0).toBool();
        finish(isThere ? secretService::problem(KeyringErrorCode::failed, detail)
                       : secretService::problem(KeyringErrorCode::unavailable));
    });
}

void SecretServiceKeyring::finish(const Result<QByteArray>& outcome) {
    const auto hasCode = [&](KeyringErrorCode code) {
        return !outcome.ok() && outcome.error().is(keyringErrorDomain, static_cast<qint64>(code));
    };
    const Operation operation = std::move(operations_.front());
    operations_.pop_front();
    ++number_;
    isBusy_ = false;
    hasFailed_ = hasFailed_ || hasCode(KeyringErrorCode::locked) || hasCode(KeyringErrorCode::unavailable);
    if (watch_)
        watch_->setWaitingForUnlock(hasFailed_);
    const bool isDone =
        outcome.ok() || (operation.kind == Operation::Kind::remove && hasCode(KeyringErrorCode::itemNotFound));
    operation.readGate.deliver(outcome);
    operation.doneGate.deliver(isDone ? MaybeError() : MaybeError(outcome.error()));
    startNext();
}

void SecretServiceKeyring::serviceWent() {
    if (isWalletDesktop())
        return;
    if (std::exchange(hasUsedLibrary_, false))
        forgetConnection();
    if (!isBusy_)
        return;
    unlock_.reset();
    if (job_) {
        job_->disconnect(this);
        abandoned_ = std::exchange(job_, nullptr);
    }
    finish(secretService::problem(KeyringErrorCode::unavailable));
}

// An operation that is under way, and may itself be the reason for this, learns it from its own answer.
void SecretServiceKeyring::serviceIsUsable() {
    if (isBusy_ && !hasFailed_)
        return;
    hasFailed_ = false;
    watch_->setWaitingForUnlock(false);
    Q_EMIT becameAvailable();
}

} // namespace quenby
