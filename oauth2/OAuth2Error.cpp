#include "oauth2/OAuth2Error.h"

#include "core/Redaction.h"

#include <algorithm>

namespace quenby::oauth2 {

bool isFinalServerError(const QString& name) {
    const auto names = {errorInvalidRequest,     errorInvalidClient,        errorInvalidGrant,
                        errorUnauthorizedClient, errorUnsupportedGrantType, errorInvalidScope};
    return std::find(names.begin(), names.end(), name) != names.end();
}

Error makeError(ErrorCode code, const QString& reason, QVariantMap details) {
    details.insert(errorKey::reason, reason);
    return Error(errorDomain::oauth2, static_cast<qint64>(code), std::move(details));
}

QString requestForError(const URLRequest& request) {
    const QByteArray method = request.httpMethod.isEmpty() ? QByteArrayLiteral("GET") : request.httpMethod;
    return QString::fromLatin1(method) + QLatin1Char(' ') + redaction::url(request.url);
}

} // namespace quenby::oauth2
