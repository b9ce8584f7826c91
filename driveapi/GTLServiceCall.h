// One request of an execution as it will be sent: a single call, a batch, or a REST operation.
#pragma once

#include "driveapi/GTLBatchQuery.h"
#include "driveapi/GTLServiceSettings.h"
#include "driveapi/GTLUploadParameters.h"

#include <optional>

namespace quenby {

struct GTLServiceCall {
    QUrl url;
    QByteArray httpMethod = "POST";
    QByteArray ETag; // empty: the posted object's
    QByteArray body; // empty: none
    QString comment; // names the fetch in logs
    GTLStringMap additionalHTTPHeaders;
    bool shouldSkipAuthorization = false;
    bool isREST = false;
    GTLObjectPtr postedObject;
    std::optional<GTLUploadParameters> uploadParameters;
    GTLTestBlock testBlock;

    const GTLClass* objectClass = nullptr; // what the reply becomes; null when nothing is expected
    bool isBatch = false;
    GTLBatchClassMap batchClassMap; // the same for each member of a batch
};

// Whether a query can be sent at all: a method name, and in a batch one member at least, each with a method name and a
// request ID of its own.
bool isExecutable(const GTLQueryProtocol& query);

// The call that a query stands for. pagesFetched counts the follow-up pages, this one included.
GTLServiceCall callForQuery(const GTLServiceSettings& settings, const QString& APIKey, const GTLQueryProtocol& query,
                            unsigned pagesFetched);

// The JSON-RPC 2.0 payload of one query.
JSONDictionaryPtr rpcPayload(const GTLServiceSettings& settings, const QString& APIKey, const GTLQuery& query);

} // namespace quenby
