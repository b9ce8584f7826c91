// A secret planted in arbitrary surroundings must not come out of the redactor, whatever stands around it.

#include "core/Redaction.h"
#include "tests/fuzz/FuzzSupport.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

using namespace quenby;

namespace {

const QByteArray secret = "ya29.PlantedSecret-0123456789";

void requireGone(const QByteArray& shown, const char* promise) { require(!shown.contains("PlantedSecret"), promise); }

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const QByteArray bytes = fuzzBytes(data, size);
    if (bytes.contains("Planted"))
        return 0;
    const qsizetype middle = bytes.size() / 2;
    const QByteArray before = bytes.first(middle);
    const QByteArray after = bytes.sliced(middle);
    const QString around = QString::fromUtf8(before);

    requireGone(redaction::formBody(before + "&refresh_token=" + secret + '&' + after), "form bodies hide tokens");
    requireGone(redaction::headerValue("Authorization", "Bearer " + secret + before), "headers hide bearer tokens");
    requireGone(redaction::headerValue("Authorization", secret), "headers hide what they do not know");
    requireGone(redaction::headerValue("Set-Cookie", "SID=" + secret + ';' + before), "cookies are hidden");
    requireGone(redaction::text(around + QStringLiteral(" access_token=") + QString::fromLatin1(secret) +
                                QLatin1Char(' ') + QString::fromUtf8(after))
                    .toUtf8(),
                "free text hides tokens");

    QUrl address(QStringLiteral("https://drive.example/upload/rpc"));
    address.setQuery(around + QStringLiteral("&upload_id=") + QString::fromLatin1(secret));
    requireGone(redaction::url(address).toUtf8(), "upload locations are hidden");

    const QJsonObject inner{{QStringLiteral("refresh_token"), QString::fromLatin1(secret)}, {around, around}};
    const QJsonObject outer{{around, QJsonArray{inner, around}},
                            {QStringLiteral("access_token"), QString::fromLatin1(secret)}};
    requireGone(redaction::jsonBody(QJsonDocument(outer).toJson()), "JSON hides tokens at any depth");
    redaction::jsonBody(bytes);
    return 0;
}
