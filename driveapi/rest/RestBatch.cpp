#include "driveapi/rest/RestBatch.h"

#include "driveapi/GTLJSONParser.h"
#include "driveapi/GTLServiceReply.h"
#include "driveapi/rest/MultipartAnswer.h"
#include "driveapi/rest/RestError.h"
#include "http/GTMMIMEDocument.h"

#include <QHash>

namespace quenby {
namespace {

constexpr int lastSuccess = 299;
constexpr QByteArrayView answering("response-");

// Of a message identifier only what is unreserved in an address, whatever the request ID is.
QByteArray contentIDFor(const QString& requestID) {
    return GTLUtilities::stringByURLEncodingForURI(requestID).toLatin1();
}

QByteArray messageFor(const RestBatchCall& call) {
    HeaderFields headers;
    headers.set("Accept", "application/json");
    if (!call.request.body.isEmpty()) {
        headers.set("Content-Type", "application/json; charset=utf-8");
        headers.set("Content-Length", QByteArray::number(call.request.body.size()));
    }
    for (auto header = call.additionalHTTPHeaders.begin(); header != call.additionalHTTPHeaders.end(); ++header)
        headers.set(header.key().toLatin1(), header.value().toUtf8());

    const auto keptOfURL = QUrl::FullyEncoded | QUrl::RemoveScheme | QUrl::RemoveAuthority | QUrl::RemoveFragment;
    QByteArray message =
        call.request.verb + ' ' + call.request.url.toEncoded(QUrl::FormattingOptions(keptOfURL)) + " HTTP/1.1\r\n";
    for (const auto& [name, value] : headers)
        message += name + ": " + value + "\r\n";
    return message + "\r\n" + call.request.body;
}

// "<response-gtl_7>" to "gtl_7".
QByteArray answeredContentID(const QByteArray& field) {
    QByteArrayView contentID = QByteArrayView(field).trimmed();
    if (contentID.startsWith('<') && contentID.endsWith('>') && contentID.size() >= 2)
        contentID = contentID.sliced(1, contentID.size() - 2);
    if (contentID.size() >= answering.size() &&
        contentID.first(answering.size()).compare(answering, Qt::CaseInsensitive) == 0)
        contentID = contentID.sliced(answering.size());
    return contentID.toByteArray();
}

JSONDictionaryPtr failedReply(const EmbeddedResponse& response) {
    const Result<JSONValue> json = GTLJSONParser::objectWithData(response.body);
    const JSONDictionaryPtr told = json ? json->dictionary() : nullptr;
    const JSONDictionaryPtr error = told ? told->value("error").dictionary() : nullptr;
    return JSONDictionary::make({{"error", error ? rpcFormOfError(error, response.statusCode)
                                                 : errorForStatus(response.statusCode, response.body)}});
}

JSONDictionaryPtr unreadableReply() {
    return JSONDictionary::make(
        {{"error", JSONDictionary::make(
                       {{"code", static_cast<qint64>(GTLServiceErrorCode::replyUnusable)},
                        {"message", QStringLiteral("The service's reply to this call is no JSON; try again.")}})}});
}

JSONDictionaryPtr replyIn(const EmbeddedResponse& response) {
    if (response.statusCode > lastSuccess)
        return failedReply(response);
    if (response.body.trimmed().isEmpty())
        return JSONDictionary::make();
    const Result<JSONValue> json = GTLJSONParser::objectWithData(response.body);
    return json ? JSONDictionary::make({{"result", *json}}) : unreadableReply();
}

} // namespace

RestBatchBody restBatchBody(const std::vector<RestBatchCall>& calls) {
    GTMMIMEDocument document;
    for (const RestBatchCall& call : calls) {
        HeaderFields headers;
        headers.set("Content-Type", "application/http");
        headers.set("Content-Transfer-Encoding", "binary");
        headers.set("Content-ID", '<' + contentIDFor(call.requestID) + '>');
        document.addPartWithHeaders(headers, messageFor(call));
    }
    const MIMEBody body = document.generateInputStream();
    return {"multipart/mixed; boundary=\"" + body.boundary + '"', body.inputStream->readAll()};
}

Result<JSONArrayPtr> repliesInBatchAnswer(const QByteArray& contentType, const QByteArray& body,
                                          const QStringList& requestIDs) {
    const auto parts = partsOfMultipart(contentType, body);
    if (!parts)
        return parts.error();
    QHash<QByteArray, QString> requestIDFor;
    for (const QString& requestID : requestIDs)
        requestIDFor.insert(contentIDFor(requestID), requestID);
    const JSONArrayPtr replies = JSONArray::make();
    for (const MultipartPart& part : *parts) {
        // Each call is answered once.
        const QString requestID = requestIDFor.take(answeredContentID(part.headers.value("Content-ID")));
        if (requestID.isEmpty())
            continue;
        const auto response = responseInPart(part.body);
        if (!response)
            return response.error();
        const JSONDictionaryPtr reply = replyIn(*response);
        reply->setValue("id", requestID);
        replies->append(reply);
    }
    return replies;
}

} // namespace quenby
