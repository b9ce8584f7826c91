// A token server's answer: any bytes give either a token that can be sent or one clear error without a secret.

#include "oauth2/OAuth2Encoding.h"
#include "oauth2/TokenResponse.h"
#include "tests/fuzz/FuzzSupport.h"

#include <QVariant>

using namespace quenby;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const QByteArray body = fuzzBytes(data, size);
    for (const QByteArray& type : {QByteArray("application/json; charset=utf-8"), QByteArray("text/plain")}) {
        const auto reply = oauth2::parseTokenResponse(type, body);
        if (reply.ok())
            require(oauth2::isUsableAccessToken(reply->value(QStringLiteral("access_token"))),
                    "an accepted reply holds a token that can be sent");
        else
            require(!reply.error().description().isEmpty(), "a refusal has words");
    }
    const Error failed(errorDomain::httpStatus, 400);
    const Error explained =
        oauth2::explainedTokenError(oauth2::withServerJSON(failed, body), QStringLiteral("Google"), false);
    require(explained.code() == 400, "explaining keeps the code");
    return 0;
}
