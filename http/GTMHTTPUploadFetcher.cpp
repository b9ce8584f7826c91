#include "http/GTMHTTPUploadFetcher.h"

#include "http/GTMHTTPFetcherService.h"

#include <algorithm>

namespace quenby {
namespace {

constexpr int notImplementedStatus = 501; // stands for an announcement that was not answered as the protocol wants it

Error protocolError(const QString& reason, const QByteArray& body = {}) {
    QVariantMap details{{errorKey::reason, reason}};
    if (!body.isEmpty())
        details.insert(errorKey::data, body);
    return Error(errorDomain::httpStatus, notImplementedStatus, details);
}

} // namespace

std::shared_ptr<GTMHTTPUploadFetcher>
GTMHTTPUploadFetcher::uploadFetcherWithRequest(const URLRequest& request, const QByteArray& uploadData,
                                               const QByteArray& uploadMIMEType, quint64 chunkSize,
                                               const std::shared_ptr<GTMHTTPFetcherService>& service) {
    return announced(request, UploadSource(uploadData), uploadMIMEType, chunkSize, service);
}

std::shared_ptr<GTMHTTPUploadFetcher>
GTMHTTPUploadFetcher::uploadFetcherWithRequest(const URLRequest& request, std::shared_ptr<QFile> uploadFileHandle,
                                               const QByteArray& uploadMIMEType, quint64 chunkSize,
                                               const std::shared_ptr<GTMHTTPFetcherService>& service) {
    return announced(request, UploadSource(std::move(uploadFileHandle)), uploadMIMEType, chunkSize, service);
}

std::shared_ptr<GTMHTTPUploadFetcher> GTMHTTPUploadFetcher::uploadFetcherWithLocation(
    const QUrl& location, std::shared_ptr<QFile> uploadFileHandle, const QByteArray& uploadMIMEType, quint64 chunkSize,
    const std::shared_ptr<GTMHTTPFetcherService>& service, const QUrl& authorizedBase) {
    const auto fetcher = share(new GTMHTTPUploadFetcher(URLRequest(location), UploadSource(std::move(uploadFileHandle)),
                                                        uploadMIMEType, chunkSize));
    fetcher->setIsURLSecret(true);
    fetcher->locationURL_ = location;
    fetcher->authorizedBase_ = authorizedBase;
    if (service)
        service->applySettings(*fetcher);
    return fetcher;
}

std::shared_ptr<GTMHTTPUploadFetcher>
GTMHTTPUploadFetcher::announced(URLRequest request, UploadSource source, const QByteArray& uploadMIMEType,
                                quint64 chunkSize, const std::shared_ptr<GTMHTTPFetcherService>& service) {
    request.headers.set("X-Upload-Content-Length", QByteArray::number(source.fullLength()));
    request.headers.set("X-Upload-Content-Type", uploadMIMEType);
    const auto fetcher =
        share(new GTMHTTPUploadFetcher(std::move(request), std::move(source), uploadMIMEType, chunkSize));
    fetcher->authorizedBase_ = fetcher->request().url;
    if (service)
        service->applySettings(*fetcher);
    return fetcher;
}

GTMHTTPUploadFetcher::GTMHTTPUploadFetcher(URLRequest request, UploadSource source, QByteArray uploadMIMEType,
                                           quint64 chunkSize)
    : GTMHTTPFetcher(std::move(request))
    , source_(std::move(source))
    , uploadMIMEType_(std::move(uploadMIMEType))
    , plan_(source_.fullLength(), chunkSize) {}

GTMHTTPUploadFetcher::~GTMHTTPUploadFetcher() { takeChunkFetcher(); }

std::shared_ptr<GTMHTTPFetcher> GTMHTTPUploadFetcher::activeFetcher() {
    return chunkFetcher_ ? chunkFetcher_ : shared_from_this();
}

void GTMHTTPUploadFetcher::pauseFetching() {
    isPaused_ = true;
    ++gateNumber_;
    takeChunkFetcher();
    if (isUploading_)
        givePlaceBack();
}

void GTMHTTPUploadFetcher::resumeFetching() {
    if (!isPaused_)
        return;
    isPaused_ = false;
    if (!isUploading_)
        return; // the announcement is still on its way, or nothing is
    plan_.forgetFruitlessAnswers();
    beginRequest();
}

void GTMHTTPUploadFetcher::setMaxSendSpeed(qint64 bytesPerSecond) {
    GTMHTTPFetcher::setMaxSendSpeed(bytesPerSecond);
    if (chunkFetcher_)
        chunkFetcher_->setMaxSendSpeed(bytesPerSecond);
}

int GTMHTTPUploadFetcher::statusCode() const { return chunkStatusCode_.value_or(GTMHTTPFetcher::statusCode()); }

HeaderFields GTMHTTPUploadFetcher::responseHeaders() const {
    return chunkStatusCode_ ? chunkResponseHeaders_ : GTMHTTPFetcher::responseHeaders();
}

bool GTMHTTPUploadFetcher::beginFetch() {
    if (source_.error()) {
        finishFetch({}, source_.error());
        return false;
    }
    const URLRequest& announcement = request();
    initialBodyLength_ =
        announcement.bodyStream ? std::max<qint64>(announcement.bodyLength, 0) : announcement.body.size();
    initialBodySent_ = 0;
    chunkStatusCode_.reset();
    isUploading_ = !locationURL_.isEmpty();
    return (isUploading_ && isPaused_) || beginRequest();
}

bool GTMHTTPUploadFetcher::beginInPlace() {
    return isUploading_ ? send(plan_.statusQuery(), properties()) : GTMHTTPFetcher::beginInPlace();
}

void GTMHTTPUploadFetcher::requestDidEnd(const QByteArray& data, const MaybeError& error) {
    if (error && isUploading_)
        return chunkDidFail(data, *error); // the known location may not be fetched from
    if (error)
        return finishUpload(data, error, Location::invalidate);
    const Result<QUrl> location = announcedLocation(data);
    if (!location)
        return finishUpload(data, location.error(), Location::invalidate);
    initialBodySent_ = initialBodyLength_;
    isUploading_ = true;
    setLocationURL(*location);
    sendNext(plan_.pieceAt(0), properties());
}

void GTMHTTPUploadFetcher::requestDidSendData(qint64 bytes, qint64 totalBytes, qint64) {
    reportSentData(bytes, totalBytes, static_cast<qint64>(plan_.fullLength()) + initialBodyLength_);
}

void GTMHTTPUploadFetcher::stopSubFetches() {
    isUploading_ = false;
    ++gateNumber_;
    takeChunkFetcher();
}

// Of the announcement's response. A relative one is resolved (RFC 9110, section 10.2.2).
Result<QUrl> GTMHTTPUploadFetcher::announcedLocation(const QByteArray& body) const {
    if (!body.isEmpty())
        return protocolError(QStringLiteral("The server answered the announcement of an upload with content instead of "
                                            "an upload location. Check the upload address."),
                             body);
    const QUrl location = QUrl::fromEncoded(GTMHTTPFetcher::responseHeaders().value("Location"));
    if (location.isEmpty() || !location.isValid())
        return protocolError(QStringLiteral("The server named no location for the upload. Try again later."));
    return request().url.resolved(location);
}

void GTMHTTPUploadFetcher::setLocationURL(const QUrl& location) {
    if (location == locationURL_)
        return;
    locationURL_ = location;
    if (const LocationChangeBlock block = locationChangeBlock_)
        block(location);
}

void GTMHTTPUploadFetcher::finishUpload(const QByteArray& data, const MaybeError& error, Location location) {
    isUploading_ = false;
    takeChunkFetcher();
    if (location == Location::invalidate)
        setLocationURL({});
    locationChangeBlock_ = nullptr;
    sendGate_ = nullptr;
    finishFetch(data, error);
}

} // namespace quenby
