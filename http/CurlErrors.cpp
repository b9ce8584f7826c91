#include "http/CurlErrors.h"

#include "core/Redaction.h"

namespace quenby {
namespace {

URLErrorCode urlErrorCode(CURLcode code) {
    switch (code) {
    case CURLE_URL_MALFORMAT:
        return URLErrorCode::badURL;
    case CURLE_COULDNT_RESOLVE_PROXY:
    case CURLE_COULDNT_RESOLVE_HOST:
        return URLErrorCode::cannotFindHost;
    case CURLE_COULDNT_CONNECT:
    case CURLE_PROXY:
        return URLErrorCode::cannotConnectToHost;
    case CURLE_OPERATION_TIMEDOUT:
        return URLErrorCode::timedOut;
    case CURLE_SEND_ERROR:
    case CURLE_RECV_ERROR:
    case CURLE_PARTIAL_FILE:
    case CURLE_GOT_NOTHING:
    case CURLE_HTTP2:
    case CURLE_HTTP2_STREAM:
    case CURLE_NO_CONNECTION_AVAILABLE:
        return URLErrorCode::networkConnectionLost;
    case CURLE_UNSUPPORTED_PROTOCOL: // of the answer: schemes have been looked at before
    case CURLE_WEIRD_SERVER_REPLY:
    case CURLE_BAD_CONTENT_ENCODING:
        return URLErrorCode::badServerResponse;
    case CURLE_SSL_CONNECT_ERROR:
    case CURLE_SSL_CIPHER:
    case CURLE_SSL_SHUTDOWN_FAILED:
        return URLErrorCode::secureConnectionFailed;
    case CURLE_PEER_FAILED_VERIFICATION:
    case CURLE_SSL_ISSUER_ERROR:
    case CURLE_SSL_CACERT_BADFILE:
    case CURLE_SSL_CRL_BADFILE:
    case CURLE_SSL_INVALIDCERTSTATUS:
        return URLErrorCode::serverCertificateUntrusted;
    default:
        return URLErrorCode::unknown;
    }
}

QString explanation(URLErrorCode code, const QString& host) {
    switch (code) {
    case URLErrorCode::cannotFindHost:
        return QStringLiteral("The address of %1 cannot be found. Check the network connection.").arg(host);
    case URLErrorCode::cannotConnectToHost:
        return QStringLiteral("No connection to %1 can be made. Check the network connection.").arg(host);
    case URLErrorCode::timedOut:
        return QStringLiteral("The connection to %1 has stood still for too long. Try again later.").arg(host);
    case URLErrorCode::networkConnectionLost:
        return QStringLiteral("The connection to %1 was lost. Try again.").arg(host);
    case URLErrorCode::secureConnectionFailed:
        return QStringLiteral("No secure connection to %1 can be made.").arg(host);
    case URLErrorCode::serverCertificateUntrusted:
        return QStringLiteral("The certificate of %1 is not trusted.").arg(host);
    case URLErrorCode::badServerResponse:
        return QStringLiteral("The answer of %1 cannot be understood.").arg(host);
    default:
        return QStringLiteral("The transfer with %1 failed.").arg(host);
    }
}

// What went wrong on the way to the proxy or inside of it; empty when it was something else.
QString proxyExplanation(CURLcode code, const QString& host, const QString& proxy) {
    if (code == CURLE_PROXY) {
        const QString name = proxy.isEmpty() ? QString() : QString(QLatin1Char(' ') + proxy);
        return QStringLiteral("The proxy%1 did not connect to %2. Check the proxy settings.").arg(name, host);
    }
    if (proxy.isEmpty() || (code != CURLE_COULDNT_RESOLVE_PROXY && code != CURLE_COULDNT_CONNECT))
        return {};
    return QStringLiteral("The proxy %1, by which %2 is to be reached, does not answer. Check the proxy settings.")
        .arg(proxy, host);
}

// libcurl quotes a proxy's address that it cannot make sense of, with the password in it.
QString withoutSecrets(const QString& detail) {
    if (detail.contains(QLatin1String("nsupported proxy")))
        return detail.section(QLatin1Char('\''), 0, 0).trimmed();
    return redaction::text(detail);
}

} // namespace

Error errorForCurlCode(CURLcode code, const QString& detail, const QString& host, const QString& proxy) {
    const URLErrorCode ours = urlErrorCode(code);
    const QString cause = detail.isEmpty() ? QString::fromLatin1(curl_easy_strerror(code)) : withoutSecrets(detail);
    const QString aboutProxy = proxyExplanation(code, host, proxy);
    const QString text = aboutProxy.isEmpty() ? explanation(ours, host) : aboutProxy;
    return Error(ours, {{errorKey::reason, QString(text + QStringLiteral(" (") + cause + QLatin1Char(')'))}});
}

} // namespace quenby
