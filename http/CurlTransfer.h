// One CurlConnection's life: an exchange with the server, and another for each redirect that the client follows and
// each credential that it offers.
//
// Threads: one, whose event loop runs it. Shared by the connection and, while an exchange runs, the event loop.
#pragma once

#include "http/Challenge.h"
#include "http/ProxySource.h"
#include "http/RequestBody.h"
#include "http/ResponseHead.h"
#include "http/SendPace.h"
#include "http/StallWatch.h"
#include "http/URLConnection.h"

#include <curl/curl.h>

#include <array>
#include <memory>
#include <optional>

namespace quenby {

class CurlEventLoop;

class CurlTransfer : public std::enable_shared_from_this<CurlTransfer> {
public:
    // The source may be null.
    CurlTransfer(const URLRequest& request, URLConnectionClient& client, std::shared_ptr<CurlEventLoop> loop,
                 std::shared_ptr<ProxySource> proxySource);
    ~CurlTransfer();
    CurlTransfer(const CurlTransfer&) = delete;
    CurlTransfer& operator=(const CurlTransfer&) = delete;

    void start() { beginExchange(); }
    void cancel(); // the client is not called any more
    void setMaxSendSpeed(qint64 bytesPerSecond) { sendPace_.setSpeed(bytesPerSecond); }

    CURL* handle() const { return easy_.get(); }
    // Called by the event loop, outside of libcurl.
    void exchangeDidEnd(CURLcode code);

private:
    struct HandleDeleter {
        void operator()(CURL* easy) const { curl_easy_cleanup(easy); }
    };
    struct ListDeleter {
        void operator()(curl_slist* list) const { curl_slist_free_all(list); }
    };
    // A credential that the client has given for a challenge, and how it is to be presented.
    struct Login {
        Credential credential;
        ChallengeScheme scheme = ChallengeScheme::basic;
        int attempts = 0; // 0: nobody was asked, it stands in the proxy's address
    };
    // What is to be done with the body of the response that is being received.
    enum class BodyUse { deliver, discard };

    // Setting up (CurlTransferSetup.cpp)
    void configure();
    void configureRequest();
    void configureHeaders();
    void configureTrust();
    void configureProxy();
    void configureLogins();
    void configureCallbacks();

    // libcurl's callbacks, in the order of an exchange
    int requestWillBegin();
    size_t readBody(char* buffer, size_t size);
    int seekBody(curl_off_t offset, int origin);
    int progressed(curl_off_t bytesSent);
    size_t receiveHeaderLine(QByteArrayView line);
    size_t receiveBody(QByteArrayView data);

    void beginExchange();
    bool isProxyKnown() const;
    void findProxy();
    void useProxy(const ProxyChoice& choice);
    void runExchange();
    QString proxyName() const; // host and port; empty when there is none, or none is known
    bool isRepeatable() const;
    void headIsComplete();
    bool answerChallenge(const PasswordChallenge& challenge);
    bool tryProxyAddressAgain(ChallengeScheme scheme);
    void deliverResponse(const HTTPResponse& response);
    void reportBytesSent(qint64 sent);
    HTTPResponse response() const;
    MaybeError errorOfEndedExchange(CURLcode code);
    void fail(const Error& error);
    void finish();
    void stalled();

    const std::shared_ptr<CurlEventLoop> loop_;
    const std::shared_ptr<ProxySource> proxySource_;
    const std::unique_ptr<CURL, HandleDeleter> easy_;
    URLConnectionClient* client_; // null once there is nothing more to tell it
    URLRequest request_;
    RequestBody body_;
    StallWatch stallWatch_;
    SendPace sendPace_;
    int redirects_ = 0;
    std::optional<Login> serverLogin_;
    std::optional<Login> proxyLogin_;
    CompletionTicket proxyQuestion_;
    QUrl proxyIsFor_; // the address that it was found for
    QUrl proxy_;      // empty for none

    // Of the running exchange
    std::unique_ptr<curl_slist, ListDeleter> headerList_;
    std::array<char, CURL_ERROR_SIZE> errorText_{};
    ResponseHead head_;
    BodyUse bodyUse_ = BodyUse::deliver;
    qint64 discardedBytes_ = 0;
    qint64 bytesSent_ = 0;
    bool isAwaitingAnswer_ = false; // a request has begun and nothing has come back for it
    bool isResponseDelivered_ = false;
    bool isResponseDeferred_ = false; // a 401 within a digest login, which libcurl may answer by itself
    bool goesOn_ = false;             // another exchange follows
    MaybeError failure_;              // found in a callback; says more than libcurl's code
};

} // namespace quenby
