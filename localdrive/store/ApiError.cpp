#include "localdrive/store/ApiError.h"

#include <QJsonArray>

namespace quenby::localdrive {
namespace apiError {
namespace {

Error make(int code, const QString& reason, const QString& message, const QString& location = {}) {
    QVariantMap details{{errorKey::reason, message}, {apiErrorKey::reason, reason}};
    if (!location.isEmpty())
        details.insert(apiErrorKey::location, location);
    return Error(apiErrorDomain, code, details);
}

} // namespace

Error notFound(const QString& what, const QString& id) {
    return make(404, QStringLiteral("notFound"), QStringLiteral("%1 not found: %2").arg(what, id));
}

Error invalid(const QString& parameter, const QString& message) {
    return make(400, QStringLiteral("invalid"), message, parameter);
}

Error required(const QString& parameter) {
    return make(400, QStringLiteral("required"), QStringLiteral("Required parameter: %1").arg(parameter), parameter);
}

Error forbidden(const QString& message) { return make(403, QStringLiteral("insufficientFilePermissions"), message); }

Error quotaExceeded() {
    return make(403, QStringLiteral("quotaExceeded"),
                QStringLiteral("The user has exceeded their Drive storage quota: delete files or empty the trash."));
}

Error notDownloadable() {
    return make(400, QStringLiteral("fileNotDownloadable"),
                QStringLiteral("Only files with binary content can be downloaded: use an export link instead."));
}

Error conditionNotMet(const QString& message) { return make(412, QStringLiteral("conditionNotMet"), message); }

Error duplicate(const QString& message) { return make(409, QStringLiteral("duplicate"), message); }

Error fileIdInUse(const QString& id) {
    return make(409, QStringLiteral("fileIdInUse"), QStringLiteral("A file with this id exists already: %1").arg(id));
}

Error methodNotFound(const QString& method) {
    return make(-32601, QStringLiteral("methodNotFound"), QStringLiteral("Method not found: %1").arg(method));
}

Error internal(const QString& message) { return make(500, QStringLiteral("backendError"), message); }

} // namespace apiError

QJsonObject toRpcError(const Error& error) {
    if (error.domain() != apiErrorDomain)
        return toRpcError(apiError::internal(QStringLiteral("The local Drive failed. Its log says why.")));

    const QString message = error.detail(errorKey::reason).toString();
    QJsonObject data{{QStringLiteral("domain"), QStringLiteral("global")},
                     {QStringLiteral("reason"), error.detail(apiErrorKey::reason).toString()},
                     {QStringLiteral("message"), message}};
    if (const QString location = error.detail(apiErrorKey::location).toString(); !location.isEmpty()) {
        data.insert(QStringLiteral("locationType"), QStringLiteral("parameter"));
        data.insert(QStringLiteral("location"), location);
    }
    return {{QStringLiteral("code"), error.code()},
            {QStringLiteral("message"), message},
            {QStringLiteral("data"), QJsonArray{data}}};
}

} // namespace quenby::localdrive
