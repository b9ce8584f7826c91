#include "platform/linux/web/engine/LoadError.h"

#include <QUrl>
#include <QWebEngineLoadingInfo>

namespace quenby {
namespace {

// The engine's numbers: 100-199 are connections, 200-299 certificates, 300-399 HTTP.
URLErrorCode codeFor(int engineCode) {
    switch (-engineCode) {
    case 7:
    case 118:
        return URLErrorCode::timedOut;
    case 100:
    case 101:
    case 103:
    case 106:
    case 324:
        return URLErrorCode::networkConnectionLost;
    case 102:
    case 104:
    case 109:
        return URLErrorCode::cannotConnectToHost;
    case 105:
    case 137:
        return URLErrorCode::cannotFindHost;
    case 107:
    case 113:
        return URLErrorCode::secureConnectionFailed;
    case 300:
        return URLErrorCode::badURL;
    case 301:
    case 302:
        return URLErrorCode::unsupportedURL;
    case 310:
        return URLErrorCode::httpTooManyRedirects;
    default:
        break;
    }
    if (engineCode <= -200 && engineCode > -300)
        return URLErrorCode::serverCertificateUntrusted;
    if (engineCode <= -300 && engineCode > -400)
        return URLErrorCode::badServerResponse;
    return URLErrorCode::unknown;
}

// What is wrong with the server's certificate.
QString certificateFault(int engineCode) {
    switch (-engineCode) {
    case 200:
        return QStringLiteral("its certificate is for another name");
    case 201:
        return QStringLiteral("its certificate has expired or is not valid yet");
    case 202:
        return QStringLiteral("its certificate is from an authority that this computer does not trust");
    case 206:
        return QStringLiteral("its certificate was revoked");
    case 208:
    case 211:
        return QStringLiteral("its certificate is too weak");
    default:
        return QStringLiteral("its certificate is not valid");
    }
}

QString sentenceFor(URLErrorCode code, int engineCode, const QString& host) {
    switch (code) {
    case URLErrorCode::timedOut:
        return QStringLiteral("%1 did not answer in time. Check the network and try again.").arg(host);
    case URLErrorCode::networkConnectionLost:
        return QStringLiteral("The connection to %1 was lost. Check the network and try again.").arg(host);
    case URLErrorCode::cannotConnectToHost:
        return QStringLiteral("No connection to %1 could be made. Check the network and try again.").arg(host);
    case URLErrorCode::cannotFindHost:
        return QStringLiteral("%1 was not found. Check the network and try again.").arg(host);
    case URLErrorCode::serverCertificateUntrusted:
        return QStringLiteral(
                   "The connection to %1 is not secure: %2. Nothing was sent. Check this computer's date and "
                   "whether the network asks for a sign-in of its own.")
            .arg(host, certificateFault(engineCode));
    case URLErrorCode::secureConnectionFailed:
        return QStringLiteral("The connection to %1 is not secure, and nothing was sent. Check this computer's date "
                              "and whether the network asks for a sign-in of its own.")
            .arg(host);
    default:
        return QStringLiteral("The page at %1 could not be loaded. Try again.").arg(host);
    }
}

} // namespace

Error loadError(const QWebEngineLoadingInfo& info) {
    const URLErrorCode code = codeFor(info.errorCode());
    QString host = info.url().host();
    if (host.isEmpty())
        host = QStringLiteral("This address");
    QString sentence = sentenceFor(code, info.errorCode(), host);
    if (!info.errorString().isEmpty())
        sentence += QStringLiteral(" (%1)").arg(info.errorString());
    return Error(code, {{errorKey::reason, sentence}, {errorKey::failingURL, info.url()}});
}

} // namespace quenby
