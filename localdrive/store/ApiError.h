// The API's failures: the one place that knows their codes and reasons.
//
// As values they are core Errors in apiErrorDomain whose code is the HTTP status; details: errorKey::reason holds the
// message, apiErrorKey::reason the API's word for it, apiErrorKey::location the parameter that was wrong.
#pragma once

#include "core/Error.h"

#include <QJsonObject>
#include <QString>

namespace quenby::localdrive {

inline const QString apiErrorDomain = QStringLiteral("org.quenby.LocalDrive");

namespace apiErrorKey {
inline const QString reason = QStringLiteral("apiReason");
inline const QString location = QStringLiteral("location");
} // namespace apiErrorKey

namespace apiError {

Error notFound(const QString& what, const QString& id);          // 404 notFound
Error invalid(const QString& parameter, const QString& message); // 400 invalid
Error required(const QString& parameter);                        // 400 required
Error forbidden(const QString& message);                         // 403 insufficientFilePermissions
Error quotaExceeded();                                           // 403 quotaExceeded
Error notDownloadable();                                         // 400 fileNotDownloadable
Error conditionNotMet(const QString& message);                   // 412 conditionNotMet
Error duplicate(const QString& message);                         // 409 duplicate
Error fileIdInUse(const QString& id);                            // 409 fileIdInUse
Error methodNotFound(const QString& method);                     // -32601 methodNotFound
Error internal(const QString& message);                          // 500 backendError

} // namespace apiError

// {"code", "message", "data": [{"domain", "reason", "message", "locationType", "location"}]}. An error of another
// domain becomes a 500 that says only that the local Drive failed.
QJsonObject toRpcError(const Error& error);

} // namespace quenby::localdrive
