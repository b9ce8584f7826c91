#include "driveapi/GTLServicePaging.h"

#include "driveapi/GTLBatchResult.h"
#include "driveapi/JSONArray.h"

namespace quenby {
namespace {

JSONArrayPtr itemsOf(const GTLObject& list) { return list.JSONValueForKey("items").array(); }

std::shared_ptr<GTLQuery> nextPageOfSingle(const GTLQuery& query, const GTLObjectPtr& result) {
    if (!result || !itemsOf(*result))
        return nullptr;
    struct Position {
        const char* inResult;
        const char* inQuery;
    };
    for (const auto& [inResult, inQuery] :
         {Position{"nextPageToken", "pageToken"}, Position{"nextStartIndex", "startIndex"}}) {
        const JSONValue next = result->JSONValueForKey(inResult);
        const bool isGiven = next.isNumber() || !next.toString().isEmpty();
        if (!isGiven || !query.hasParameterNamed(inQuery))
            continue;
        const auto nextQuery = query.copy();
        nextQuery->setJSONValue(next, inQuery);
        return nextQuery;
    }
    return nullptr;
}

std::shared_ptr<GTLBatchQuery> nextPageOfBatch(const GTLBatchQuery& batch, const GTLBatchResult& result) {
    const auto next = batch.sibling();
    for (const auto& member : batch.queries()) {
        if (const auto success = result.successes().find(member->requestID()); success != result.successes().end())
            next->addQuery(nextPageOfSingle(*member, success->second));
    }
    return next->queries().empty() ? nullptr : next;
}

void mergeItems(const GTLObject& earlier, GTLObject& newer) {
    const JSONArrayPtr items = itemsOf(earlier);
    const JSONArrayPtr added = itemsOf(newer);
    if (!items)
        return;
    for (qsizetype i = 0; added && i < added->count(); ++i)
        items->append(added->at(i));
    newer.setJSONValue(items, "items");
}

// The pages of the members that had another one join what they had before; everything else is carried over.
void mergeBatch(const GTLBatchResult& earlier, GTLBatchResult& newer) {
    GTLBatchResult::Successes successes = earlier.successes();
    for (const auto& [requestID, object] : newer.successes()) {
        GTLObjectPtr& merged = successes[requestID];
        merged = mergedResult(merged, object);
    }
    GTLBatchResult::Failures failures = earlier.failures();
    for (const auto& [requestID, failure] : newer.failures()) {
        failures[requestID] = failure;
        successes.erase(requestID);
    }
    newer.setSuccesses(std::move(successes));
    newer.setFailures(std::move(failures));
}

} // namespace

std::shared_ptr<GTLQueryProtocol> nextPageQueryForQuery(const GTLQueryProtocol& query, const GTLObjectPtr& result) {
    if (const auto* batch = dynamic_cast<const GTLBatchQuery*>(&query)) {
        const auto* batchResult = dynamic_cast<const GTLBatchResult*>(result.get());
        return batchResult ? nextPageOfBatch(*batch, *batchResult) : nullptr;
    }
    const auto* single = dynamic_cast<const GTLQuery*>(&query);
    return single ? nextPageOfSingle(*single, result) : nullptr;
}

GTLObjectPtr mergedResult(const GTLObjectPtr& earlier, const GTLObjectPtr& newer) {
    if (!earlier || !newer)
        return newer ? newer : earlier;
    auto* newerBatch = dynamic_cast<GTLBatchResult*>(newer.get());
    const auto* earlierBatch = dynamic_cast<const GTLBatchResult*>(earlier.get());
    if (newerBatch && earlierBatch)
        mergeBatch(*earlierBatch, *newerBatch);
    else
        mergeItems(*earlier, *newer);
    return newer;
}

} // namespace quenby
