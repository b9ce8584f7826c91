#include "platform/linux/network/NetworkManagerCost.h"

#include <QCoreApplication>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QDBusServiceWatcher>

#include <utility>

namespace quenby {
namespace {

const QString managerName = QStringLiteral("org.freedesktop.NetworkManager"); // and its interface's
const QString managerPath = QStringLiteral("/org/freedesktop/NetworkManager");
const QString propertiesInterface = QStringLiteral("org.freedesktop.DBus.Properties");
const QString meteredProperty = QStringLiteral("Metered");

// NMMetered of the service's interface.
enum NMMetered : uint { unknown = 0, yes = 1, no = 2, guessYes = 3, guessNo = 4 };

} // namespace

NetworkManagerCost::NetworkManagerCost(const QDBusConnection& systemBus)
    : bus_(systemBus) {
    if (!bus_.isConnected())
        return;
    auto* watcher = new QDBusServiceWatcher(managerName, bus_, QDBusServiceWatcher::WatchForOwnerChange, this);
    connect(watcher, &QDBusServiceWatcher::serviceOwnerChanged, this,
            [this](const QString&, const QString&, const QString& owner) {
                forget();
                if (!owner.isEmpty())
                    ask();
            });
    bus_.connect(managerName, managerPath, propertiesInterface, QStringLiteral("PropertiesChanged"), this,
                 SLOT(propertiesChanged(QString, QVariantMap)));
    ask();
}

QString NetworkManagerCost::unavailableBecause() const {
    if (knowledge_ != Knowledge::none)
        return {};
    return QCoreApplication::translate(
        "quenby::NetworkManagerCost", "Nobody on this computer tells whether its connection is metered. NetworkManager "
                                      "would, where it manages the connection.");
}

void NetworkManagerCost::ask() {
    knowledge_ = Knowledge::asked;
    const int number = ++question_;
    QDBusMessage question =
        QDBusMessage::createMethodCall(managerName, managerPath, propertiesInterface, QStringLiteral("Get"));
    question << managerName << meteredProperty;
    question.setAutoStartService(false); // a computer that does without it goes on without it
    auto* watcher = new QDBusPendingCallWatcher(bus_.asyncCall(question), this);
    connect(watcher, &QDBusPendingCallWatcher::finished, this, [this, watcher, number] {
        watcher->deleteLater();
        const QDBusPendingReply<QVariant> reply = *watcher;
        // What it told in the meantime is newer than its answer.
        if (number != question_ || knowledge_ != Knowledge::asked)
            return;
        if (reply.isValid())
            take(reply.value());
        else
            forget();
    });
}

void NetworkManagerCost::propertiesChanged(const QString& interface, const QVariantMap& values) {
    const auto metered = values.constFind(meteredProperty);
    if (interface == managerName && metered != values.constEnd())
        take(*metered);
}

void NetworkManagerCost::take(const QVariant& metered) {
    const uint state = metered.toUInt();
    knowledge_ = state == NMMetered::unknown ? Knowledge::none : Knowledge::told;
    setMetered(state == NMMetered::yes || state == NMMetered::guessYes);
}

void NetworkManagerCost::forget() {
    knowledge_ = Knowledge::none;
    setMetered(false);
}

void NetworkManagerCost::setMetered(bool is) {
    if (std::exchange(isMetered_, is) != is)
        Q_EMIT changed();
}

} // namespace quenby
