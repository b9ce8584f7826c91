#include "localdrive/server/share/ShareEndpoint.h"

#include "localdrive/server/share/ShareState.h"
#include "localdrive/server/web/PageGuard.h"
#include "localdrive/server/web/WebSession.h"

#include <QJsonDocument>

namespace quenby::localdrive {
namespace {

using httplib::Request;
using httplib::Response;

ShareCredential credentialOf(const Request& request) {
    const QByteArray token = parameter(request, "access_token").toUtf8();
    if (!token.isEmpty())
        return {ShareCredential::Kind::token, token};
    return {ShareCredential::Kind::webSession, webSession(request)};
}

QString member(const Request& request, QLatin1String name) {
    return QJsonDocument::fromJson(body(request)).object()[name].toString();
}

} // namespace

ShareEndpoint::ShareEndpoint(const RpcMethods& methods, TokenStore& tokens, const Authenticator& authenticator,
                             const PageTemplates& pages, Statistics& statistics)
    : methods_(methods)
    , tokens_(tokens)
    , authenticator_(authenticator)
    , pages_(pages)
    , statistics_(statistics) {}

void ShareEndpoint::addRoutes(HttpServer& server) {
    server.Get("/sharing/share", [this](const Request& request, Response& response) { showDialog(request, response); });
    constexpr char permissions[] = "/sharing/permissions";
    constexpr char onePermission[] = "/sharing/permissions/([^/]+)";
    server.Get(permissions, [this](const Request& request, Response& response) {
        apply([](const QString&, const Caller&) { return Result<void>(); }, request, response);
    });
    server.Post(permissions, [this](const Request& request, Response& response) {
        const auto change = [&](const QString& fileId, const Caller& caller) {
            return sharing::add(methods_, fileId, member(request, QLatin1String("people")),
                                member(request, QLatin1String("role")), caller);
        };
        apply(change, request, response);
    });
    server.Put(onePermission, [this](const Request& request, Response& response) {
        const auto change = [&](const QString& fileId, const Caller& caller) {
            return sharing::setRole(methods_, fileId, pathPart(request, 1), member(request, QLatin1String("role")),
                                    caller);
        };
        apply(change, request, response);
    });
    server.Delete(onePermission, [this](const Request& request, Response& response) {
        const auto change = [&](const QString& fileId, const Caller& caller) {
            return sharing::remove(methods_, fileId, pathPart(request, 1), caller);
        };
        apply(change, request, response);
    });
}

void ShareEndpoint::showDialog(const Request& request, Response& response) {
    const ShareCredential credential = credentialOf(request);
    const auto caller = callerOf(credential);
    if (!caller) {
        return showMessage(403, QStringLiteral("You are not signed in"),
                           QStringLiteral("Sign in again, and then share the file once more."), response);
    }
    const QString fileId = parameter(request, "id");
    const auto state = sharing::state(methods_, fileId, *caller);
    if (!state && state.error().code() < 500) {
        return showMessage(
            404, QStringLiteral("This file can't be shared"),
            QStringLiteral("It was deleted, or nobody has shared it with %1.").arg(caller->user.emailAddress),
            response);
    }
    if (!state) {
        return showMessage(500, QStringLiteral("Something went wrong"),
                           state.error().detail(errorKey::reason).toString(), response);
    }
    const QByteArray key = sessions_.open({credential, fileId});
    statistics_.secretIssued(key);
    const QByteArray stateText = QJsonDocument(*state).toJson(QJsonDocument::Compact);
    const QString page =
        pages_.fill(QStringLiteral("share"), {{QStringLiteral("title"), (*state)[QLatin1String("title")].toString()},
                                              {QStringLiteral("icon"), (*state)[QLatin1String("icon")].toString()},
                                              {QStringLiteral("link"), (*state)[QLatin1String("link")].toString()},
                                              {QStringLiteral("key"), QString::fromLatin1(key)},
                                              {QStringLiteral("state"), QString::fromUtf8(stateText)}});
    PageTemplates::sendWithScript(response, 200, page);
}

void ShareEndpoint::showMessage(int status, const QString& heading, const QString& text, Response& response) const {
    PageTemplates::sendWithScript(response, status,
                                  pages_.fill(QStringLiteral("sharemessage"),
                                              {{QStringLiteral("heading"), heading}, {QStringLiteral("text"), text}}));
}

void ShareEndpoint::apply(const Change& change, const Request& request, Response& response) const {
    response.set_header("Cache-Control", "no-store");
    if (!comesFromHere(request))
        return sendApiError(response, 403, "forbidden", QStringLiteral("Only the sharing dialog may ask for this."));
    const auto session = sessions_.find(header(request, "X-Share-Key"));
    const auto caller = session ? callerOf(session->credential) : std::nullopt;
    if (!caller) {
        return sendApiError(response, 401, "authError",
                            QStringLiteral("This dialog is out of date. Close it and open it again."));
    }
    if (const auto changed = change(session->fileId, *caller); !changed)
        return sendError(changed.error(), response);
    const auto state = sharing::state(methods_, session->fileId, *caller);
    if (!state)
        return sendError(state.error(), response);
    sendJson(response, 200, *state);
}

void ShareEndpoint::sendError(const Error& error, Response& response) const {
    const int code = static_cast<int>(error.code());
    sendApiError(response, code >= 400 && code < 600 ? code : 500, "sharing",
                 error.detail(errorKey::reason).toString());
}

std::optional<Caller> ShareEndpoint::callerOf(const ShareCredential& credential) const {
    std::optional<Account> user;
    if (credential.kind == ShareCredential::Kind::webSession) {
        user = tokens_.userOfWebSession(credential.secret);
    } else {
        auto grant = tokens_.grantOfRefreshToken(credential.secret);
        if (!grant)
            grant = tokens_.grantOfAccessToken(credential.secret);
        if (grant)
            user = grant->user;
    }
    return user ? std::optional(authenticator_.callerFor(*user)) : std::nullopt;
}

} // namespace quenby::localdrive
