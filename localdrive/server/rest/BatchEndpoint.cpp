#include "localdrive/server/rest/BatchEndpoint.h"

#include <QJsonDocument>

#include <algorithm>

namespace quenby::localdrive {
namespace {

constexpr qsizetype mostCalls = 100;

QByteArray bytesOf(const RestAnswer& answer) {
    return answer.resource ? QJsonDocument(*answer.resource).toJson(QJsonDocument::Compact) : QByteArray();
}

} // namespace

void BatchEndpoint::addRoutes(HttpServer& server) {
    const auto answering = [this](const httplib::Request& request, httplib::Response& response) {
        answer(request, response);
    };
    server.Post("/batch", answering);
    server.Post(std::string("/batch") + restBase, answering);
}

void BatchEndpoint::answer(const httplib::Request& request, httplib::Response& response) const {
    const auto calls = batchCalls(header(request, "Content-Type"), body(request));
    if (!calls || calls->isEmpty())
        return sendApiError(response, 400, "badRequest",
                            QStringLiteral("A batch is multipart/mixed, of parts that are application/http."),
                            ErrorForm::rest);
    if (calls->size() > mostCalls)
        return sendApiError(response, 400, "batchSizeTooLarge",
                            QStringLiteral("A batch holds at most %1 calls.").arg(mostCalls), ErrorForm::rest);
    // Without a token for the whole, each call may bring its own.
    const bool bringOwn =
        std::all_of(calls->begin(), calls->end(), [](const BatchCall& call) { return !call.authorization.isEmpty(); });
    const auto caller = bringOwn ? std::nullopt : authenticator_.byToken(request, response, ErrorForm::rest);
    if (!caller && !bringOwn)
        return;
    QList<BatchAnswer> answers;
    for (const BatchCall& call : *calls)
        answers.prepend(answerOne(call, caller));
    const QByteArray boundary = "batch_" + randomSecret(18);
    const QByteArray type = "multipart/mixed; boundary=" + boundary;
    send(response, 200, batchReply(answers, boundary), type.constData());
}

BatchAnswer BatchEndpoint::answerOne(const BatchCall& call, const std::optional<Caller>& caller) const {
    std::optional<Caller> own = caller;
    if (!call.authorization.isEmpty()) {
        httplib::Request request;
        httplib::Response refusal;
        request.set_header("Authorization", call.authorization.toStdString());
        own = authenticator_.byToken(request, refusal, ErrorForm::rest);
        if (!own)
            return {call.contentId, refusal.status, QByteArray::fromStdString(refusal.body)};
    }
    CallContext context;
    static_cast<Caller&>(context) = *own;
    const RestAnswer answer = answerRestCall(methods_, call.verb, call.target, call.body, context);
    return {call.contentId, answer.status, bytesOf(answer)};
}

} // namespace quenby::localdrive
