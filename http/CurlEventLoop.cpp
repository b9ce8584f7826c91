#include "http/CurlEventLoop.h"

#include "http/CurlTransfer.h"

#include <QThread>

#include <algorithm>
#include <linux/sockios.h>
#include <sys/ioctl.h>

namespace quenby {
namespace {

// libcurl's own set-up, once for the process and undone at its end.
class CurlLibrary {
public:
    CurlLibrary() { curl_global_init(CURL_GLOBAL_DEFAULT); }
    ~CurlLibrary() { curl_global_cleanup(); }
    CurlLibrary(const CurlLibrary&) = delete;
    CurlLibrary& operator=(const CurlLibrary&) = delete;
};

// Idle connections kept for reuse: enough for a full set of fetchers to one host and a few others.
constexpr long maxIdleConnections = 16;

// A notifier is often let go while it is telling of its event.
void retire(QSocketNotifier* notifier) {
    notifier->setEnabled(false);
    notifier->deleteLater();
}

} // namespace

std::shared_ptr<CurlEventLoop> CurlEventLoop::ofThisThread() {
    static const CurlLibrary library;
    thread_local std::shared_ptr<CurlEventLoop> loop;
    if (!loop) {
        loop = std::shared_ptr<CurlEventLoop>(new CurlEventLoop);
        connect(
            QThread::currentThread(), &QThread::finished, loop.get(), [] { loop = nullptr; }, Qt::DirectConnection);
    }
    return loop;
}

CurlEventLoop::CurlEventLoop()
    : multi_(curl_multi_init()) {
    curl_multi_setopt(multi_.get(), CURLMOPT_SOCKETFUNCTION, &CurlEventLoop::socketFunction);
    curl_multi_setopt(multi_.get(), CURLMOPT_SOCKETDATA, this);
    curl_multi_setopt(multi_.get(), CURLMOPT_TIMERFUNCTION, &CurlEventLoop::timerFunction);
    curl_multi_setopt(multi_.get(), CURLMOPT_TIMERDATA, this);
    curl_multi_setopt(multi_.get(), CURLMOPT_MAXCONNECTS, maxIdleConnections);
    timer_.setSingleShot(true);
    timer_.setTimerType(Qt::PreciseTimer);
    connect(&timer_, &QTimer::timeout, this, [this] { act(CURL_SOCKET_TIMEOUT, 0); });
}

CurlEventLoop::~CurlEventLoop() = default;

void CurlEventLoop::add(const std::shared_ptr<CurlTransfer>& transfer) {
    if (isInsideCurl_)
        toAdd_.push_back(transfer);
    else
        addNow(transfer);
}

void CurlEventLoop::addNow(const std::shared_ptr<CurlTransfer>& transfer) {
    running_.emplace(transfer->handle(), transfer);
    curl_multi_add_handle(multi_.get(), transfer->handle());
}

void CurlEventLoop::remove(const std::shared_ptr<CurlTransfer>& transfer) {
    std::erase(toAdd_, transfer);
    if (isInsideCurl_)
        toRemove_.push_back(transfer);
    else
        removeNow(transfer);
}

void CurlEventLoop::removeNow(const std::shared_ptr<CurlTransfer>& transfer) {
    if (running_.erase(transfer->handle()) > 0)
        curl_multi_remove_handle(multi_.get(), transfer->handle());
}

void CurlEventLoop::resumeSending(const CurlTransfer& transfer) {
    if (isInsideCurl_ || !running_.contains(transfer.handle()))
        return;
    const auto self = shared_from_this();
    isInsideCurl_ = true;
    curl_easy_pause(transfer.handle(), CURLPAUSE_CONT);
    isInsideCurl_ = false;
    doWhatWaited();
}

qint64 CurlEventLoop::unacknowledgedBytes(const CurlTransfer& transfer) const {
    qint64 bytes = 0;
    for (const auto& [descriptor, socket] : sockets_) {
        int queued = 0;
        if (socket.user == transfer.handle() && ::ioctl(descriptor, SIOCOUTQ, &queued) == 0)
            bytes += queued;
    }
    return bytes;
}

int CurlEventLoop::socketFunction(CURL* easy, curl_socket_t socket, int what, void* self, void*) {
    static_cast<CurlEventLoop*>(self)->watch(easy, socket, what);
    return 0;
}

int CurlEventLoop::timerFunction(CURLM*, long milliseconds, void* self) {
    QTimer& timer = static_cast<CurlEventLoop*>(self)->timer_;
    if (milliseconds < 0)
        timer.stop();
    else
        timer.start(std::chrono::milliseconds(milliseconds));
    return 0;
}

void CurlEventLoop::watch(CURL* easy, curl_socket_t socket, int what) {
    if (what == CURL_POLL_REMOVE) {
        sockets_.erase(socket);
        return;
    }
    Socket& watched = sockets_.try_emplace(socket, Socket{easy, {nullptr, retire}, {nullptr, retire}}).first->second;
    watched.user = easy;
    const auto enable = [this, socket](auto& notifier, QSocketNotifier::Type type, bool wanted, int event) {
        if (!notifier && wanted) {
            notifier.reset(new QSocketNotifier(socket, type));
            connect(notifier.get(), &QSocketNotifier::activated, this, [this, socket, event] { act(socket, event); });
        } else if (notifier && notifier->isEnabled() != wanted) {
            notifier->setEnabled(wanted);
        }
    };
    enable(watched.readable, QSocketNotifier::Read, what & CURL_POLL_IN, CURL_CSELECT_IN);
    enable(watched.writable, QSocketNotifier::Write, what & CURL_POLL_OUT, CURL_CSELECT_OUT);
}

void CurlEventLoop::act(curl_socket_t socket, int events) {
    if (isInsideCurl_)
        return;                           // a client runs a nested event loop inside a callback, which it must not
    const auto self = shared_from_this(); // the last transfer may end in here, and the thread with it
    isInsideCurl_ = true;
    int stillRunning = 0;
    curl_multi_socket_action(multi_.get(), socket, events, &stillRunning);
    isInsideCurl_ = false;
    doWhatWaited();
    reportEnded();
}

void CurlEventLoop::doWhatWaited() {
    for (const auto& transfer : std::exchange(toRemove_, {}))
        removeNow(transfer);
    for (const auto& transfer : std::exchange(toAdd_, {}))
        addNow(transfer);
}

void CurlEventLoop::reportEnded() {
    std::vector<std::pair<std::shared_ptr<CurlTransfer>, CURLcode>> ended;
    int messages = 0;
    while (const CURLMsg* message = curl_multi_info_read(multi_.get(), &messages)) {
        const auto found = running_.find(message->easy_handle);
        if (message->msg == CURLMSG_DONE && found != running_.end())
            ended.emplace_back(found->second, message->data.result);
    }
    for (const auto& [transfer, code] : ended)
        removeNow(transfer);
    for (const auto& [transfer, code] : ended)
        transfer->exchangeDidEnd(code);
}

} // namespace quenby
