#include "localdrive/server/oauth/SignInEndpoint.h"

#include "localdrive/server/http/HttpMessages.h"
#include "localdrive/server/oauth/OAuthError.h"
#include "localdrive/server/web/WebSession.h"

#include <QRegularExpression>

#include <algorithm>

namespace quenby::localdrive {
namespace {

// Where a form's answer redirects to, for the content security policy.
QString originOf(const QString& redirectUri) {
    const QUrl url(redirectUri);
    return url.scheme() == QLatin1String("http") ? url.adjusted(QUrl::RemovePath | QUrl::RemoveQuery).toString()
                                                 : QString();
}

// What people call the program. A Drive on one's own computer knows one by name.
QString clientName(const QString& clientId) {
    return clientId.startsWith(QLatin1String("123456789012-abcdefghijklmnopqrstuvwxyz012345"))
               ? QStringLiteral("Quenby")
               : clientId;
}

QString scopeSentences(const QString& scope) {
    QStringList sentences;
    const QStringList scopes = scope.split(QLatin1Char(' '));
    const auto isOfOwnFiles = [](const QString& one) { return one.endsWith(QLatin1String("/auth/drive.file")); };
    const auto isOfAnyFile = [&](const QString& one) {
        return one.contains(QLatin1String("/auth/drive")) && !isOfOwnFiles(one);
    };
    if (std::any_of(scopes.begin(), scopes.end(), isOfAnyFile)) {
        sentences.append(QStringLiteral("See, change, add and delete the files in your Drive"));
        sentences.append(QStringLiteral("Change who may see them"));
        sentences.append(QStringLiteral("See your name, your e-mail address and how much room is left"));
    } else {
        if (std::any_of(scopes.begin(), scopes.end(), isOfOwnFiles))
            sentences.append(
                QStringLiteral("See, change, add and delete the files that it makes in your Drive itself"));
        if (scope.contains(QLatin1String("email")))
            sentences.append(QStringLiteral("See your e-mail address"));
        if (scope.contains(QLatin1String("profile")))
            sentences.append(QStringLiteral("See your name"));
    }
    return QStringLiteral("<li>") + sentences.join(QStringLiteral("</li><li>")) + QStringLiteral("</li>");
}

} // namespace

SignInEndpoint::SignInEndpoint(TokenStore& tokens, const PageTemplates& pages, const FormGuard& guard, Account owner,
                               Statistics& statistics)
    : tokens_(tokens)
    , pages_(pages)
    , guard_(guard)
    , owner_(std::move(owner))
    , statistics_(statistics) {}

void SignInEndpoint::addRoutes(HttpServer& server) {
    server.Get("/o/oauth2/auth", [this](const auto& request, auto& response) { showPage(request, response); });
    server.Post("/o/oauth2/approve",
                [this](const httplib::Request& request, httplib::Response& response) { decide(request, response); });
}

void SignInEndpoint::showPage(const httplib::Request& request, httplib::Response& response) const {
    const auto parsed = AuthorizationRequest::parse(request);
    if (const auto* failure = std::get_if<AuthorizationRequest::Failure>(&parsed))
        return refuse(*failure, response);
    const auto& asked = std::get<AuthorizationRequest>(parsed);
    const QByteArray field = asked.toField();
    const QString page =
        pages_.fill(QStringLiteral("consent"),
                    {{QStringLiteral("client"), clientName(asked.clientId)},
                     {QStringLiteral("email"), owner_.emailAddress},
                     {QStringLiteral("scopes"), scopeSentences(asked.scope)},
                     {QStringLiteral("request"), QString::fromLatin1(field)},
                     {QStringLiteral("csrf"), QString::fromLatin1(guard_.mark(field, request, response))}});
    PageTemplates::send(response, 200, page, originOf(asked.redirectUri));
}

void SignInEndpoint::decide(const httplib::Request& request, httplib::Response& response) {
    const QByteArray field = parameter(request, "request").toLatin1();
    if (!guard_.accepts(parameter(request, "csrf").toLatin1(), field, request)) {
        const Error error = oauthError(QStringLiteral("invalid_request"),
                                       QStringLiteral("This page is out of date. Go back and open it again."), 403);
        return refuse({error, false, {}, {}}, response);
    }
    const AuthorizationRequest asked = AuthorizationRequest::fromField(field);
    if (parameter(request, "decision") != QLatin1String("allow"))
        return answer(asked, QStringLiteral("error"), QStringLiteral("access_denied"), response);
    approve(asked, signedInAccount(parameter(request, "email"), owner_), response);
}

void SignInEndpoint::approve(const AuthorizationRequest& asked, const Account& user, httplib::Response& response) {
    const auto code = tokens_.issueCode({asked.clientId, user, asked.scope}, {asked.redirectUri, asked.codeChallenge});
    const auto session = tokens_.openWebSession(user);
    if (!code || !session)
        return answer(asked, QStringLiteral("error"), QStringLiteral("server_error"), response);
    statistics_.secretIssued(*code);
    statistics_.secretIssued(*session);
    setWebSession(response, *session);
    answer(asked, QStringLiteral("code"), QString::fromLatin1(*code), response);
}

void SignInEndpoint::answer(const AuthorizationRequest& asked, const QString& name, const QString& value,
                            httplib::Response& response) const {
    if (!asked.answersInTitle()) {
        response.set_redirect(asked.answerUrl(name, value).toEncoded().toStdString());
        return;
    }
    const bool isGood = name == QLatin1String("code");
    const QString word = isGood ? QStringLiteral("Success") : QStringLiteral("Denied");
    const QString good = QStringLiteral("good");
    const QString heading = isGood ? QStringLiteral("You are signed in") : QStringLiteral("You are not signed in");
    const QString text = isGood ? QStringLiteral("You can close this window.")
                                : QStringLiteral("Nothing was allowed. You can close this window.");
    const QString title = word + QLatin1Char(' ') + name + QLatin1Char('=') + value;
    PageTemplates::send(response, 200,
                        pages_.fill(QStringLiteral("message"), {{QStringLiteral("title"), title},
                                                                {QStringLiteral("kind"), isGood ? good : QString()},
                                                                {QStringLiteral("heading"), heading},
                                                                {QStringLiteral("text"), text}}));
}

void SignInEndpoint::refuse(const AuthorizationRequest::Failure& failure, httplib::Response& response) const {
    const QString name = failure.error.detail(errorKey::error).toString();
    if (failure.mayRedirect)
        return answer({{}, failure.redirectUri, {}, failure.state, {}}, QStringLiteral("error"), name, response);
    PageTemplates::send(response, static_cast<int>(failure.error.code()),
                        pages_.fill(QStringLiteral("message"),
                                    {{QStringLiteral("title"), QStringLiteral("Sign-in – Local Drive")},
                                     {QStringLiteral("kind"), QStringLiteral("trouble")},
                                     {QStringLiteral("heading"), QStringLiteral("This sign-in can't go on")},
                                     {QStringLiteral("text"), failure.error.detail(errorKey::reason).toString()}}));
}

} // namespace quenby::localdrive
