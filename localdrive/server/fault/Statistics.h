// What a test may ask the server about afterwards.
#pragma once

#include "localdrive/server/fault/RequestFacts.h"

#include <QHash>
#include <QJsonObject>
#include <QSet>

#include <mutex>

namespace quenby::localdrive {

// Threads: any. Counts since the process started.
class Statistics {
public:
    // Without a control endpoint nobody can ask: then nothing is kept.
    explicit Statistics(bool isKept)
        : isKept_(isKept) {}

    void requestSeen(const RequestFacts& request);
    // Bytes of one upload's content that arrived; `duplicates` of them were held already. The session is named by its
    // storage name, which is no secret.
    void uploadReceived(const QString& session, qint64 bytes, qint64 duplicates);
    // A PUT that came to an upload that is unknown, lost or expired, and what it brought: 0 bytes were a question. The
    // upload is named by the digest of its id.
    void uploadRefused(const QString& digest, qint64 bytes);
    // A token, code, upload id or client secret that the server gave out or was shown.
    void secretIssued(const QByteArray& secret);

    // {"requests": {"POST /rpc": 3}, "rpcMethods": {...}, "uploads": {SESSION: {"received", "duplicates"}},
    //  "refusedUploads": {DIGEST: {"puts", "bytes", "queries"}}}
    QJsonObject toJson() const;
    QStringList secrets() const;

private:
    struct UploadCount {
        qint64 received = 0;
        qint64 duplicates = 0;
    };

    struct RefusedCount {
        qint64 puts = 0; // with a content
        qint64 bytes = 0;
        qint64 queries = 0;
    };

    const bool isKept_;
    mutable std::mutex mutex_;
    QHash<QString, qint64> requests_;
    QHash<QString, qint64> rpcMethods_;
    QHash<QString, UploadCount> uploads_;
    QHash<QString, RefusedCount> refused_;
    QSet<QByteArray> secrets_;
};

} // namespace quenby::localdrive
