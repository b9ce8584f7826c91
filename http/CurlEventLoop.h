// Runs libcurl's transfers on a thread's Qt event loop: libcurl says which sockets to watch and when it wants to be
// called again; there is no thread and no polling of its own.
//
// There is one per thread that fetches, made with the thread's first transfer: a multi handle and the connections that
// it keeps open for reuse cannot be shared between threads. It is held by the thread and by the transfers that run on
// it, and goes when the thread ends (QThread::finished, or the end of thread-local objects on threads that are none of
// Qt's), so nothing outlives the event loop that it depends on. That is thread-local storage, not a singleton: what
// happens on one thread cannot be seen on another.
#pragma once

#include <curl/curl.h>

#include <QObject>
#include <QSocketNotifier>
#include <QTimer>

#include <memory>
#include <unordered_map>
#include <vector>

namespace quenby {

class CurlTransfer;

class CurlEventLoop : public QObject, public std::enable_shared_from_this<CurlEventLoop> {
    Q_OBJECT

public:
    static std::shared_ptr<CurlEventLoop> ofThisThread();
    ~CurlEventLoop() override;

    // Runs the transfer's handle until it is done; CurlTransfer::exchangeDidEnd() is then called from the event loop,
    // with the handle removed.
    void add(const std::shared_ptr<CurlTransfer>& transfer);
    // Ends it without that call. Both may be called from inside libcurl's callbacks.
    void remove(const std::shared_ptr<CurlTransfer>& transfer);
    // The transfer, which had nothing to send for a while, is asked for its body again. Not from inside a callback.
    void resumeSending(const CurlTransfer& transfer);

    // Bytes that the transfer has written and the other side has not yet acknowledged.
    qint64 unacknowledgedBytes(const CurlTransfer& transfer) const;

private:
    struct Socket {
        CURL* user = nullptr; // the transfer that it serves, or one of those
        std::unique_ptr<QSocketNotifier, void (*)(QSocketNotifier*)> readable;
        std::unique_ptr<QSocketNotifier, void (*)(QSocketNotifier*)> writable;
    };
    struct MultiDeleter {
        void operator()(CURLM* multi) const { curl_multi_cleanup(multi); }
    };

    CurlEventLoop();

    static int socketFunction(CURL* easy, curl_socket_t socket, int what, void* self, void*);
    static int timerFunction(CURLM*, long milliseconds, void* self);
    void watch(CURL* easy, curl_socket_t socket, int what);
    void act(curl_socket_t socket, int events);
    void addNow(const std::shared_ptr<CurlTransfer>& transfer);
    void removeNow(const std::shared_ptr<CurlTransfer>& transfer);
    void doWhatWaited();
    void reportEnded();

    bool isInsideCurl_ = false; // libcurl must not be entered again from its callbacks
    QTimer timer_;
    std::unordered_map<curl_socket_t, Socket> sockets_;
    std::unordered_map<CURL*, std::shared_ptr<CurlTransfer>> running_;
    std::vector<std::shared_ptr<CurlTransfer>> toAdd_; // asked for from inside libcurl
    std::vector<std::shared_ptr<CurlTransfer>> toRemove_;
    std::unique_ptr<CURLM, MultiDeleter> multi_; // the last: while it goes it calls back
};

} // namespace quenby
