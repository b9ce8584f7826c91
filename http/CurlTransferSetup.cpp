// CurlTransfer: what libcurl is told before an exchange.
#include "http/CurlTransfer.h"

#include <type_traits>

namespace quenby {
namespace {

// The most that libcurl grants both ways: fewer calls for a large body.
constexpr long transferBufferBytes = 512 * 1024;

template <typename Value>
void setOption(CURL* easy, CURLoption option, Value value) {
    if constexpr (std::is_same_v<Value, int> || std::is_same_v<Value, bool>)
        curl_easy_setopt(easy, option, static_cast<long>(value));
    else
        curl_easy_setopt(easy, option, value);
}

// Decided by libcurl alone, from the body that it is given.
bool isFramingField(const QByteArray& name) {
    for (const char* own : {"Content-Length", "Transfer-Encoding", "Expect", "Connection", "Upgrade"}) {
        if (name.compare(own, Qt::CaseInsensitive) == 0)
            return true;
    }
    return false;
}

unsigned long authSchemes(ChallengeScheme scheme) {
    switch (scheme) {
    case ChallengeScheme::basic:
        return CURLAUTH_BASIC;
    case ChallengeScheme::digest:
        return CURLAUTH_DIGEST;
    case ChallengeScheme::basicOrDigest:
        break;
    }
    return CURLAUTH_BASIC | CURLAUTH_DIGEST;
}

} // namespace

void CurlTransfer::configure() {
    CURL* easy = handle();
    curl_easy_reset(easy);
    errorText_.fill('\0');
    setOption(easy, CURLOPT_ERRORBUFFER, errorText_.data());
    setOption(easy, CURLOPT_NOSIGNAL, true);
    setOption(easy, CURLOPT_PROTOCOLS_STR, "http,https");
    setOption(easy, CURLOPT_FOLLOWLOCATION, false);
    setOption(easy, CURLOPT_SUPPRESS_CONNECT_HEADERS, true);
    setOption(easy, CURLOPT_HTTP_VERSION, int(CURL_HTTP_VERSION_2TLS));
    setOption(easy, CURLOPT_TCP_KEEPALIVE, true);
    setOption(easy, CURLOPT_BUFFERSIZE, transferBufferBytes);
    setOption(easy, CURLOPT_UPLOAD_BUFFERSIZE, transferBufferBytes);
    setOption(easy, CURLOPT_CONNECTTIMEOUT_MS, request_.timeout.count());
    configureRequest();
    configureHeaders();
    configureTrust();
    configureProxy();
    configureLogins();
    configureCallbacks();
}

void CurlTransfer::configureRequest() {
    CURL* easy = handle();
    // A user in the address is no login: those are the client's, given to a challenge.
    const QByteArray url = request_.url.toEncoded(QUrl::RemoveFragment | QUrl::RemoveUserInfo);
    setOption(easy, CURLOPT_URL, url.constData());
    setOption(easy, CURLOPT_PATH_AS_IS, true);
    const QByteArray method = request_.httpMethod.isEmpty() ? QByteArray("GET") : request_.httpMethod;
    if (body_.exists() || (method != "GET" && method != "HEAD" && method != "DELETE" && method != "OPTIONS")) {
        setOption(easy, CURLOPT_UPLOAD, true);
        setOption(easy, CURLOPT_INFILESIZE_LARGE, curl_off_t(body_.length()));
    } else if (method == "HEAD") {
        setOption(easy, CURLOPT_NOBODY, true);
    }
    setOption(easy, CURLOPT_CUSTOMREQUEST, method.constData());
}

void CurlTransfer::configureHeaders() {
    curl_slist* list = nullptr;
    const auto add = [&list](const QByteArray& line) { list = curl_slist_append(list, line.constData()); };
    add("Expect:"); // no waiting for "100 Continue": an early refusal is read while the body goes out
    for (const auto& [name, value] : request_.headers) {
        if (!isFramingField(name))
            add(value.isEmpty() ? QByteArray(name + ';') : QByteArray(name + ": " + value));
    }
    headerList_.reset(list);
    setOption(handle(), CURLOPT_HTTPHEADER, list);
    // A range counts bytes of what is sent; unpacking would shift them.
    if (!request_.headers.contains("Range") && !request_.headers.contains("Accept-Encoding"))
        setOption(handle(), CURLOPT_ACCEPT_ENCODING, "");
}

void CurlTransfer::configureTrust() {
    setOption(handle(), CURLOPT_SSL_VERIFYPEER, true);
    setOption(handle(), CURLOPT_SSL_VERIFYHOST, 2);
    if (const QByteArray file = qgetenv("SSL_CERT_FILE"); !file.isEmpty()) {
        setOption(handle(), CURLOPT_CAINFO, file.constData());
        setOption(handle(), CURLOPT_PROXY_CAINFO, file.constData());
    }
    if (const QByteArray folder = qgetenv("SSL_CERT_DIR"); !folder.isEmpty()) {
        setOption(handle(), CURLOPT_CAPATH, folder.constData());
        setOption(handle(), CURLOPT_PROXY_CAPATH, folder.constData());
    }
}

// Both options keep libcurl from reading the environment, which the source knows as well. The address goes without its
// credential, so that libcurl can put it into no error text.
void CurlTransfer::configureProxy() {
    if (!proxySource_)
        return;
    const auto serverOnly = QUrl::RemoveUserInfo | QUrl::RemovePath | QUrl::RemoveQuery | QUrl::RemoveFragment;
    setOption(handle(), CURLOPT_PROXY, proxy_.toEncoded(serverOnly).constData());
    setOption(handle(), CURLOPT_NOPROXY, "");
}

void CurlTransfer::configureLogins() {
    CURL* easy = handle();
    if (serverLogin_) {
        setOption(easy, CURLOPT_USERNAME, serverLogin_->credential.user.toUtf8().constData());
        setOption(easy, CURLOPT_PASSWORD, serverLogin_->credential.password.toUtf8().constData());
        setOption(easy, CURLOPT_HTTPAUTH, authSchemes(serverLogin_->scheme));
    }
    if (proxyLogin_) {
        setOption(easy, CURLOPT_PROXYUSERNAME, proxyLogin_->credential.user.toUtf8().constData());
        setOption(easy, CURLOPT_PROXYPASSWORD, proxyLogin_->credential.password.toUtf8().constData());
        setOption(easy, CURLOPT_PROXYAUTH, authSchemes(proxyLogin_->scheme));
    }
}

void CurlTransfer::configureCallbacks() {
    CURL* easy = handle();
    const auto connectCallback = [this, easy](CURLoption functionOption, CURLoption dataOption, auto* function) {
        setOption(easy, functionOption, function);
        setOption(easy, dataOption, static_cast<void*>(this));
    };
    connectCallback(
        CURLOPT_PREREQFUNCTION, CURLOPT_PREREQDATA,
        +[](void* self, char*, char*, int, int) { return static_cast<CurlTransfer*>(self)->requestWillBegin(); });
    connectCallback(
        CURLOPT_READFUNCTION, CURLOPT_READDATA, +[](char* buffer, size_t, size_t size, void* self) {
            return static_cast<CurlTransfer*>(self)->readBody(buffer, size);
        });
    connectCallback(
        CURLOPT_SEEKFUNCTION, CURLOPT_SEEKDATA, +[](void* self, curl_off_t offset, int origin) {
            return static_cast<CurlTransfer*>(self)->seekBody(offset, origin);
        });
    connectCallback(
        CURLOPT_HEADERFUNCTION, CURLOPT_HEADERDATA, +[](char* line, size_t, size_t size, void* self) {
            return static_cast<CurlTransfer*>(self)->receiveHeaderLine({line, static_cast<qsizetype>(size)});
        });
    connectCallback(
        CURLOPT_WRITEFUNCTION, CURLOPT_WRITEDATA, +[](char* data, size_t, size_t size, void* self) {
            return static_cast<CurlTransfer*>(self)->receiveBody({data, static_cast<qsizetype>(size)});
        });
    if (!body_.exists())
        return;
    setOption(easy, CURLOPT_NOPROGRESS, false);
    connectCallback(
        CURLOPT_XFERINFOFUNCTION, CURLOPT_XFERINFODATA,
        +[](void* self, curl_off_t, curl_off_t, curl_off_t, curl_off_t bytesSent) {
            return static_cast<CurlTransfer*>(self)->progressed(bytesSent);
        });
}

} // namespace quenby
