// A multipart body taken apart (RFC 2046, section 5.1), and the HTTP responses that stand in its parts (RFC 9112,
// section 10.2). The bytes come from outside and may be anything. Pure functions, safe on any thread.
//
// Errors: errorDomain::service, GTLServiceErrorCode::replyUnusable, with what is wrong.
#pragma once

#include "core/Result.h"
#include "http/HeaderFields.h"

#include <QByteArray>

#include <vector>

namespace quenby {

struct MultipartPart {
    HeaderFields headers;
    QByteArray body;
};

// In the order in which they stand there. The boundary is named in the Content-Type; a body without the line that
// closes it was cut short.
Result<std::vector<MultipartPart>> partsOfMultipart(const QByteArray& contentType, const QByteArray& body);

struct EmbeddedResponse {
    int statusCode = 0; // 100 to 599
    HeaderFields headers;
    QByteArray body;
};

Result<EmbeddedResponse> responseInPart(const QByteArray& part);

} // namespace quenby
