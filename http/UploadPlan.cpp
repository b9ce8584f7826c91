#include "http/UploadPlan.h"

#include "http/ContentRange.h"

#include <algorithm>

namespace quenby {
namespace {

Error chunkError(const QString& reason) {
    return Error(FetcherErrorCode::chunkUploadFailed, {{errorKey::reason, reason}});
}

} // namespace

UploadPlan::UploadPlan(quint64 fullLength, quint64 chunkSize)
    : fullLength_(fullLength)
    , chunkSize_(std::max<quint64>(chunkSize, 1)) {}

UploadPlan::Piece UploadPlan::statusQuery() const { return {0, 0, contentRangeOfStatusQuery(fullLength_)}; }

UploadPlan::Piece UploadPlan::pieceAt(quint64 offset) const {
    const quint64 length = lengthOfChunk(offset, chunkSize_, fullLength_);
    if (length == 0)
        return {offset, 0, contentRangeOfStatusQuery(fullLength_)};
    return {offset, length, contentRangeOfChunk(offset, length, fullLength_)};
}

Result<quint64> UploadPlan::offsetAfter(const QByteArray& rangeHeader) {
    const auto range = scanRange(rangeHeader);
    if (range && range->last >= fullLength_)
        return chunkError(QStringLiteral("The server claims to hold more bytes than the file has (%1). Upload the file "
                                         "again from the start.")
                              .arg(fullLength_));
    const quint64 offset = range ? range->last + 1 : 0;
    if (offset > furthestAnswer_)
        fruitlessAnswers_ = 0;
    else if (offset <= lastAnswer_)
        ++fruitlessAnswers_;
    lastAnswer_ = offset;
    furthestAnswer_ = std::max(furthestAnswer_, offset);
    if (fruitlessAnswers_ >= maximumFruitlessAnswers)
        return chunkError(QStringLiteral("The server answered %1 times without taking more of the file than %2 bytes. "
                                         "Try again later.")
                              .arg(fruitlessAnswers_)
                              .arg(furthestAnswer_));
    return offset;
}

} // namespace quenby
