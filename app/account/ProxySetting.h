// How the Drive is reached, by the setting "proxy": "none" for no proxy at all, anything else for what the system has.
// It holds for our own connections, by way of source(), and for the pages of the web engine, which follows the toolkit.
//
// Threads: the main thread. What it is given outlives it. A change acts on the next request, and on the next that a
// page makes.
#pragma once

#include "app/account/SystemProxies.h"

#include <QObject>

namespace quenby {

class Defaults;

class ProxySetting : public QObject {
    Q_OBJECT

public:
    ProxySetting(const Defaults& defaults, std::shared_ptr<TimeSource> timeSource, QObject* parent = nullptr);

    // Lives as long as somebody holds it, and stays as it is when this object goes.
    std::shared_ptr<ProxySource> source() const { return source_; }

private:
    void apply();

    const Defaults& defaults_;
    const std::shared_ptr<SystemProxies> source_;
};

} // namespace quenby
