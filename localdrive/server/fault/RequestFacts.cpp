#include "localdrive/server/fault/RequestFacts.h"

#include "localdrive/server/rest/BatchBody.h"
#include "localdrive/server/rest/RestMethods.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QUrl>
#include <QUrlQuery>

namespace quenby::localdrive {
namespace {

// Longer bodies are no calls; they are uploads.
constexpr qint64 longestCall = 1024 * 1024;

bool sameName(QByteArrayView a, const char* b) { return a.compare(QByteArrayView(b), Qt::CaseInsensitive) == 0; }

} // namespace

QByteArray RequestFacts::path() const { return target.split('?').first(); }

QByteArray RequestFacts::uploadId() const {
    return QUrlQuery(QUrl::fromEncoded(target).query()).queryItemValue(QStringLiteral("upload_id")).toUtf8();
}

bool RequestFacts::isUploadPut() const {
    return method == "PUT" && path().startsWith("/upload/") && !uploadId().isEmpty();
}

bool RequestFacts::isRpcCall() const { return method == "POST" && (path() == "/rpc" || path() == "/upload/rpc"); }

bool RequestFacts::isBatch() const { return method == "POST" && isBatchPath(path()); }

bool RequestFacts::needsBody() const {
    return (isRpcCall() || isBatch()) && !expectsContinue && bodyLength > 0 && bodyLength <= longestCall;
}

void RequestFacts::forgetRpc() {
    const bool isOfUploads = path().startsWith(restUploadBase);
    if (isRpcCall())
        rpcMethods.clear();
    else if (isOfUploads && (isUploadPut() || !rpcMethods.isEmpty()))
        formerPath = "/upload/rpc";
    else if (isBatch() || !rpcMethods.isEmpty())
        formerPath = "/rpc";
}

void RequestFacts::readBody(QByteArrayView body) {
    if (isBatch()) {
        for (const BatchCall& call : batchCalls(contentType, body.toByteArray()).value_or(QList<BatchCall>()))
            if (const auto called = calledMethod(call.verb, call.target))
                rpcMethods.append(called->name);
        return;
    }
    const QJsonDocument document = QJsonDocument::fromJson(body.toByteArray());
    const QJsonArray calls = document.isArray() ? document.array() : QJsonArray{document.object()};
    for (const QJsonValue& call : calls)
        rpcMethods.append(call[QLatin1String("method")].toString());
}

std::optional<RequestFacts> RequestFacts::ofHead(QByteArrayView bytes) {
    const qsizetype end = bytes.indexOf(QByteArrayView("\r\n\r\n"));
    if (end < 0)
        return std::nullopt;
    const QList<QByteArray> lines = bytes.first(end).toByteArray().split('\n');
    const QList<QByteArray> requestLine = lines.first().trimmed().split(' ');
    RequestFacts facts;
    facts.headLength = end + 4;
    facts.method = requestLine.value(0);
    facts.target = requestLine.value(1);
    for (const QByteArray& line : lines.mid(1)) {
        const qsizetype colon = line.indexOf(':');
        const QByteArray name = line.left(colon).trimmed();
        const QByteArray value = line.mid(colon + 1).trimmed();
        if (sameName(name, "Content-Length"))
            facts.bodyLength = value.toLongLong();
        else if (sameName(name, "Host"))
            facts.host = value;
        else if (sameName(name, "Expect"))
            facts.expectsContinue = true;
        else if (sameName(name, "Content-Range"))
            facts.isStatusQuery = value.startsWith("bytes */");
        else if (sameName(name, "Content-Type"))
            facts.contentType = value;
    }
    if (const auto called = calledMethod(facts.method, facts.target))
        facts.rpcMethods.append(called->name);
    return facts;
}

} // namespace quenby::localdrive
