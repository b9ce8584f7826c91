// Keys of files that are shared by link: whoever has only the link has to send them along with every call about the
// file.
#pragma once

#include "driveapi/GTLQuery.h"

#include <QByteArray>

namespace quenby {

inline constexpr char gtlResourceKeysHeader[] = "X-Goog-Drive-Resource-Keys";

// "id/key,id/key"; files without a key are left out. Empty when none has one.
QByteArray resourceKeysHeader(const GTLStringMap& keysByFileId);

// Adds the keys to the query's header fields. Without a key nothing is changed.
void addResourceKeys(GTLQueryProtocol& query, const GTLStringMap& keysByFileId);

} // namespace quenby
