// One resumable upload: what was announced, and the bytes that have arrived.
#pragma once

#include "localdrive/rpc/RpcMethods.h"
#include "localdrive/store/BlobStore.h"

#include <QJsonObject>

#include <memory>
#include <mutex>
#include <optional>

namespace quenby::localdrive {

// On which road an upload was announced. It is answered on the same one.
enum class UploadRoad { rpc, rest };

// What the announcing request said. It does not change.
struct UploadFacts {
    QString part;     // name of the part file; no secret
    QJsonObject call; // the announced call: "method", "params" and, of JSON-RPC, "id"
    QString mediaType;
    qint64 length = 0;
    Account user;
    CallingProgram program = {};
    UploadRoad road = UploadRoad::rpc;
};

// Threads: any. Several connections may carry bytes of one upload, when a client gave one up and began another before
// the first was seen to be dead. Since each appends without a gap, and only what is new, they cannot harm each other.
class UploadSession {
public:
    // Does the announced call with the whole content. Errors as RpcMethods gives them.
    using Complete = std::function<QJsonObject(const UploadFacts&, const StagedBlob&)>;

    // `result`: of an upload that is complete already.
    UploadSession(UploadFacts facts, std::unique_ptr<IncomingBlob> blob, std::optional<QJsonObject> result);

    const UploadFacts& facts() const { return facts_; }

    // Bytes from the start without a gap.
    qint64 held() const;
    bool isComplete() const;

    // Adds bytes that lie at the offset, which must not be behind what is held, as far as they are new. Returns how
    // many of them were held before; of a complete upload, all.
    Result<qint64> append(qint64 offset, QByteArrayView bytes);
    // Puts what is held on disk. Before a client is told of it.
    Result<void> sync();

    // When everything is held: completes the upload, once, and returns {"result"} or {"error"}. Later calls return the
    // same result; after an error the upload stays open.
    Result<QJsonObject> complete(const Complete& complete);

private:
    const UploadFacts facts_;
    mutable std::mutex mutex_;
    std::unique_ptr<IncomingBlob> blob_; // none once complete
    std::optional<QJsonObject> result_;
};

} // namespace quenby::localdrive
