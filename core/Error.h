// The one shape of failure below the user interface: a value with a domain, a code and details. Nothing is thrown
// across a public interface. Cancelling is not an error: a cancelled call simply never calls back.
#pragma once

#include <QString>
#include <QVariantMap>

#include <optional>

namespace quenby {

// Keys of Error::details that more than one folder reads.
namespace errorKey {
inline const QString reason = QStringLiteral("reason");       // QString: what happened and what to do, for people
inline const QString data = QStringLiteral("data");           // QByteArray: the body that came with an HTTP error
inline const QString challenge = QStringLiteral("challenge"); // QVariant of AuthenticationChallenge
inline const QString request = QStringLiteral("request");     // QString: method and redacted address
inline const QString json = QStringLiteral("json");           // QVariantMap: the server's JSON error
inline const QString error = QStringLiteral("error");         // QString: the provider's error name or message
inline const QString failingURL = QStringLiteral("NSErrorFailingURLKey"); // QUrl
inline const QString structuredError = QStringLiteral("GTLStructuredError");
} // namespace errorKey

// Every domain is a reverse-DNS identifier; its last component is the name used in conversation.
namespace errorDomain {
inline const QString fetcher = QStringLiteral("org.quenby.GTMHTTPFetcher");
inline const QString httpStatus = QStringLiteral("org.quenby.HTTPStatus"); // code: the HTTP status
inline const QString oauth2 = QStringLiteral("org.quenby.GTMOAuth2");
inline const QString service = QStringLiteral("org.quenby.GTLServiceDomain");
inline const QString jsonRPC = QStringLiteral("org.quenby.GTLJSONRPCErrorDomain"); // code: the server's
inline const QString url = QStringLiteral("org.quenby.URLErrorDomain");            // code: URLErrorCode
inline const QString posix = QStringLiteral("org.quenby.POSIXErrorDomain");        // code: errno
inline const QString json = QStringLiteral("org.quenby.JSONErrorDomain");          // code: JSONErrorCode
} // namespace errorDomain

// Codes of errorDomain::fetcher.
enum class FetcherErrorCode : int {
    fetchCouldNotBegin = -1, // no URL, disallowed scheme, no temporary file, no connection
    authenticationChallengeFailed = -2,
    chunkUploadFailed = -3,
};

// A code of errorDomain::httpStatus that no server sends: the download file could not be written.
inline constexpr int fileHandleErrorCode = -4;

// Codes of errorDomain::url: what went wrong below HTTP.
enum class URLErrorCode : int {
    unknown = -1,
    cancelled = -999,
    badURL = -1000,
    timedOut = -1001,
    unsupportedURL = -1002,
    cannotFindHost = -1003,
    cannotConnectToHost = -1004,
    networkConnectionLost = -1005,
    httpTooManyRedirects = -1007,
    badServerResponse = -1011,
    zeroByteResource = -1014,
    requestBodyUnreadable = -1021, // the source vanished, shrank or could not be read while it was sent
    secureConnectionFailed = -1200,
    serverCertificateUntrusted = -1202,
};

// Codes of errorDomain::json.
enum class JSONErrorCode : int { malformed = 3840 };

class Error {
public:
    Error(QString domain, qint64 code, QVariantMap details = {});
    Error(FetcherErrorCode code, QVariantMap details = {});
    Error(URLErrorCode code, QVariantMap details = {});

    const QString& domain() const { return domain_; }
    qint64 code() const { return code_; }
    const QVariantMap& details() const { return details_; }
    QVariant detail(const QString& key) const { return details_.value(key); }

    bool is(const QString& domain, qint64 code) const { return code_ == code && domain_ == domain; }
    bool is(FetcherErrorCode code) const { return is(errorDomain::fetcher, static_cast<qint64>(code)); }
    bool is(URLErrorCode code) const { return is(errorDomain::url, static_cast<qint64>(code)); }
    bool isHTTPStatus(int status) const { return is(errorDomain::httpStatus, status); }

    // One line for people and logs: the reason when there is one, then the domain's last component and the code.
    // Free of secrets as long as the details are; bodies and requests among the details are not part of it.
    QString description() const;

    // The same error with one more detail.
    Error withDetail(const QString& key, const QVariant& value) const;

private:
    QString domain_;
    qint64 code_;
    QVariantMap details_;
};

// How callbacks carry "failed with this, or did not fail".
using MaybeError = std::optional<Error>;

} // namespace quenby

Q_DECLARE_METATYPE(quenby::Error)
