#include "driveapi/GTLServiceCall.h"

#include "driveapi/GTLBatchResult.h"
#include "driveapi/GTLJSONParser.h"
#include "driveapi/JSONArray.h"

#include <QSet>

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

GTLServiceCall singleCall(const GTLServiceSettings& settings, const QString& APIKey, const GTLQuery& query,
                          unsigned pagesFetched) {
    GTLServiceCall call;
    call.uploadParameters = query.uploadParameters();
    call.url = call.uploadParameters ? settings.rpcUploadURL : settings.rpcURL;
    if (!call.uploadParameters || !call.uploadParameters->shouldSendUploadOnly)
        call.body = GTLJSONParser::dataWithObject(rpcPayload(settings, APIKey, query));
    call.comment = pagesFetched == 0 ? query.methodName()
                                     : QStringLiteral("%1 (page %2)").arg(query.methodName()).arg(pagesFetched + 1);
    call.postedObject = query.bodyObject();
    call.objectClass = query.expectedObjectClass();
    return call;
}

GTLServiceCall batchCall(const GTLServiceSettings& settings, const QString& APIKey, const GTLBatchQuery& batch,
                         unsigned pagesFetched) {
    GTLServiceCall call;
    call.url = settings.rpcURL;
    const JSONArrayPtr payloads = JSONArray::make();
    for (const auto& query : batch.queries()) {
        payloads->append(rpcPayload(settings, APIKey, *query));
        call.batchClassMap.insert(query->requestID(), query->expectedObjectClass());
    }
    call.body = GTLJSONParser::dataWithObject(payloads);
    const QString page = pagesFetched == 0 ? QString() : QStringLiteral("page %1, ").arg(pagesFetched + 1);
    call.comment =
        QStringLiteral("batch: %1 (%2%3 queries)")
            .arg(batch.distinctMethodNames().join(QLatin1String(", ")), page, QString::number(batch.queries().size()));
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
                            unsigned pagesFetched) {
    const auto* batch = dynamic_cast<const GTLBatchQuery*>(&given);
    GTLServiceCall call = batch ? batchCall(settings, APIKey, *batch, pagesFetched)
                                : singleCall(settings, APIKey, dynamic_cast<const GTLQuery&>(given), pagesFetched);
    call.url = GTLUtilities::URLWithString(call.url.toString(QUrl::FullyEncoded), given.urlQueryParameters());
    call.additionalHTTPHeaders = given.additionalHTTPHeaders();
    call.shouldSkipAuthorization = given.shouldSkipAuthorization();
    call.testBlock = given.testBlock() ? given.testBlock() : settings.testBlock;
    return call;
}

} // namespace quenby
