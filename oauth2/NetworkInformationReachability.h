// Reachability as the desktop's network service tells it. It knows the computer's connection, not the host: a public
// host counts as unreachable while there is no way out or a captive portal stands in it; this computer itself can
// always be reached. Main thread only.
#pragma once

#include "oauth2/HostReachability.h"

namespace quenby {

class NetworkInformationReachability final : public HostReachability {
public:
    std::unique_ptr<Watch> watchHost(const QString& host, Changed changed) override;
};

} // namespace quenby
