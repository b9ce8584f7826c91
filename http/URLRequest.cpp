#include "http/URLRequest.h"

namespace quenby {

bool URLRequest::isReadOnly() const {
    const QByteArray method = effectiveMethod();
    return !hasBody() && (method == "GET" || method == "HEAD");
}

QByteArray URLRequest::effectiveMethod() const {
    const QByteArray override = headers.value("X-HTTP-Method-Override");
    const QByteArray method = override.isEmpty() ? httpMethod : override;
    return method.isEmpty() ? QByteArray("GET") : method;
}

QByteArray HTTPResponse::mimeType() const {
    const QByteArray type = headers.value("Content-Type");
    return type.first(std::max(qsizetype(0), type.indexOf(';') < 0 ? type.size() : type.indexOf(';')))
        .trimmed()
        .toLower();
}

} // namespace quenby
