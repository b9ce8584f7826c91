#include "driveapi/rest/RestError.h"

#include "http/StatusText.h"

namespace quenby {
namespace {

constexpr qsizetype longestMessage = 1000; // bytes; a page of a proxy says no more at its end

} // namespace

JSONDictionaryPtr rpcFormOfError(const JSONDictionaryPtr& error, int statusCode) {
    const JSONValue details = error->value("errors");
    if (error->contains("data") || !details.isArray())
        return error;
    const JSONDictionaryPtr made = JSONDictionary::make();
    for (qsizetype i = 0; i < error->count(); ++i) {
        if (error->keyAt(i) != "errors")
            made->setValue(error->keyAt(i), error->valueAt(i));
    }
    if (!made->value("code").isNumber())
        made->setValue("code", statusCode);
    made->setValue("data", details);
    return made;
}

JSONDictionaryPtr errorForStatus(int statusCode, const QByteArray& body) {
    const QString said = QString::fromUtf8(body.first(std::min(body.size(), longestMessage))).trimmed();
    return JSONDictionary::make({{"code", statusCode}, {"message", said.isEmpty() ? statusText(statusCode) : said}});
}

} // namespace quenby
