// The proxies as the system has them: what the environment says, else what the desktop's settings say, or the script
// that they name. The computer itself is never reached by way of a proxy.
//
// Threads: any. The system may take long (a script is fetched from the network, a name is looked up), so it is asked on
// a thread that nobody waits for. What it said is kept for a short time for each scheme, host and port, and of those
// alone it learns: the rest of an address may be a secret.
#pragma once

#include "core/TimeSource.h"
#include "http/ProxySource.h"

#include <chrono>
#include <functional>
#include <memory>

namespace quenby {

// Asks the toolkit, and may wait. For a proxy that looks up names as well, names are left to it.
ProxyChoice desktopProxies(const QUrl& url);

class SystemProxies final : public ProxySource {
public:
    // Called on threads that may wait. Several calls at once for different addresses.
    using AskSystem = std::function<ProxyChoice(const QUrl&)>;
    static constexpr std::chrono::seconds keptFor{30};

    explicit SystemProxies(std::shared_ptr<TimeSource> timeSource, AskSystem askSystem = desktopProxies);
    // Whoever waits for an answer waits in vain.
    ~SystemProxies() override;

    // Says "none" to everybody from now on, also to those who are waiting.
    void setNone(bool none);
    CompletionTicket findProxies(const QUrl& url, QObject* context, Found found) override;

private:
    struct State;

    const std::shared_ptr<State> state_; // shared with the threads that wait for the system
};

} // namespace quenby
