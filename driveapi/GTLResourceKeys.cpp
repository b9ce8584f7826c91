#include "driveapi/GTLResourceKeys.h"

namespace quenby {

QByteArray resourceKeysHeader(const GTLStringMap& keysByFileId) {
    QByteArrayList pairs;
    for (auto pair = keysByFileId.begin(); pair != keysByFileId.end(); ++pair) {
        if (!pair.key().isEmpty() && !pair.value().isEmpty())
            pairs.append(pair.key().toUtf8() + '/' + pair.value().toUtf8());
    }
    return pairs.join(',');
}

void addResourceKeys(GTLQueryProtocol& query, const GTLStringMap& keysByFileId) {
    const QByteArray keys = resourceKeysHeader(keysByFileId);
    if (keys.isEmpty())
        return;
    GTLStringMap headers = query.additionalHTTPHeaders();
    headers.insert(QString::fromLatin1(gtlResourceKeysHeader), QString::fromUtf8(keys));
    query.setAdditionalHTTPHeaders(headers);
}

} // namespace quenby
