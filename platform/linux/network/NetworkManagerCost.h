// What the connection costs, as org.freedesktop.NetworkManager tells it: "Metered" is true of the connection that the
// computer's traffic takes, also where the service only guesses it.
//
// Asked directly rather than through the toolkit, whose backend waits for the service while it is loaded, and goes on
// with the last answer when the service ends or begins later.
//
// Threads: the main thread; one question whenever the service begins to run, afterwards it tells.
#pragma once

#include "platform/NetworkCost.h"

#include <QDBusConnection>
#include <QVariantMap>

namespace quenby {

class NetworkManagerCost final : public NetworkCost {
    Q_OBJECT

public:
    explicit NetworkManagerCost(const QDBusConnection& systemBus = QDBusConnection::systemBus());

    bool isMetered() const override { return isMetered_; }
    // Also while the service, though it runs, does not know.
    QString unavailableBecause() const override;

private Q_SLOTS:
    void propertiesChanged(const QString& interface, const QVariantMap& values);

private:
    enum class Knowledge { none, asked, told };

    void ask();
    void take(const QVariant& metered);
    void forget();
    void setMetered(bool is);

    QDBusConnection bus_;
    Knowledge knowledge_ = Knowledge::none;
    int question_ = 0; // the newest one's number
    bool isMetered_ = false;
};

} // namespace quenby
