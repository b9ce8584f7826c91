#include "localdrive/server/web/PageGuard.h"

#include "localdrive/server/web/WebSession.h"

#include <QMessageAuthenticationCode>

namespace quenby::localdrive {

bool comesFromHere(const httplib::Request& request) {
    const QByteArray site = header(request, "Sec-Fetch-Site");
    if (!site.isEmpty() && site != "same-origin")
        return false;
    const QByteArray origin = header(request, "Origin");
    return origin.isEmpty() || QUrl::fromEncoded(origin).authority().toUtf8() == header(request, "Host");
}

PageGuard::PageGuard(const Authenticator& authenticator, QByteArray secret)
    : authenticator_(authenticator)
    , secret_(std::move(secret)) {}

std::optional<Caller> PageGuard::visitor(const httplib::Request& request, httplib::Response& response) const {
    auto caller = authenticator_.byPage(request);
    if (!caller) {
        const QByteArray back = QUrl::toPercentEncoding(QString::fromStdString(request.target));
        response.set_header("Cache-Control", "no-store");
        response.set_redirect("/signin?continue=" + back.toStdString());
    }
    return caller;
}

QByteArray PageGuard::key(const httplib::Request& request) const {
    return QMessageAuthenticationCode::hash("page\n" + webSession(request), secret_, QCryptographicHash::Sha256)
        .toBase64(QByteArray::Base64UrlEncoding | QByteArray::OmitTrailingEquals);
}

std::optional<Caller> PageGuard::caller(const httplib::Request& request, httplib::Response& response) const {
    response.set_header("Cache-Control", "no-store");
    response.set_header("X-Content-Type-Options", "nosniff");
    response.set_header("Content-Security-Policy", "default-src 'none'; frame-ancestors 'none'");
    if (!comesFromHere(request)) {
        sendApiError(response, 403, "forbidden", QStringLiteral("Only the Drive's own pages may ask for this."));
        return std::nullopt;
    }
    auto caller = authenticator_.byPage(request);
    if (!caller) {
        sendApiError(response, 401, "required", QStringLiteral("You are not signed in any more."));
        return std::nullopt;
    }
    if (!equalSecrets(header(request, "X-Web-Key"), key(request))) {
        sendApiError(response, 403, "outdated", QStringLiteral("This page is out of date. Load it again."));
        return std::nullopt;
    }
    return caller;
}

} // namespace quenby::localdrive
