// One request of an execution as it will be sent: a query or a batch on either road, or a plain resource.
#pragma once

#include "core/Error.h"
#include "driveapi/GTLBatchQuery.h"
#include "driveapi/GTLServiceSettings.h"
#include "driveapi/GTLUploadParameters.h"

#include <map>
#include <optional>

namespace quenby {

struct GTLServiceCall {
    QUrl url;
    QByteArray httpMethod = "POST";
    QByteArray ETag;        // empty: a plain resource's own
    QByteArray body;        // empty: none
    QByteArray contentType; // of the body; empty: the road's JSON
    QString comment;        // names the fetch in logs
    GTLStringMap additionalHTTPHeaders;
    bool shouldSkipAuthorization = false;
    bool isREST = false;  // over the verbs of HTTP, not in JSON-RPC
    bool isQuery = false; // not a plain resource
    MaybeError refusal;   // why there is nothing to send
    GTLObjectPtr postedObject;
    std::optional<GTLUploadParameters> uploadParameters;
    GTLTestBlock testBlock;

    const GTLClass* objectClass = nullptr; // what the reply becomes; null when nothing is expected
    bool isBatch = false;
    GTLBatchClassMap batchClassMap;          // the same for each member of a batch that is in this request
    std::map<QString, Error> refusedMembers; // by request ID: those of them that cannot be sent
};

// Whether a query can be sent at all: a method name, and in a batch one member at least, each with a method name and a
// request ID of its own.
bool isExecutable(const GTLQueryProtocol& query);

// The call that a query stands for, on the settings' road. pagesFetched counts the follow-up pages, this one included.
// A batch may need several requests: then the call is about as many members as one of them takes, from the given one
// on.
GTLServiceCall callForQuery(const GTLServiceSettings& settings, const QString& APIKey, const GTLQueryProtocol& query,
                            unsigned pagesFetched, qsizetype firstMember = 0);

// The JSON-RPC 2.0 payload of one query.
JSONDictionaryPtr rpcPayload(const GTLServiceSettings& settings, const QString& APIKey, const GTLQuery& query);

} // namespace quenby
