#include "driveapi/GTLServiceRequest.h"

#include "driveapi/GTLServiceUserAgent.h"
#include "http/UserAgent.h"

namespace quenby {
namespace {

// Conditional requests (RFC 9110, section 13): a read wants only what is new, a change only what was not changed by
// somebody else. Weak tags cannot guard a change.
void addETag(URLRequest& request, const QByteArray& ETag) {
    if (ETag.isEmpty())
        return;
    const QByteArray& method = request.httpMethod;
    if (method.isEmpty() || method == "GET")
        request.headers.set("If-None-Match", ETag);
    else if ((method == "PUT" || method == "PATCH" || method == "DELETE") && !ETag.startsWith("W/"))
        request.headers.set("If-Match", ETag);
}

void addHeaders(URLRequest& request, const GTLStringMap& headers) {
    for (auto header = headers.begin(); header != headers.end(); ++header)
        request.headers.set(header.key().toLatin1(), header.value().toUtf8());
}

} // namespace

QByteArray requestUserAgent(const GTLServiceSettings& settings) {
    const QString identifier = settings.userAgent.isEmpty() ? userAgent::applicationIdentifier() : settings.userAgent;
    return composeUserAgent(identifier, userAgent::systemVersionString(), settings.userAgentAddition);
}

URLRequest requestForURL(const GTLServiceSettings& settings, const QUrl& url, const QByteArray& httpMethod,
                         const QByteArray& ETag) {
    URLRequest request(GTLUtilities::URLWithString(url.toString(QUrl::FullyEncoded), settings.urlQueryParameters));
    request.httpMethod = httpMethod;
    request.timeout = std::chrono::seconds(60);
    request.reloadIgnoringLocalCache = true;
    request.headers.set("User-Agent", requestUserAgent(settings));
    addETag(request, ETag);
    return request;
}

URLRequest requestForCall(const GTLServiceSettings& settings, const QString& APIKey, const GTLServiceCall& call) {
    const bool isResource = !call.isQuery; // a query has its key already, and guards nothing on either road
    QUrl url = call.url;
    if (isResource && !APIKey.isEmpty())
        url = GTLUtilities::URLWithString(url.toString(QUrl::FullyEncoded), {{QStringLiteral("key"), APIKey}});
    QByteArray ETag = call.ETag;
    if (ETag.isEmpty() && call.postedObject && isResource)
        ETag = call.postedObject->JSONValueForKey("etag").toString().toUtf8();
    URLRequest request = requestForURL(settings, url, call.httpMethod, ETag);
    const QByteArray type = call.isREST ? "application/json" : "application/json-rpc";
    request.headers.set("Accept", call.isREST && call.isBatch ? "multipart/mixed, " + type : type);
    if (!call.contentType.isEmpty())
        request.headers.set("Content-Type", call.contentType);
    else if (isResource || !call.isREST || !call.body.isEmpty())
        request.headers.set("Content-Type", type + "; charset=utf-8");
    request.headers.set("Cache-Control", "no-cache");
    addHeaders(request, settings.additionalHTTPHeaders);
    addHeaders(request, call.additionalHTTPHeaders);
    if (call.uploadParameters && !call.uploadParameters->slug.isEmpty())
        request.headers.set("Slug", GTLUtilities::stringByPercentEncodingUTF8ForString(call.uploadParameters->slug));
    return request;
}

} // namespace quenby
