// The error that the server sends in JSON.
#pragma once

#include "core/Error.h"
#include "driveapi/GTLObject.h"

namespace quenby {

class GTLErrorObjectData : public GTLObject {
    GTL_OBJECT(GTLErrorObjectData);

public:
    GTL_PROPERTY(QString, domain, setDomain, "domain");
    GTL_PROPERTY(QString, reason, setReason, "reason");
    GTL_PROPERTY(QString, message, setMessage, "message");
    GTL_PROPERTY(QString, location, setLocation, "location");
};

class GTLErrorObject : public GTLObject {
    GTL_OBJECT(GTLErrorObject);

public:
    GTL_PROPERTY(qint64, code, setCode, "code");
    GTL_PROPERTY(QString, message, setMessage, "message");
    GTL_PROPERTY(GTLArray<GTLErrorObjectData>, data, setData, "data");

    // In errorDomain::jsonRPC with the server's code; this object (a copy when it is not held by a shared_ptr) under
    // errorKey::structuredError, the redacted message under errorKey::error, and the reason "(message)".
    Error foundationError();
    // The object that foundationError() stored; null when the error carries none.
    static std::shared_ptr<GTLErrorObject> underlyingObjectForError(const Error& error);
};

} // namespace quenby

Q_DECLARE_METATYPE(std::shared_ptr<quenby::GTLErrorObject>)
