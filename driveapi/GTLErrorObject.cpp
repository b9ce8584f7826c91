#include "driveapi/GTLErrorObject.h"

#include "core/Redaction.h"

namespace quenby {

const GTLClass& GTLErrorObjectData::classDescriptor() {
    return gtlDefineClass<GTLErrorObjectData, GTLObject>("GTLErrorObjectData");
}

const GTLClass& GTLErrorObject::classDescriptor() {
    return gtlDefineClass<GTLErrorObject, GTLObject>("GTLErrorObject");
}

Error GTLErrorObject::foundationError() {
    GTLObjectPtr held = weak_from_this().lock();
    if (!held)
        held = copy();
    QVariantMap details;
    details.insert(errorKey::structuredError, QVariant::fromValue(std::static_pointer_cast<GTLErrorObject>(held)));
    if (const QString text = redaction::text(message()); !text.isEmpty()) {
        details.insert(errorKey::error, text);
        details.insert(errorKey::reason, QStringLiteral("(%1)").arg(text));
    }
    return Error(errorDomain::jsonRPC, code(), details);
}

std::shared_ptr<GTLErrorObject> GTLErrorObject::underlyingObjectForError(const Error& error) {
    return error.detail(errorKey::structuredError).value<std::shared_ptr<GTLErrorObject>>();
}

} // namespace quenby
