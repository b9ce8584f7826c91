#include "app/account/SystemProxies.h"

#include "app/account/EnvironmentProxies.h"

#include <QHash>
#include <QNetworkProxy>

#include <atomic>
#include <mutex>
#include <system_error>
#include <thread>
#include <utility>

#include <cstdio>
#include <cstdlib>
#include <unistd.h>

namespace quenby {
namespace {

using Gate = CompletionGate<ProxyChoice>;

QUrl serverOf(const QUrl& url) {
    QUrl server;
    server.setScheme(url.scheme().toLower());
    server.setHost(url.host());
    server.setPort(url.port());
    server.setPath(QStringLiteral("/"));
    return server;
}

QUrl addressOf(const QNetworkProxy& proxy) {
    QUrl url;
    url.setScheme(proxy.type() == QNetworkProxy::Socks5Proxy ? QStringLiteral("socks5h") : QStringLiteral("http"));
    url.setHost(proxy.hostName());
    if (proxy.port() != 0)
        url.setPort(proxy.port());
    url.setUserName(proxy.user(), QUrl::DecodedMode);
    url.setPassword(proxy.password(), QUrl::DecodedMode);
    return url;
}

// How many threads are inside of the toolkit's call.
std::atomic<int> waitingForDesktop = 0;

// The toolkit waits for the desktop's library when the program ends, and a script's server may keep that waiting for
// ever. Runs before the toolkit's own handler, which was there earlier.
void leaveWithoutWaiting(int status, void*) {
    if (waitingForDesktop == 0)
        return;
    std::fflush(nullptr);
    ::_exit(status);
}

} // namespace

ProxyChoice desktopProxies(const QUrl& url) {
    ++waitingForDesktop;
    const QList<QNetworkProxy> all = QNetworkProxyFactory::systemProxyForQuery(QNetworkProxyQuery(url));
    --waitingForDesktop;
    ProxyChoice choice;
    for (const QNetworkProxy& proxy : all) {
        if (proxy.type() == QNetworkProxy::NoProxy)
            break; // what follows is worse than no proxy
        if (!proxy.hostName().isEmpty())
            choice.proxies.append(addressOf(proxy));
    }
    return choice;
}

struct SystemProxies::State {
    struct Kept {
        ProxyChoice choice;
        std::chrono::milliseconds since;
    };

    const std::shared_ptr<TimeSource> timeSource;
    const AskSystem askSystem;
    std::mutex mutex; // guards what follows; not held while a gate delivers
    bool isNone = false;
    QHash<QUrl, Kept> kept;
    QHash<QUrl, QList<Gate>> waiting; // for an answer that is on its way

    // Who is told, and what is kept from now on.
    QList<Gate> answered(const QUrl& server, const ProxyChoice& choice) {
        const std::lock_guard lock(mutex);
        const std::chrono::milliseconds now = timeSource->elapsed();
        kept.removeIf([now](const auto& entry) { return now - entry.value().since >= keptFor; });
        if (!isNone)
            kept.insert(server, {choice, now});
        return waiting.take(server);
    }

    static void ask(const std::shared_ptr<State>& state, const QUrl& server) {
        const auto answer = [state, server](const ProxyChoice& choice) {
            const QList<Gate> gates = state->answered(server, choice);
            for (const Gate& gate : gates)
                gate.deliver(choice);
        };
        try {
            std::thread([state, server, answer] { answer(state->askSystem(server)); }).detach();
        } catch (const std::system_error&) {
            answer({}); // the computer can start no more threads now
        }
    }
};

SystemProxies::SystemProxies(std::shared_ptr<TimeSource> timeSource, AskSystem askSystem)
    : state_(new State{std::move(timeSource), std::move(askSystem), {}, false, {}, {}}) {}

SystemProxies::~SystemProxies() {
    bool isAsking = false; // by a thread that may not have come as far as the toolkit
    {
        const std::lock_guard lock(state_->mutex);
        isAsking = !state_->waiting.isEmpty();
        state_->waiting.clear();
    }
    if (isAsking || waitingForDesktop > 0)
        ::on_exit(leaveWithoutWaiting, nullptr);
}

void SystemProxies::setNone(bool none) {
    QHash<QUrl, QList<Gate>> released;
    {
        const std::lock_guard lock(state_->mutex);
        state_->isNone = none;
        state_->kept.clear();
        if (none)
            released = std::exchange(state_->waiting, {});
    }
    for (const QList<Gate>& gates : std::as_const(released)) {
        for (const Gate& gate : gates)
            gate.deliver(ProxyChoice{});
    }
}

CompletionTicket SystemProxies::findProxies(const QUrl& url, QObject* context, Found found) {
    const Gate gate(context, std::move(found));
    const QUrl server = serverOf(url);
    std::optional<ProxyChoice> known;
    bool isFirst = false;
    {
        const std::lock_guard lock(state_->mutex);
        if (state_->isNone || isLoopbackHost(server.host()))
            known = ProxyChoice{};
        else
            known = environmentProxies(server);
        const auto kept = state_->kept.constFind(server);
        if (!known && kept != state_->kept.cend() && state_->timeSource->elapsed() - kept->since < keptFor)
            known = kept->choice;
        if (!known) {
            QList<Gate>& waiting = state_->waiting[server];
            isFirst = waiting.isEmpty();
            waiting.append(gate);
        }
    }
    if (known)
        gate.deliver(*known);
    else if (isFirst)
        State::ask(state_, server);
    return gate.ticket();
}

} // namespace quenby
