// Whether the service has given up its first road.
#pragma once

#include <QByteArray>

namespace quenby {

// An answer to a JSON-RPC call, or to the announcement of an upload, that says there is nothing at this address any
// more: not found, gone or not implemented, and no JSON-RPC reply. Such a reply to a call that found nothing comes with
// the same codes, but from a road that is open.
bool saysRoadIsLost(int statusCode, const QByteArray& body);

} // namespace quenby
