#include "localdrive/server/web/WebCalls.h"

#include "localdrive/server/web/WebUpload.h"
#include "localdrive/store/ApiError.h"
#include "localdrive/store/ChangeLog.h"
#include "localdrive/store/NativeTypes.h"

#include <QJsonArray>
#include <QJsonDocument>

namespace quenby::localdrive {
namespace {

using httplib::Request;
using httplib::Response;

constexpr qsizetype mostFiles = 10000; // in one call

CallContext contextOf(const Caller& caller) {
    CallContext context;
    static_cast<Caller&>(context) = caller;
    return context;
}

// The API's errors name parameters and ids; these are for people.
QString sentence(const QJsonObject& error) {
    const QString reason = error[QLatin1String("data")][0][QLatin1String("reason")].toString();
    if (reason == QLatin1String("notFound"))
        return QStringLiteral("It is not there any more.");
    if (reason == QLatin1String("insufficientFilePermissions"))
        return QStringLiteral("Only its owner may do that, or people who were let in to edit.");
    if (reason == QLatin1String("quotaExceeded"))
        return QStringLiteral("The Drive is full. Delete files or empty the trash.");
    if (reason == QLatin1String("backendError"))
        return QStringLiteral("The local Drive failed. Check the disk's free space.");
    return error[QLatin1String("message")].toString();
}

int statusOf(const QJsonObject& error) {
    const int code = error[QLatin1String("code")].toInt();
    return code >= 400 && code < 600 ? code : 500;
}

void refuse(Response& response, const QJsonObject& error) {
    sendApiError(response, statusOf(error), "refused", sentence(error));
}

QJsonObject folderResource(const QString& title, const QString& parent) {
    return {{QStringLiteral("title"), title},
            {QStringLiteral("mimeType"), folderMimeType},
            {QStringLiteral("parents"), QJsonArray{QJsonObject{{QStringLiteral("id"), parent}}}}};
}

} // namespace

void WebCalls::on(HttpServer& server, const char* path, const Answer& answer) const {
    server.Post(path, [this, answer](const Request& request, Response& response) {
        const auto caller = guard_.caller(request, response);
        if (!caller)
            return;
        const QJsonDocument asked = QJsonDocument::fromJson(body(request));
        if (!asked.isObject())
            return sendApiError(response, 400, "invalid", QStringLiteral("The body must be a JSON object."));
        answer(asked.object(), *caller, response);
    });
}

void WebCalls::addRoutes(HttpServer& server) {
    on(server, "/web/folder", [this](const QJsonObject& asked, const Caller& caller, Response& response) {
        const QJsonObject resource =
            folderResource(asked[QLatin1String("title")].toString(), asked[QLatin1String("parent")].toString());
        call(QStringLiteral("drive.files.insert"), {{QStringLiteral("resource"), resource}}, caller, response);
    });
    on(server, "/web/rename", [this](const QJsonObject& asked, const Caller& caller, Response& response) {
        const QString title = asked[QLatin1String("title")].toString().trimmed();
        if (title.isEmpty())
            return sendApiError(response, 400, "invalid", QStringLiteral("A name can't be empty."));
        call(QStringLiteral("drive.files.patch"),
             {{QStringLiteral("fileId"), asked[QLatin1String("id")]},
              {QStringLiteral("resource"), QJsonObject{{QStringLiteral("title"), title}}}},
             caller, response);
    });
    on(server, "/web/empty-trash", [this](const QJsonObject&, const Caller& caller, Response& response) {
        call(QStringLiteral("drive.files.emptyTrash"), {}, caller, response);
    });
    const std::pair<const char*, QString> each[] = {{"/web/trash", QStringLiteral("drive.files.trash")},
                                                    {"/web/restore", QStringLiteral("drive.files.untrash")},
                                                    {"/web/delete", QStringLiteral("drive.files.delete")}};
    for (const auto& [path, method] : each) {
        on(server, path, [this, method = method](const QJsonObject& asked, const Caller& caller, Response& response) {
            callEach(method, asked, caller, response);
        });
    }
    server.Get("/web/state", [this](const Request& request, Response& response) { tellState(request, response); });
    server.Post("/web/upload", [this](const Request& request, Response& response, const httplib::ContentReader& read) {
        upload(request, response, read);
    });
}

void WebCalls::call(const QString& method, const QJsonObject& params, const Caller& caller, Response& response) const {
    const QJsonObject outcome = methods_.call(method, params, contextOf(caller));
    if (outcome.contains(QLatin1String("error")))
        return refuse(response, outcome[QLatin1String("error")].toObject());
    sendJson(response, 200, {{QStringLiteral("id"), outcome[QLatin1String("result")][QLatin1String("id")]}});
}

void WebCalls::callEach(const QString& method, const QJsonObject& asked, const Caller& caller,
                        Response& response) const {
    const QJsonArray ids = asked[QLatin1String("ids")].toArray();
    if (ids.isEmpty() || ids.size() > mostFiles)
        return sendApiError(response, 400, "invalid", QStringLiteral("Between one and 10000 ids are needed."));
    QJsonArray failed;
    for (const QJsonValue id : ids) {
        const QJsonObject outcome = methods_.call(method, {{QStringLiteral("fileId"), id}}, contextOf(caller));
        if (outcome.contains(QLatin1String("error")))
            failed.append(
                QJsonObject{{QStringLiteral("id"), id},
                            {QStringLiteral("message"), sentence(outcome[QLatin1String("error")].toObject())}});
    }
    sendJson(response, 200, {{QStringLiteral("done"), ids.size() - failed.size()}, {QStringLiteral("failed"), failed}});
}

// By which a page that is looked at again knows whether something happened meanwhile.
void WebCalls::tellState(const Request& request, Response& response) const {
    if (!guard_.caller(request, response))
        return;
    Session session(store_.database(), Session::Kind::read);
    const QString version = QString::number(largestChangeId(session));
    sendJson(response, session.failure() ? 500 : 200, {{QStringLiteral("version"), version}});
}

void WebCalls::upload(const Request& request, Response& response, const httplib::ContentReader& read) const {
    const auto caller = guard_.caller(request, response);
    if (!caller) {
        discardBody(read);
        return;
    }
    const QJsonObject resource{
        {QStringLiteral("title"), parameter(request, "title")},
        {QStringLiteral("parents"), QJsonArray{QJsonObject{{QStringLiteral("id"), parameter(request, "folder")}}}}};
    const qint64 length = header(request, "Content-Length").toLongLong();
    if (const auto room = methods_.checkAnnounced(QStringLiteral("drive.files.insert"), {}, length); !room) {
        discardBody(read);
        return refuse(response, toRpcError(room.error()));
    }
    WebUpload arriving(store_.blobs());
    const Result<StagedBlob> content = arriving.receive(read, length);
    if (!content)
        return sendApiError(response, 507, "notStored", content.error().detail(errorKey::reason).toString());
    CallContext context = contextOf(*caller);
    context.media = *content;
    context.mediaType = mediaTypeOf(parameter(request, "title"), header(request, "Content-Type"));
    const QJsonObject outcome =
        methods_.call(QStringLiteral("drive.files.insert"), {{QStringLiteral("resource"), resource}}, context);
    if (outcome.contains(QLatin1String("error")))
        return refuse(response, outcome[QLatin1String("error")].toObject());
    sendJson(response, 200, {{QStringLiteral("id"), outcome[QLatin1String("result")][QLatin1String("id")]}});
}

} // namespace quenby::localdrive
