#include "localdrive/server/docs/DownloadEndpoint.h"

#include "localdrive/server/docs/Export.h"
#include "localdrive/server/docs/FileNames.h"
#include "localdrive/server/web/ContentReply.h"
#include "localdrive/server/web/WebSession.h"
#include "localdrive/store/NativeTypes.h"

#include <QMessageAuthenticationCode>

namespace quenby::localdrive {
namespace {

using namespace std::chrono_literals;

constexpr std::chrono::seconds lifetime = 5min;

// What the request shows for its sign-in.
QByteArray credential(const httplib::Request& request) { return bearerToken(request).value_or(webSession(request)); }

} // namespace

DownloadEndpoint::DownloadEndpoint(DriveStore& store, const Authenticator& authenticator, const PageGuard& guard,
                                   const PageFrame& frame)
    : store_(store)
    , authenticator_(authenticator)
    , guard_(guard)
    , frame_(frame)
    , key_(randomSecret()) {}

void DownloadEndpoint::addRoutes(HttpServer& server) {
    using httplib::Request;
    using httplib::Response;
    server.Get("/uc", [this](const Request& request, Response& response) { lead(request, response); });
    server.Get("/usercontent/docs/securesc/([^/]+)/[^/]*",
               [this](const Request& request, Response& response) { sendSigned(request, response); });
}

QByteArray DownloadEndpoint::signedPart(const QString& fileId, qint64 expiry, const httplib::Request& request) const {
    constexpr auto form = QByteArray::Base64UrlEncoding | QByteArray::OmitTrailingEquals;
    const QByteArray named = QByteArray::number(expiry) + '.' + fileId.toUtf8();
    const QByteArray mark =
        QMessageAuthenticationCode::hash(named + '\n' + credential(request), key_, QCryptographicHash::Sha256);
    return named + '.' + mark.toBase64(form);
}

void DownloadEndpoint::lead(const httplib::Request& request, httplib::Response& response) const {
    const auto caller =
        bearerToken(request) ? authenticator_.byToken(request, response) : guard_.visitor(request, response);
    if (!caller)
        return;
    const QString id = parameter(request, "id");
    response.set_header("Cache-Control", "no-store");
    if (const auto document = documents::read(store_, *caller, id)) {
        const NativeKind& kind = *nativeKind(document->file.mimeType);
        if (!kind.formats.isEmpty())
            return response.set_redirect(exportLink({}, kind, document->file.id, usualFormat(kind)).toStdString());
    }
    const auto content = store_.content(*caller, id);
    if (!content && bearerToken(request))
        return sendCallError(response, content.error());
    if (!content) {
        return frame_.showMessage(404, QStringLiteral("There is nothing to download"),
                                  QStringLiteral("The file was deleted, or it is a folder or a form."), response);
    }
    const qint64 expiry = caller->now.addSecs(lifetime.count()).toSecsSinceEpoch();
    response.set_redirect("/usercontent/docs/securesc/" + signedPart(id, expiry, request).toStdString() + '/' +
                          QUrl::toPercentEncoding(fileName(content->title)).toStdString());
}

void DownloadEndpoint::sendSigned(const httplib::Request& request, httplib::Response& response) const {
    const auto caller = authenticator_.byTokenOrPage(request, response);
    if (!caller)
        return;
    const QByteArray part = pathPart(request, 1).toUtf8();
    const QByteArrayList pieces = part.split('.');
    const qint64 expiry = pieces.first().toLongLong();
    const QString id = QString::fromUtf8(pieces.value(1));
    const bool isGood = equalSecrets(part, signedPart(id, expiry, request));
    if (!isGood || expiry < caller->now.toSecsSinceEpoch()) {
        response.set_header("Cache-Control", "no-store");
        return sendApiError(response, 403, "forbidden",
                            QStringLiteral("This download address is not good any more. Begin the download again."));
    }
    auto content = store_.content(*caller, id);
    if (!content)
        return sendCallError(response, content.error());
    sendContent(request, response, std::move(*content));
}

} // namespace quenby::localdrive
