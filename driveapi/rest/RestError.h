// The service's error as the second road sends it, made into the one that the first road sends.
#pragma once

#include "driveapi/JSONDictionary.h"

namespace quenby {

// {"code", "message", "errors": [{"domain", "reason", "message"}]} with the details under "data", and the HTTP status
// where no code is given. An error of the first road comes back as it is.
JSONDictionaryPtr rpcFormOfError(const JSONDictionaryPtr& error, int statusCode);

// What stands for an answer with a status above 299 that tells nothing in JSON.
JSONDictionaryPtr errorForStatus(int statusCode, const QByteArray& body);

} // namespace quenby
