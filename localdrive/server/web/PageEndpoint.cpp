#include "localdrive/server/web/PageEndpoint.h"

#include "localdrive/server/web/WebSession.h"

namespace quenby::localdrive {
namespace {

using httplib::Request;
using httplib::Response;

// A path of this site to go to after signing in. Anything else leads to the first page: nobody is sent elsewhere.
QString localPath(const QString& path) {
    const bool isLocal =
        path.startsWith(QLatin1Char('/')) && !path.startsWith(QLatin1String("//")) && !path.contains(QLatin1Char('\\'));
    return isLocal ? path : QStringLiteral("/");
}

} // namespace

PageEndpoint::PageEndpoint(TokenStore& tokens, const PageTemplates& pages, const FormGuard& guard, Account owner)
    : tokens_(tokens)
    , pages_(pages)
    , guard_(guard)
    , owner_(std::move(owner)) {}

void PageEndpoint::addRoutes(HttpServer& server) {
    server.Get("/signin", [this](const Request& request, Response& response) { showSignIn(request, response); });
    server.Post("/signin", [this](const Request& request, Response& response) { signIn(request, response); });
    const auto leaving = [this](const Request& request, Response& response) { signOut(request, response); };
    for (const char* path : {"/logout", "/Logout", "/accounts/Logout"})
        server.Get(path, leaving);
    server.Get("/pages/(.+)", [this](const Request& request, Response& response) { sendAsset(request, response); });
}

void PageEndpoint::showMessage(int status, const QString& heading, const QString& text, Response& response) const {
    const QString wayText = status == 200 ? QStringLiteral("Sign in again") : QStringLiteral("My Drive");
    const QString way = pages_.fill(QStringLiteral("way"),
                                    {{QStringLiteral("link"), QStringLiteral("/")}, {QStringLiteral("text"), wayText}});
    PageTemplates::send(response, status,
                        pages_.fill(QStringLiteral("message"), {{QStringLiteral("title"), heading},
                                                                {QStringLiteral("heading"), heading},
                                                                {QStringLiteral("text"), text},
                                                                {QStringLiteral("way"), way}}));
}

void PageEndpoint::showSignIn(const Request& request, Response& response) const {
    const QString path = localPath(parameter(request, "continue"));
    const QByteArray mark = guard_.mark(path.toUtf8(), request, response);
    PageTemplates::send(response, 200,
                        pages_.fill(QStringLiteral("signin"), {{QStringLiteral("email"), owner_.emailAddress},
                                                               {QStringLiteral("continue"), path},
                                                               {QStringLiteral("csrf"), QString::fromLatin1(mark)}}));
}

void PageEndpoint::signIn(const Request& request, Response& response) {
    const QString path = parameter(request, "continue");
    if (!guard_.accepts(parameter(request, "csrf").toLatin1(), path.toUtf8(), request)) {
        return showMessage(403, QStringLiteral("This page is out of date"),
                           QStringLiteral("Go back and open it again."), response);
    }
    const auto session = tokens_.openWebSession(signedInAccount(parameter(request, "email"), owner_));
    if (!session) {
        return showMessage(500, QStringLiteral("Signing in failed"),
                           QStringLiteral("The local Drive can't write its database. Check the disk's free space."),
                           response);
    }
    setWebSession(response, *session);
    response.set_redirect(localPath(path).toStdString(), 303);
}

void PageEndpoint::signOut(const Request& request, Response& response) {
    const auto closed = tokens_.closeWebSession(webSession(request));
    setWebSession(response, {});
    showMessage(closed ? 200 : 500, QStringLiteral("Signed out"),
                closed ? QStringLiteral("You are signed out of the local Drive.")
                       : QStringLiteral("This browser is signed out, but the local Drive could not note it."),
                response);
}

// An address with the present mark never means anything else; others are asked for again each time.
void PageEndpoint::sendAsset(const Request& request, Response& response) const {
    const PageAsset* asset = pages_.asset(pathPart(request, 1));
    response.set_header("Content-Security-Policy", "default-src 'none'");
    response.set_header("X-Content-Type-Options", "nosniff");
    if (!asset)
        return send(response, 404, {}, "text/plain");
    const QByteArray tag = '"' + pages_.assetMark() + '"';
    const bool isMarked = parameter(request, "v").toLatin1() == pages_.assetMark();
    response.set_header("Cache-Control", isMarked ? "public, max-age=31536000, immutable" : "no-cache");
    response.set_header("ETag", tag.toStdString());
    if (header(request, "If-None-Match") == tag)
        response.status = 304;
    else
        send(response, 200, asset->bytes, asset->type);
}

} // namespace quenby::localdrive
