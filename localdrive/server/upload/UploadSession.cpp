#include "localdrive/server/upload/UploadSession.h"

#include <algorithm>

namespace quenby::localdrive {

UploadSession::UploadSession(UploadFacts facts, std::unique_ptr<IncomingBlob> blob, std::optional<QJsonObject> result)
    : facts_(std::move(facts))
    , blob_(std::move(blob))
    , result_(std::move(result)) {}

qint64 UploadSession::held() const {
    const std::lock_guard lock(mutex_);
    return blob_ ? blob_->size() : facts_.length;
}

bool UploadSession::isComplete() const {
    const std::lock_guard lock(mutex_);
    return result_.has_value();
}

Result<qint64> UploadSession::append(qint64 offset, QByteArrayView bytes) {
    const std::lock_guard lock(mutex_);
    if (!blob_)
        return bytes.size();
    const qint64 duplicates = std::min<qint64>(bytes.size(), blob_->size() - offset);
    if (const auto appended = blob_->append(offset, bytes); !appended)
        return appended.error();
    return duplicates;
}

Result<void> UploadSession::sync() {
    const std::lock_guard lock(mutex_);
    return blob_ ? blob_->sync() : Result<void>();
}

Result<QJsonObject> UploadSession::complete(const Complete& complete) {
    const std::lock_guard lock(mutex_);
    const QString resultKey = QStringLiteral("result");
    if (result_)
        return QJsonObject{{resultKey, *result_}};
    const auto staged = blob_->finish();
    if (!staged)
        return staged.error();
    QJsonObject outcome = complete(facts_, *staged);
    if (outcome.contains(resultKey)) {
        result_ = outcome[resultKey].toObject();
        blob_.reset();
    }
    return outcome;
}

} // namespace quenby::localdrive
