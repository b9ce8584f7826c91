// Sends a body of any size with the resumable upload protocol: a first request announces the upload and is answered
// with the upload's location; the body follows in chunks, each sent by a plain fetcher; after a failure the server is
// asked how much it holds. To its caller it is one fetcher with one final callback.
//
// The body is never held whole: it is read from the file as the network asks for it.
//
// Progress counts the first request's own body and the whole upload. After a failure it goes back to what the server
// holds.
//
// Errors, beyond those of the base: errorDomain::httpStatus with the code of a chunk's failure (the location is kept,
// so that the upload can be resumed later), 501 when the announcement was not answered as the protocol wants it;
// FetcherErrorCode::chunkUploadFailed when a chunk could not begin or the server's answers lead nowhere;
// URLErrorCode::requestBodyUnreadable when the file vanished, shrank or cannot be read.
//
// The upload has one place in the queue of its service from the announcement to the end, its chunks included; those are
// sent without asking the service, so that uploads never wait for places that other uploads hold. A paused upload has
// no place, and the service does not know it until it is resumed.
//
// A location is a secret: it is in no error text and no log.
#pragma once

#include "http/GTMHTTPFetcher.h"
#include "http/UploadPlan.h"
#include "http/UploadSource.h"

#include <QFile>

#include <functional>
#include <memory>

namespace quenby {

class GTMHTTPUploadFetcher : public GTMHTTPFetcher {
    Q_OBJECT

public:
    using LocationChangeBlock = std::function<void(const QUrl& location)>; // empty: no longer valid
    using SendGate = std::function<void(std::function<void()> goOn)>;

    // The chunk size is in bytes; the largest number sends everything in one chunk. The service, which may be absent,
    // lends its settings.
    static std::shared_ptr<GTMHTTPUploadFetcher>
    uploadFetcherWithRequest(const URLRequest& request, const QByteArray& uploadData, const QByteArray& uploadMIMEType,
                             quint64 chunkSize, const std::shared_ptr<GTMHTTPFetcherService>& service);
    // The file is open for reading and is not closed by the fetcher.
    static std::shared_ptr<GTMHTTPUploadFetcher>
    uploadFetcherWithRequest(const URLRequest& request, std::shared_ptr<QFile> uploadFileHandle,
                             const QByteArray& uploadMIMEType, quint64 chunkSize,
                             const std::shared_ptr<GTMHTTPFetcherService>& service);
    // Resumes an upload whose location is known: the server is asked first, nothing is announced. The authorizer goes
    // along only to a location with the scheme, host and port of authorizedBase, the address at which uploads are
    // announced; without one it never does.
    static std::shared_ptr<GTMHTTPUploadFetcher>
    uploadFetcherWithLocation(const QUrl& location, std::shared_ptr<QFile> uploadFileHandle,
                              const QByteArray& uploadMIMEType, quint64 chunkSize,
                              const std::shared_ptr<GTMHTTPFetcherService>& service, const QUrl& authorizedBase = {});
    ~GTMHTTPUploadFetcher() override;

    const QUrl& locationURL() const { return locationURL_; }
    // Called on the fetcher's thread whenever the location changes; a caller that wants to resume in a later run
    // keeps what it is told.
    void setLocationChangeBlock(LocationChangeBlock block) { locationChangeBlock_ = std::move(block); }
    // Asked before bytes of the file go out: after the announcement, and wherever the server has said how much it
    // holds, which is currentOffset() then. They go when goOn is called, at once or later, on the fetcher's thread;
    // until then the upload keeps its place. Once it was stopped, paused or asked again, an earlier goOn does nothing.
    void setSendGate(SendGate gate) { sendGate_ = std::move(gate); }
    quint64 currentOffset() const { return currentOffset_; }
    // The fetcher of the chunk on its way, else this one.
    std::shared_ptr<GTMHTTPFetcher> activeFetcher();

    // At any time, also from inside a callback. A paused upload is still fetching: it waits to be resumed or stopped.
    void pauseFetching();
    void resumeFetching(); // asks the server first, as soon as the service has a place
    bool isPaused() const { return isPaused_; }

    void setMaxSendSpeed(qint64 bytesPerSecond) override; // of the chunks as well

    bool isFetching() const override { return isUploading_ || GTMHTTPFetcher::isFetching(); }
    int statusCode() const override;
    HeaderFields responseHeaders() const override;

protected:
    bool beginFetch() override;
    bool beginInPlace() override;
    void requestDidEnd(const QByteArray& data, const MaybeError& error) override;
    void requestDidSendData(qint64 bytes, qint64 totalBytes, qint64 totalBytesExpected) override;
    void stopSubFetches() override;

private:
    enum class Location { keep, invalidate };

    GTMHTTPUploadFetcher(URLRequest request, UploadSource source, QByteArray uploadMIMEType, quint64 chunkSize);
    static std::shared_ptr<GTMHTTPUploadFetcher> announced(URLRequest request, UploadSource source,
                                                           const QByteArray& uploadMIMEType, quint64 chunkSize,
                                                           const std::shared_ptr<GTMHTTPFetcherService>& service);

    void setLocationURL(const QUrl& location);
    Result<QUrl> announcedLocation(const QByteArray& body) const;
    void finishUpload(const QByteArray& data, const MaybeError& error, Location location);

    // Chunks (GTMHTTPUploadFetcherChunks.cpp)
    bool send(const UploadPlan::Piece& piece, const QVariantMap& fetcherProperties);
    void sendNext(const UploadPlan::Piece& piece, const QVariantMap& fetcherProperties);
    bool maySendNext();
    URLRequest makeChunkRequest(const UploadPlan::Piece& piece) const;
    std::shared_ptr<GTMHTTPFetcher> makeChunkFetcher(const URLRequest& request, const UploadPlan::Piece& piece);
    void copyRetrySettings(GTMHTTPFetcher& chunk) const;
    void chunkDidEnd(const QByteArray& data, const MaybeError& error);
    void chunkDidFail(const QByteArray& data, const Error& error);
    void chunkDidEndIncomplete();
    bool chunkWillRetry(bool suggestedWillRetry, const Error& error);
    void chunkDidSendData(qint64 bytes, qint64 totalBytes);
    std::shared_ptr<GTMHTTPFetcher> takeChunkFetcher();

    const UploadSource source_;
    const QByteArray uploadMIMEType_;
    UploadPlan plan_;
    QUrl authorizedBase_; // the authorizer may go along to this origin
    QUrl locationURL_;
    LocationChangeBlock locationChangeBlock_;
    SendGate sendGate_;
    quint64 gateNumber_ = 0;   // of the latest question to the gate
    bool isUploading_ = false; // chunks are on their way, or paused
    bool isPaused_ = false;
    quint64 currentOffset_ = 0;
    qint64 initialBodyLength_ = 0;
    qint64 initialBodySent_ = 0;
    std::shared_ptr<GTMHTTPFetcher> chunkFetcher_;
    std::optional<int> chunkStatusCode_; // of the last chunk that ended
    HeaderFields chunkResponseHeaders_;
};

} // namespace quenby
