#include "driveapi/GTLServiceCall.h"

#include "driveapi/GTLBatchResult.h"
#include "driveapi/GTLJSONParser.h"
#include "driveapi/JSONArray.h"
#include "driveapi/rest/RestBatch.h"

#include <QSet>

#include <algorithm>
#include <span>

namespace quenby {
namespace {

JSONDictionaryPtr shallowCopy(const JSONDictionary& dictionary) {
    const JSONDictionaryPtr copy = JSONDictionary::make();
    for (qsizetype i = 0; i < dictionary.count(); ++i)
        copy->setValue(dictionary.keyAt(i), dictionary.valueAt(i));
    return copy;
}

// The query's own parameters, which stay as they are, with what the service and the body object add.
JSONDictionaryPtr parametersOf(const GTLQuery& query, const QString& APIKey) {
    const GTLObjectPtr& body = query.bodyObject();
    if (APIKey.isEmpty() && !body)
        return query.JSON();
    const JSONDictionaryPtr parameters = shallowCopy(*query.JSON());
    if (!APIKey.isEmpty() && !parameters->contains("key"))
        parameters->setValue("key", APIKey);
    if (body)
        parameters->setValue("resource", body->JSON());
    return parameters;
}

void askRPC(GTLServiceCall& call, const GTLServiceSettings& settings, const QString& APIKey, const GTLQuery& query) {
    call.url = call.uploadParameters ? settings.rpcUploadURL : settings.rpcURL;
    if (!call.uploadParameters || !call.uploadParameters->shouldSendUploadOnly)
        call.body = GTLJSONParser::dataWithObject(rpcPayload(settings, APIKey, query));
}

void askREST(GTLServiceCall& call, const GTLServiceSettings& settings, const QString& APIKey, const GTLQuery& query) {
    call.isREST = true;
    const auto request = restRequestForQuery(query, call.uploadParameters ? settings.restUploadURL : settings.restURL,
                                             APIKey, RestMedia::sent);
    if (!request) {
        call.refusal = request.error();
        return;
    }
    call.httpMethod = request->verb;
    call.url = request->url;
    call.body = request->body;
}

GTLServiceCall singleCall(const GTLServiceSettings& settings, const QString& APIKey, const GTLQuery& query,
                          unsigned pagesFetched) {
    GTLServiceCall call;
    call.uploadParameters = query.uploadParameters();
    if (settings.road == APIRoad::rest)
        askREST(call, settings, APIKey, query);
    else
        askRPC(call, settings, APIKey, query);
    call.comment = pagesFetched == 0 ? query.methodName()
                                     : QStringLiteral("%1 (page %2)").arg(query.methodName()).arg(pagesFetched + 1);
    call.postedObject = query.bodyObject();
    call.objectClass = query.expectedObjectClass();
    return call;
}

using Members = std::span<const std::shared_ptr<GTLQuery>>;

void askRPC(GTLServiceCall& call, const GTLServiceSettings& settings, const QString& APIKey, Members members) {
    call.url = settings.rpcURL;
    const JSONArrayPtr payloads = JSONArray::make();
    for (const auto& query : members)
        payloads->append(rpcPayload(settings, APIKey, *query));
    call.body = GTLJSONParser::dataWithObject(payloads);
}

// Without a body when every member is refused.
void askREST(GTLServiceCall& call, const GTLServiceSettings& settings, const QString& APIKey, Members members) {
    call.isREST = true;
    call.url = settings.restBatchURL;
    std::vector<RestBatchCall> calls;
    for (const auto& query : members) {
        const auto request = restRequestForQuery(*query, settings.restURL, APIKey, RestMedia::ignored);
        if (!request) {
            call.refusedMembers.emplace(query->requestID(), request.error());
            continue;
        }
        calls.push_back({query->requestID(), query->additionalHTTPHeaders(), *request});
        QUrl& url = calls.back().request.url;
        url = GTLUtilities::URLWithString(url.toString(QUrl::FullyEncoded), query->urlQueryParameters());
    }
    if (calls.empty())
        return;
    const RestBatchBody body = restBatchBody(calls);
    call.contentType = body.contentType;
    call.body = body.bytes;
}

GTLServiceCall batchCall(const GTLServiceSettings& settings, const QString& APIKey, const GTLBatchQuery& batch,
                         unsigned pagesFetched, qsizetype firstMember) {
    GTLServiceCall call;
    Members members = Members(batch.queries()).subspan(static_cast<size_t>(firstMember));
    if (settings.road == APIRoad::rest) {
        members = members.first(std::min(members.size(), static_cast<size_t>(maximumRestBatchCalls)));
        askREST(call, settings, APIKey, members);
    } else {
        askRPC(call, settings, APIKey, members);
    }
    for (const auto& query : members)
        call.batchClassMap.insert(query->requestID(), query->expectedObjectClass());
    const QString page = pagesFetched == 0 ? QString() : QStringLiteral("page %1, ").arg(pagesFetched + 1);
    call.comment =
        QStringLiteral("batch: %1 (%2%3 queries)")
            .arg(batch.distinctMethodNames().join(QLatin1String(", ")), page, QString::number(members.size()));
    call.isBatch = true;
    call.objectClass = &GTLBatchResult::classDescriptor();
    return call;
}

} // namespace

bool isExecutable(const GTLQueryProtocol& given) {
    const auto* batch = dynamic_cast<const GTLBatchQuery*>(&given);
    if (!batch) {
        const auto* query = dynamic_cast<const GTLQuery*>(&given);
        return query && !query->methodName().isEmpty();
    }
    QSet<QString> requestIDs;
    for (const auto& member : batch->queries()) {
        if (member->methodName().isEmpty() || member->requestID().isEmpty() || requestIDs.contains(member->requestID()))
            return false;
        requestIDs.insert(member->requestID());
    }
    return !requestIDs.isEmpty();
}

JSONDictionaryPtr rpcPayload(const GTLServiceSettings& settings, const QString& APIKey, const GTLQuery& query) {
    const QString requestID = query.requestID().isEmpty() ? GTLQuery::nextRequestID() : query.requestID();
    const JSONDictionaryPtr payload = JSONDictionary::make({
        {"jsonrpc", QStringLiteral("2.0")},
        {"method", query.methodName()},
        {"id", requestID},
    });
    if (!settings.apiVersion.isEmpty())
        payload->setValue("apiVersion", settings.apiVersion);
    if (const JSONDictionaryPtr parameters = parametersOf(query, APIKey); !parameters->isEmpty())
        payload->setValue("params", parameters);
    return payload;
}

GTLServiceCall callForQuery(const GTLServiceSettings& settings, const QString& APIKey, const GTLQueryProtocol& given,
                            unsigned pagesFetched, qsizetype firstMember) {
    const auto* batch = dynamic_cast<const GTLBatchQuery*>(&given);
    GTLServiceCall call = batch ? batchCall(settings, APIKey, *batch, pagesFetched, firstMember)
                                : singleCall(settings, APIKey, dynamic_cast<const GTLQuery&>(given), pagesFetched);
    call.isQuery = true;
    call.url = GTLUtilities::URLWithString(call.url.toString(QUrl::FullyEncoded), given.urlQueryParameters());
    call.additionalHTTPHeaders = given.additionalHTTPHeaders();
    call.shouldSkipAuthorization = given.shouldSkipAuthorization();
    call.testBlock = given.testBlock() ? given.testBlock() : settings.testBlock;
    return call;
}

} // namespace quenby
