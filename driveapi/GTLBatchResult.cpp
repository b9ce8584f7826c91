#include "driveapi/GTLBatchResult.h"

namespace quenby {

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

QString GTLBatchResult::description() const {
    return QStringLiteral("GTLBatchResult %1 (successes:%2 failures:%3)")
        .arg(QStringLiteral("0x%1").arg(reinterpret_cast<quintptr>(this), 0, 16), QString::number(successes_.size()),
             QString::number(failures_.size()));
}

} // namespace quenby
