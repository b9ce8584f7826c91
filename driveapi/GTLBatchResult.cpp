#include "driveapi/GTLBatchResult.h"

#include <algorithm>

namespace quenby {
namespace {

template <typename Members>
bool areEqual(const Members& left, const Members& right) {
    return std::equal(left.begin(), left.end(), right.begin(), right.end(), [](const auto& one, const auto& other) {
        const bool isSame =
            one.second == other.second || (one.second && other.second && one.second->isEqual(*other.second));
        return one.first == other.first && isSame;
    });
}

} // namespace

const GTLClass& GTLBatchResult::classDescriptor() {
    return gtlDefineClass<GTLBatchResult, GTLObject>("GTLBatchResult");
}

void GTLBatchResult::adoptJSON(const JSONValue& json) { replies_ = json.array(); }

void GTLBatchResult::createItemsWithClassMap(const GTLBatchClassMap& batchClassMap) {
    const qsizetype count = replies_ ? replies_->count() : 0;
    for (qsizetype i = 0; i < count; ++i) {
        const JSONDictionaryPtr reply = replies_->at(i).dictionary();
        const QString requestID = reply ? reply->value("id").toString() : QString();
        if (requestID.isEmpty())
            continue;
        if (const JSONValue error = reply->value("error"); !error.isUndefined() && !error.isNull()) {
            failures_[requestID] = GTLErrorObject::objectWithJSON(error.dictionary());
        } else {
            successes_[requestID] = objectForJSON(reply->value("result"), batchClassMap.value(requestID), surrogates());
        }
    }
    replies_.reset();
}

bool GTLBatchResult::isEqual(const GTLObject& other) const {
    if (!GTLObject::isEqual(other))
        return false;
    const auto& batch = static_cast<const GTLBatchResult&>(other);
    return areEqual(successes_, batch.successes_) && areEqual(failures_, batch.failures_);
}

GTLObjectPtr GTLBatchResult::copy() const {
    const auto made = std::static_pointer_cast<GTLBatchResult>(GTLObject::copy());
    for (const auto& [requestID, object] : successes_)
        made->successes_[requestID] = gtlCopy(object);
    for (const auto& [requestID, failure] : failures_)
        made->failures_[requestID] = gtlCopy(failure);
    return made;
}

QString GTLBatchResult::description() const {
    return QStringLiteral("GTLBatchResult %1 (successes:%2 failures:%3)")
        .arg(QStringLiteral("0x%1").arg(reinterpret_cast<quintptr>(this), 0, 16), QString::number(successes_.size()),
             QString::number(failures_.size()));
}

} // namespace quenby
