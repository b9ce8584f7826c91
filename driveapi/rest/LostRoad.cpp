#include "driveapi/rest/LostRoad.h"

#include "driveapi/GTLJSONParser.h"
#include "driveapi/JSONDictionary.h"

namespace quenby {

bool saysRoadIsLost(int statusCode, const QByteArray& body) {
    if (statusCode != 404 && statusCode != 410 && statusCode != 501)
        return false;
    const auto json = GTLJSONParser::objectWithData(body);
    const JSONDictionaryPtr reply = json ? json->dictionary() : nullptr;
    return !reply || !(reply->contains("jsonrpc") || reply->contains("id"));
}

} // namespace quenby
