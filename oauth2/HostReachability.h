// Whether a host can be reached as far as this computer can tell without asking it.
#pragma once

#include <QString>

#include <functional>
#include <memory>

namespace quenby {

class HostReachability {
public:
    // A running watch. Destroying it ends the calls.
    class Watch {
    public:
        virtual ~Watch() = default;
    };

    // Called on the watcher's thread, never from inside watchHost(): soon after it with the state as it is, then with
    // every change.
    using Changed = std::function<void(bool isReachable)>;

    virtual ~HostReachability() = default;
    // Null when this computer cannot tell.
    virtual std::unique_ptr<Watch> watchHost(const QString& host, Changed changed) = 0;
};

} // namespace quenby
