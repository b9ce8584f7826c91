// All resumable uploads, in the database, so that they outlive the process. A session is found by its upload id, which
// is a secret: the database knows its digest only.
#pragma once

#include "localdrive/server/ServerClock.h"
#include "localdrive/server/upload/UploadSession.h"

#include <QCache>

#include <mutex>

namespace quenby::localdrive {

// Threads: any.
class UploadSessions {
public:
    // Removes what was left of uploads that are over.
    static Result<std::unique_ptr<UploadSessions>> open(Database& database, BlobStore& blobs, const ServerClock& clock);

    // A new upload; the part of the facts is filled in. Returns its upload id. It is good for a week.
    Result<QByteArray> create(UploadFacts facts);
    // Errors of apiErrorDomain: 404 for an unknown id, 410 when its week is over.
    Result<std::shared_ptr<UploadSession>> find(const QByteArray& uploadId);
    void remove(const QByteArray& uploadId);
    // The upload goes on under a new id, which is returned; empty when there is none of that id.
    QByteArray rename(const QByteArray& uploadId);

    // By which an upload id is known where the secret itself must not stand.
    static QString digest(const QByteArray& uploadId);

    // To be written in the transaction that completes the upload.
    static void noteResult(Session& session, const UploadFacts& facts, const QJsonObject& result);

    // [{"session", "length", "held", "complete"}]
    QJsonArray toJson();

private:
    UploadSessions(Database& database, BlobStore& blobs, const ServerClock& clock);
    Result<void> sweep();
    Result<std::shared_ptr<UploadSession>> load(const Row& row);

    Database& database_;
    BlobStore& blobs_;
    const ServerClock& clock_;
    std::mutex mutex_; // of live_
    // Uploads that were lately dealt with, with their part files open, by part.
    QCache<QString, std::shared_ptr<UploadSession>> live_{100};
};

} // namespace quenby::localdrive
