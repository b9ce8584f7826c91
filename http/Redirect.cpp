#include "http/Redirect.h"

namespace quenby {
namespace {

bool isRedirectStatus(int status) {
    return status == 301 || status == 302 || status == 303 || status == 307 || status == 308;
}

// RFC 9110, section 15.4: 303 says "look there"; after 301 and 302 a POST has become a GET ever since browsers did so;
// 307 and 308 mean the same request again.
bool becomesGet(int status, const QByteArray& method) {
    return (status == 303 && method != "HEAD") || ((status == 301 || status == 302) && method == "POST");
}

} // namespace

std::optional<URLRequest> redirectedRequest(const URLRequest& request, const HTTPResponse& response) {
    if (!isRedirectStatus(response.statusCode))
        return std::nullopt;
    const QList<QByteArray> locations = response.headers.values("Location");
    if (locations.isEmpty() || locations.first().isEmpty())
        return std::nullopt;
    const QUrl target = request.url.resolved(QUrl::fromEncoded(locations.first()));
    if (!target.isValid() || target.host().isEmpty())
        return std::nullopt;

    URLRequest redirected = request;
    redirected.url = target;
    redirected.headers.clear();
    if (becomesGet(response.statusCode, request.httpMethod.isEmpty() ? "GET" : request.httpMethod)) {
        redirected.httpMethod = "GET";
        redirected.body = QByteArray();
        redirected.bodyStream = nullptr;
        redirected.bodyLength = -1;
    }
    return redirected;
}

} // namespace quenby
