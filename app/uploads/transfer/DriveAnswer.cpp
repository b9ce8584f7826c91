#include "app/uploads/transfer/DriveAnswer.h"

#include "driveapi/GTLErrorObject.h"
#include "driveapi/GTLJSONParser.h"
#include "driveapi/GTLService.h"

namespace quenby {
namespace {

bool isErrorStatus(qint64 code) { return code >= 400 && code <= 599; }

// The Drive's error object; null when there is none.
JSONDictionaryPtr errorObjectOf(const Error& error) {
    if (const auto object = GTLErrorObject::underlyingObjectForError(error))
        return object->JSON();
    const auto body = GTLJSONParser::objectWithData(error.detail(errorKey::data).toByteArray());
    const JSONDictionaryPtr reply = body ? body->dictionary() : nullptr;
    return reply ? reply->value("error").dictionary() : nullptr;
}

} // namespace

qint64 driveStatusOf(const Error& error) {
    if (error.domain() == errorDomain::httpStatus)
        return error.code();
    if (const QVariant status = error.detail(gtlHTTPStatusKey); status.isValid())
        return status.toLongLong();
    return error.domain() == errorDomain::jsonRPC && isErrorStatus(error.code()) ? error.code() : 0;
}

QStringList driveReasonsOf(const Error& error) {
    const JSONDictionaryPtr object = errorObjectOf(error);
    if (!object)
        return {};
    QStringList reasons;
    for (const char* list : {"errors", "data"}) { // the names on the two roads
        const JSONArrayPtr items = object->value(list).array();
        for (qsizetype i = 0; items && i < items->count(); ++i) {
            const JSONDictionaryPtr item = items->at(i).dictionary();
            const QString reason = item ? item->value("reason").toString() : QString();
            if (!reason.isEmpty() && !reasons.contains(reason))
                reasons.append(reason);
        }
    }
    return reasons;
}

} // namespace quenby
