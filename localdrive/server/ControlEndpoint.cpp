#include "localdrive/server/ControlEndpoint.h"

#include "localdrive/server/http/HttpMessages.h"
#include "localdrive/server/web/WebSession.h"

#include <QJsonArray>
#include <QJsonDocument>

namespace quenby::localdrive {

namespace {

const QString rpcMember = QStringLiteral("rpc");
const QString changeIdsMember = QStringLiteral("changeIds");

} // namespace

using httplib::Request;
using httplib::Response;

void ControlEndpoint::addRoutes(HttpServer& server) {
    // Without the token, there is nothing here.
    const auto guarded = [this](auto handler) {
        return [this, handler](const Request& request, Response& response) {
            if (equalSecrets(header(request, "X-Control-Token"), token_))
                handler(request, response);
            else
                sendApiError(response, 403, "forbidden", QStringLiteral("X-Control-Token is missing or wrong."));
        };
    };
    server.Post("/control/faults",
                guarded([this](const Request& request, Response& response) { addFaults(request, response); }));
    server.Get("/control/faults", guarded([this](const Request&, Response& response) {
                   sendJson(response, 200, {{QStringLiteral("faults"), parts_.plan.toJson()}});
               }));
    server.Delete("/control/faults", guarded([this](const Request&, Response& response) {
                      parts_.plan.clear();
                      response.status = 204;
                  }));
    server.Get("/control/state", guarded([this](const Request&, Response& response) { state(response); }));
    server.Get("/control/service", guarded([this](const Request&, Response& response) {
                   sendJson(response, 200,
                            {{rpcMember, parts_.roads.isRpcOpen()}, {changeIdsMember, parts_.store.offersChangeIds()}});
               }));
    server.Post("/control/service",
                guarded([this](const Request& request, Response& response) { setService(request, response); }));
    server.Get("/control/secrets", guarded([this](const Request&, Response& response) {
                   const auto secrets = QJsonArray::fromStringList(parts_.statistics.secrets());
                   sendJson(response, 200, {{QStringLiteral("secrets"), secrets}});
               }));
    server.Post("/control/grant",
                guarded([this](const Request& request, Response& response) { grant(request, response); }));
    server.Post("/control/shutdown", guarded([this](const Request&, Response& response) {
                    response.status = 204;
                    parts_.shutdown();
                }));
}

void ControlEndpoint::addFaults(const Request& request, Response& response) {
    const QJsonDocument document = QJsonDocument::fromJson(body(request));
    if (!document.isArray())
        return sendApiError(response, 400, "badRequest", QStringLiteral("The body must be a JSON list of rules."));
    if (const auto added = parts_.plan.add(document.array()); !added)
        return sendApiError(response, 400, "badRequest", added.error().detail(errorKey::reason).toString());
    response.status = 204;
}

void ControlEndpoint::setService(const Request& request, Response& response) {
    const QJsonObject wanted = QJsonDocument::fromJson(body(request)).object();
    for (auto member = wanted.begin(); member != wanted.end(); ++member) {
        const bool isKnown = member.key() == rpcMember || member.key() == changeIdsMember;
        if (!isKnown || !member->isBool())
            return sendApiError(response, 400, "badRequest",
                                QStringLiteral("Known are: rpc and changeIds, true or false."));
    }
    parts_.roads.openRpc(wanted[rpcMember].toBool(parts_.roads.isRpcOpen()));
    parts_.store.offerChangeIds(wanted[changeIdsMember].toBool(parts_.store.offersChangeIds()));
    response.status = 204;
}

void ControlEndpoint::state(Response& response) {
    QJsonObject state = parts_.statistics.toJson();
    const QJsonObject counts = state[QLatin1String("uploads")].toObject();
    QJsonArray uploads;
    for (const QJsonValue& value : parts_.uploads.toJson()) {
        QJsonObject upload = value.toObject();
        const QJsonObject count = counts[upload[QLatin1String("session")].toString()].toObject();
        upload.insert(QStringLiteral("received"), count[QLatin1String("received")].toInteger());
        upload.insert(QStringLiteral("duplicates"), count[QLatin1String("duplicates")].toInteger());
        uploads.append(upload);
    }
    state.insert(QStringLiteral("uploads"), uploads);
    sendJson(response, 200, state);
}

void ControlEndpoint::grant(const Request& request, Response& response) {
    const QJsonObject asked = QJsonDocument::fromJson(body(request)).object();
    const auto text = [&asked](const char* key, const QString& standard) {
        return asked[QLatin1String(key)].toString(standard);
    };
    const QString everything = QStringLiteral("https://www.googleapis.com/auth/drive "
                                              "https://www.googleapis.com/auth/userinfo.email "
                                              "https://www.googleapis.com/auth/userinfo.profile");
    const auto tokens =
        parts_.tokens.issueDirectly({text("client_id", QStringLiteral("test")),
                                     signedInAccount(text("email", {}), parts_.owner), text("scope", everything)});
    if (!tokens)
        return sendApiError(response, 500, "backendError", QStringLiteral("The database can't be written."));
    sendJson(response, 200, parts_.tokenAnswers.tokenAnswer(*tokens, {}));
}

} // namespace quenby::localdrive
