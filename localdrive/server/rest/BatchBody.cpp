#include "localdrive/server/rest/BatchBody.h"

#include "localdrive/server/rest/MultipartBody.h"
#include "localdrive/server/rest/RestMethods.h"

#include <QUrl>

namespace quenby::localdrive {
namespace {

// Calls may name whole addresses or paths.
QByteArray pathAndQuery(const QByteArray& target) {
    return target.startsWith('/') ? target
                                  : QUrl::fromEncoded(target).toEncoded(QUrl::RemoveScheme | QUrl::RemoveAuthority);
}

BatchCall callOf(const MultipartPart& part) {
    BatchCall call{part.header("Content-ID"), {}, {}, {}, {}};
    const bool isHttp = part.header("Content-Type").startsWith("application/http");
    const qsizetype lineEnd = part.content.indexOf('\n');
    const QByteArrayList line = part.content.left(lineEnd).trimmed().split(' ');
    if (!isHttp || line.size() < 2)
        return call;
    call.verb = line[0];
    call.target = pathAndQuery(line[1]);
    if (lineEnd < 0)
        return call;
    const auto request = MultipartPart::parse(QByteArrayView(part.content).sliced(lineEnd + 1));
    call.authorization = request.header("Authorization");
    call.body = request.content;
    return call;
}

// "<x>" is answered as "<response-x>".
QByteArray answerId(const QByteArray& contentId) {
    const QByteArray mark = "response-";
    return contentId.startsWith('<') ? QByteArray('<' + mark + contentId.sliced(1)) : QByteArray(mark + contentId);
}

QByteArray statusLine(int status) {
    const char* phrase = status < 300 ? "OK" : "Error";
    return "HTTP/1.1 " + QByteArray::number(status) + ' ' + (status == 204 ? "No Content" : phrase) + "\r\n";
}

} // namespace

bool isBatchPath(const QByteArray& path) { return path == "/batch" || path == QByteArray("/batch") + restBase; }

std::optional<QList<BatchCall>> batchCalls(const QByteArray& contentType, const QByteArray& body) {
    if (!contentType.toLower().startsWith("multipart/mixed"))
        return std::nullopt;
    const auto parts = multipartParts(contentType, body);
    if (!parts)
        return std::nullopt;
    QList<BatchCall> calls;
    for (const MultipartPart& part : *parts)
        calls.append(callOf(part));
    return calls;
}

QByteArray batchReply(const QList<BatchAnswer>& answers, const QByteArray& boundary) {
    QByteArray reply;
    for (const BatchAnswer& answer : answers) {
        reply += "--" + boundary + "\r\nContent-Type: application/http\r\n";
        if (!answer.contentId.isEmpty())
            reply += "Content-ID: " + answerId(answer.contentId) + "\r\n";
        reply += "\r\n" + statusLine(answer.status);
        if (!answer.body.isEmpty())
            reply += "Content-Type: application/json; charset=UTF-8\r\nContent-Length: " +
                     QByteArray::number(answer.body.size()) + "\r\n";
        reply += "\r\n" + answer.body + "\r\n";
    }
    return reply + "--" + boundary + "--\r\n";
}

} // namespace quenby::localdrive
