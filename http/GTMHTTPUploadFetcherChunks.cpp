// The chunks of an upload: each a request of its own, by a fetcher without a service.
#include "http/GTMHTTPUploadFetcher.h"

#include "http/HTTPLog.h"

#include <algorithm>
#include <cmath>

namespace quenby {
namespace {

constexpr int resumeIncompleteStatus = 308;
constexpr double longestMaxRetryInterval = 600; // seconds; what a PUT gets when nobody chose

// Not null: the request has a body, of no bytes.
const QByteArray emptyBody = QByteArrayLiteral("");

// To a chunk 308 says "go on", even when it names a location; to other requests it is a redirect.
class ChunkFetcher final : public GTMHTTPFetcher {
public:
    static std::shared_ptr<GTMHTTPFetcher> create(const URLRequest& request) {
        return share(new ChunkFetcher(request));
    }

protected:
    std::optional<URLRequest> connectionWillSendRequest(const URLRequest& redirected,
                                                        const HTTPResponse& redirectResponse) override {
        if (redirectResponse.statusCode == resumeIncompleteStatus)
            return std::nullopt;
        return GTMHTTPFetcher::connectionWillSendRequest(redirected, redirectResponse);
    }

private:
    using GTMHTTPFetcher::GTMHTTPFetcher;
};

int effectivePort(const QUrl& url) { return url.port(url.scheme() == QLatin1String("https") ? 443 : 80); }

bool haveSameOrigin(const QUrl& a, const QUrl& b) {
    return a.scheme() == b.scheme() && a.host() == b.host() && effectivePort(a) == effectivePort(b);
}

void setContent(URLRequest& request, const UploadPlan::Piece& piece) {
    request.headers.set("Content-Range", piece.contentRange);
    request.headers.set("Content-Length", QByteArray::number(piece.length));
}

// An error's details without the address, which is the upload's location.
QVariantMap publicDetails(const Error& error) {
    QVariantMap details = error.details();
    details.remove(errorKey::failingURL);
    return details;
}

} // namespace

// Whether the chunk began; when it did not, its callback brings the reason.
bool GTMHTTPUploadFetcher::send(const UploadPlan::Piece& piece, const QVariantMap& fetcherProperties) {
    currentOffset_ = piece.offset;
    const URLRequest request = makeChunkRequest(piece);
    mutableRequest() = request;
    setIsURLSecret(true);
    chunkFetcher_ = makeChunkFetcher(request, piece);
    chunkFetcher_->addPropertiesFromDictionary(fetcherProperties);
    return chunkFetcher_->beginFetchWithCompletionHandler(
        this, [this](const QByteArray& data, const MaybeError& error) { chunkDidEnd(data, error); });
}

// Whoever was told the location may have paused the upload, stopped it, or even resumed it.
bool GTMHTTPUploadFetcher::maySendNext() {
    if (!isUploading_ || chunkFetcher_ || GTMHTTPFetcher::isFetching())
        return false;
    if (isPaused_)
        givePlaceBack();
    return !isPaused_;
}

void GTMHTTPUploadFetcher::sendNext(const UploadPlan::Piece& piece, const QVariantMap& fetcherProperties) {
    if (!maySendNext())
        return;
    const SendGate gate = sendGate_;
    if (!gate) {
        send(piece, fetcherProperties);
        return;
    }
    currentOffset_ = piece.offset;
    gate([weak = weak_from_this(), number = ++gateNumber_, piece, fetcherProperties] {
        const auto self = std::static_pointer_cast<GTMHTTPUploadFetcher>(weak.lock());
        if (self && self->gateNumber_ == number && self->maySendNext())
            self->send(piece, fetcherProperties);
    });
}

URLRequest GTMHTTPUploadFetcher::makeChunkRequest(const UploadPlan::Piece& piece) const {
    URLRequest chunk(locationURL_);
    chunk.httpMethod = "PUT";
    chunk.timeout = request().timeout;
    if (request().headers.contains("User-Agent"))
        chunk.headers.set("User-Agent", request().headers.value("User-Agent"));
    chunk.headers.set("Content-Type", uploadMIMEType_);
    setContent(chunk, piece);
    return chunk;
}

std::shared_ptr<GTMHTTPFetcher> GTMHTTPUploadFetcher::makeChunkFetcher(const URLRequest& request,
                                                                       const UploadPlan::Piece& piece) {
    const auto chunk = ChunkFetcher::create(request);
    chunk->setIsURLSecret(true);
    if (piece.length > 0)
        chunk->setPostStream(source_.openWindow(piece.offset, piece.length), static_cast<qint64>(piece.length));
    else
        chunk->setPostData(emptyBody);
    chunk->setMaxSendSpeed(maxSendSpeed());
    chunk->setAllowedInsecureSchemes(allowedInsecureSchemes());
    chunk->setAllowLocalhostRequest(allowLocalhostRequest());
    chunk->setCookieStorageMethod(cookieStorageMethod());
    chunk->setConnectionClass(connectionClass());
    chunk->setTimeSource(timeSource());
    chunk->setLogger(logger());
    chunk->setComment(
        QString(comment() + QStringLiteral(" (") + QString::fromLatin1(piece.contentRange) + QLatin1Char(')')));
    if (haveSameOrigin(request.url, authorizedBase_))
        chunk->setAuthorizer(authorizer());
    chunk->setSentDataBlock([this](qint64 bytes, qint64 totalBytes, qint64) { chunkDidSendData(bytes, totalBytes); });
    copyRetrySettings(*chunk);
    chunk->setRetryBlock([this](bool suggested, const Error& error) { return chunkWillRetry(suggested, error); });
    return chunk;
}

// After fruitless answers the first delay is as long as if the chunks before had been retries of this one.
void GTMHTTPUploadFetcher::copyRetrySettings(GTMHTTPFetcher& chunk) const {
    chunk.setRetryEnabled(isRetryEnabled());
    if (!isRetryEnabled())
        return;
    const double longest = maxRetryInterval() > 0 ? maxRetryInterval() : longestMaxRetryInterval;
    const double shortest = retryPolicy().minRetryInterval();
    const double grown = std::ldexp(shortest, plan_.fruitlessAnswers());
    chunk.setMaxRetryInterval(maxRetryInterval());
    chunk.setMinRetryInterval(std::max(shortest, std::min(grown, longest / 2)));
}

void GTMHTTPUploadFetcher::chunkDidSendData(qint64 bytes, qint64 totalBytes) {
    reportSentData(bytes, totalBytes + initialBodySent_ + static_cast<qint64>(currentOffset_),
                   static_cast<qint64>(plan_.fullLength()) + initialBodyLength_);
}

void GTMHTTPUploadFetcher::chunkDidEnd(const QByteArray& data, const MaybeError& error) {
    const auto self = shared_from_this(); // the end of the fetch may let go of the last reference
    chunkStatusCode_ = chunkFetcher_->statusCode();
    chunkResponseHeaders_ = chunkFetcher_->responseHeaders();
    if (error && error->isHTTPStatus(resumeIncompleteStatus))
        return chunkDidEndIncomplete();
    if (error)
        return chunkDidFail(data, *error);
    setDownloadedData(data);
    finishUpload(data, {}, Location::invalidate);
}

void GTMHTTPUploadFetcher::chunkDidFail(const QByteArray& data, const Error& error) {
    const QVariantMap details = publicDetails(error);
    if (error.is(FetcherErrorCode::fetchCouldNotBegin))
        return finishUpload(data, Error(FetcherErrorCode::chunkUploadFailed, details), Location::invalidate);
    if (error.is(URLErrorCode::requestBodyUnreadable)) {
        qCWarning(httpLog, "uploadFileHandle exception: %s", qUtf8Printable(error.description()));
        return finishUpload(data, Error(URLErrorCode::requestBodyUnreadable, details), Location::keep);
    }
    finishUpload(data, Error(errorDomain::httpStatus, error.code(), details), Location::keep);
}

void GTMHTTPUploadFetcher::chunkDidEndIncomplete() {
    const Result<quint64> offset = plan_.offsetAfter(chunkResponseHeaders_.value("Range"));
    if (!offset)
        return finishUpload({}, offset.error(), Location::keep);
    const QVariantMap fetcherProperties = takeChunkFetcher()->properties();
    currentOffset_ = *offset;
    if (const QByteArray moved = chunkResponseHeaders_.value("Location"); !moved.isEmpty())
        setLocationURL(locationURL_.resolved(QUrl::fromEncoded(moved)));
    sendNext(plan_.pieceAt(*offset), fetcherProperties);
}

// The server is asked what it holds instead of being sent the same bytes again.
bool GTMHTTPUploadFetcher::chunkWillRetry(bool suggestedWillRetry, const Error& error) {
    if (error.isHTTPStatus(resumeIncompleteStatus) || error.is(URLErrorCode::requestBodyUnreadable))
        return false;
    if (!askRetryHooks(suggestedWillRetry, error) || !chunkFetcher_)
        return false;
    chunkFetcher_->setPostStream(nullptr);
    chunkFetcher_->setPostData(emptyBody);
    setContent(chunkFetcher_->mutableRequest(), plan_.statusQuery());
    currentOffset_ = 0;
    return true;
}

std::shared_ptr<GTMHTTPFetcher> GTMHTTPUploadFetcher::takeChunkFetcher() {
    const auto chunk = std::exchange(chunkFetcher_, nullptr);
    if (chunk)
        chunk->stopFetching();
    return chunk;
}

} // namespace quenby
