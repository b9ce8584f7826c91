#include "oauth2/NetworkInformationReachability.h"

#include <QHostAddress>
#include <QNetworkInformation>
#include <QObject>
#include <QTimer>

#include <optional>
#include <utility>

namespace quenby {
namespace {

bool isThisComputer(const QString& host) {
    return host.compare(QLatin1String("localhost"), Qt::CaseInsensitive) == 0 || QHostAddress(host).isLoopback();
}

bool isNetworkReachable(const QNetworkInformation& network) {
    using Reachability = QNetworkInformation::Reachability;
    const Reachability reachability = network.reachability();
    const bool hasWayOut = reachability != Reachability::Disconnected && reachability != Reachability::Local;
    return hasWayOut && !network.isBehindCaptivePortal();
}

class NetworkWatch final : public HostReachability::Watch {
public:
    NetworkWatch(const QNetworkInformation& network, HostReachability::Changed changed)
        : network_(network)
        , changed_(std::move(changed)) {
        const auto report = [this] { reportIfChanged(); };
        QObject::connect(&network, &QNetworkInformation::reachabilityChanged, &context_, report);
        QObject::connect(&network, &QNetworkInformation::isBehindCaptivePortalChanged, &context_, report);
        QTimer::singleShot(0, &context_, report);
    }

private:
    void reportIfChanged() {
        const bool isReachable = isNetworkReachable(network_);
        if (std::exchange(lastReported_, isReachable) == isReachable)
            return;
        const HostReachability::Changed changed = changed_; // may end this watch
        changed(isReachable);
    }

    const QNetworkInformation& network_;
    HostReachability::Changed changed_;
    std::optional<bool> lastReported_;
    QObject context_;
};

} // namespace

std::unique_ptr<HostReachability::Watch> NetworkInformationReachability::watchHost(const QString& host,
                                                                                   Changed changed) {
    if (isThisComputer(host) || !QNetworkInformation::loadDefaultBackend())
        return nullptr;
    return std::make_unique<NetworkWatch>(*QNetworkInformation::instance(), std::move(changed));
}

} // namespace quenby
