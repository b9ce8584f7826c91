#include "localdrive/server/web/PageEndpoint.h"

#include "localdrive/server/web/WebSession.h"

#include <QDateTime>
#include <QJsonArray>
#include <QLocale>

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

QString sizeText(const QJsonObject& file) {
    const QJsonValue size = file[QLatin1String("fileSize")];
    if (size.isUndefined())
        return QStringLiteral("–");
    const qint64 bytes = size.isString() ? size.toString().toLongLong() : size.toInteger();
    return QLocale::c().formattedDataSize(bytes, 1, QLocale::DataSizeTraditionalFormat);
}

QString dateText(const QJsonObject& file) {
    const auto date = QDateTime::fromString(file[QLatin1String("modifiedDate")].toString(), Qt::ISODateWithMs);
    return date.toLocalTime().toString(QStringLiteral("yyyy-MM-dd HH:mm"));
}

PageTemplates::Values valuesOf(const QJsonObject& file) {
    const QString type = file[QLatin1String("mimeType")].toString();
    return {{QStringLiteral("title"), file[QLatin1String("title")].toString()},
            {QStringLiteral("type"), type},
            {QStringLiteral("size"), sizeText(file)},
            {QStringLiteral("modified"), dateText(file)},
            {QStringLiteral("icon"), file[QLatin1String("iconLink")].toString()},
            {QStringLiteral("link"), file[QLatin1String("alternateLink")].toString()},
            {QStringLiteral("download"), file[QLatin1String("downloadUrl")].toString()}};
}

} // namespace

PageEndpoint::PageEndpoint(const RpcMethods& methods, TokenStore& tokens, const Authenticator& authenticator,
                           const PageTemplates& pages, const FormGuard& guard, Account owner)
    : methods_(methods)
    , tokens_(tokens)
    , authenticator_(authenticator)
    , pages_(pages)
    , guard_(guard)
    , owner_(std::move(owner)) {}

void PageEndpoint::addRoutes(HttpServer& server) {
    const auto root = [this](const Request& request, Response& response) {
        showFolder(QStringLiteral("root"), request, response);
    };
    const auto file = [this](const Request& request, Response& response) {
        showFile(pathPart(request, 1), request, response);
    };
    const auto leaving = [this](const Request& request, Response& response) { signOut(request, response); };
    server.Get("/", root);
    server.Get("/drive/folders/([^/]+)", [this](const Request& request, Response& response) {
        showFolder(pathPart(request, 1), request, response);
    });
    server.Get("/file/d/([^/]+)/view", file);
    server.Get("/file/([^/]+)", file);
    server.Get("/(?:document|spreadsheets|presentation|drawings)/d/([^/]+)/edit", file);
    server.Get("/signin", [this](const Request& request, Response& response) { showSignIn(request, response); });
    server.Post("/signin", [this](const Request& request, Response& response) { signIn(request, response); });
    server.Get("/logout", leaving);
    server.Get("/Logout", leaving);
    server.Get("/pages/style.css", [this](const Request&, Response& response) {
        response.set_header("Cache-Control", "no-cache");
        send(response, 200, pages_.styleSheet(), "text/css; charset=utf-8");
    });
}

std::optional<Caller> PageEndpoint::visitor(const Request& request, Response& response) const {
    auto caller = authenticator_.byPage(request);
    if (!caller) {
        const QByteArray back = QUrl::toPercentEncoding(QString::fromStdString(request.path));
        response.set_redirect("/signin?continue=" + back.toStdString());
    }
    return caller;
}

std::optional<QJsonObject> PageEndpoint::call(const QString& method, const QJsonObject& params, const Caller& caller,
                                              Response& response) const {
    CallContext context;
    static_cast<Caller&>(context) = caller;
    const QJsonObject outcome = methods_.call(method, params, context);
    if (outcome.contains(QLatin1String("result")))
        return outcome[QLatin1String("result")].toObject();
    const QJsonObject error = outcome[QLatin1String("error")].toObject();
    const int code = error[QLatin1String("code")].toInt();
    showMessage(code >= 400 && code < 600 ? code : 500, QStringLiteral("This page can't be shown"),
                error[QLatin1String("message")].toString(), response);
    return std::nullopt;
}

void PageEndpoint::showMessage(int status, const QString& heading, const QString& text, Response& response) const {
    PageTemplates::send(response, status,
                        pages_.fill(QStringLiteral("message"), {{QStringLiteral("title"), heading},
                                                                {QStringLiteral("heading"), heading},
                                                                {QStringLiteral("text"), text}}));
}

void PageEndpoint::showFolder(const QString& folderId, const Request& request, Response& response) const {
    const auto caller = visitor(request, response);
    if (!caller)
        return;
    const QString folder = QString(folderId).replace(QLatin1Char('\''), QString());
    const QJsonObject query{{QStringLiteral("q"), QStringLiteral("'%1' in parents and trashed = false").arg(folder)},
                            {QStringLiteral("maxResults"), 1000}};
    const auto list = call(QStringLiteral("drive.files.list"), query, *caller, response);
    if (!list)
        return;
    QString rows;
    for (const QJsonValue& file : (*list)[QLatin1String("items")].toArray())
        rows += pages_.fill(QStringLiteral("row"), valuesOf(file.toObject()));
    PageTemplates::send(response, 200,
                        pages_.fill(QStringLiteral("folder"), {{QStringLiteral("email"), caller->user.emailAddress},
                                                               {QStringLiteral("rows"), rows}}));
}

void PageEndpoint::showFile(const QString& fileId, const Request& request, Response& response) const {
    const auto caller = visitor(request, response);
    if (!caller)
        return;
    const auto file = call(QStringLiteral("drive.files.get"), {{QStringLiteral("fileId"), fileId}}, *caller, response);
    if (!file)
        return;
    PageTemplates::Values values = valuesOf(*file);
    values.insert(QStringLiteral("email"), caller->user.emailAddress);
    const QJsonObject exports = (*file)[QLatin1String("exportLinks")].toObject();
    QString links;
    for (auto link = exports.begin(); link != exports.end(); ++link) {
        links += pages_.fill(QStringLiteral("export"),
                             {{QStringLiteral("link"), link.value().toString()}, {QStringLiteral("type"), link.key()}});
    }
    if (!values[QStringLiteral("download")].isEmpty()) {
        links += pages_.fill(QStringLiteral("export"), {{QStringLiteral("link"), values[QStringLiteral("download")]},
                                                        {QStringLiteral("type"), QStringLiteral("Download")}});
    }
    values.insert(QStringLiteral("links"), links);
    PageTemplates::send(response, 200, pages_.fill(QStringLiteral("file"), values));
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

} // namespace quenby::localdrive
