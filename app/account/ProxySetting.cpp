#include "app/account/ProxySetting.h"

#include "core/DefaultsKeys.h"
#include "platform/Defaults.h"

#include <QNetworkProxy>

namespace quenby {

ProxySetting::ProxySetting(const Defaults& defaults, std::shared_ptr<TimeSource> timeSource, QObject* parent)
    : QObject(parent)
    , defaults_(defaults)
    , source_(std::make_shared<SystemProxies>(std::move(timeSource))) {
    connect(&defaults, &Defaults::changed, this, [this](const QString& key) {
        if (key == defaultsKey::proxy)
            apply();
    });
    apply();
}

void ProxySetting::apply() {
    const bool none = defaults_.valueForKey(defaultsKey::proxy).toString() == QLatin1String("none");
    source_->setNone(none);
    // The web engine asks the system in its own way, or takes the program's proxy.
    QNetworkProxyFactory::setUseSystemConfiguration(!none);
    if (none)
        QNetworkProxy::setApplicationProxy(QNetworkProxy::NoProxy);
}

} // namespace quenby
