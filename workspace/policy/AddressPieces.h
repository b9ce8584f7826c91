// What an address has to contain for a rule to hold. Which host it has to be at is asked of a WebPlace besides: a piece
// says nothing about that.
#pragma once

#include <QLatin1String>
#include <QUrl>

namespace quenby {

// A piece is written as it stands in an address, such as "export?format=pdf&id=". A question mark in it is the
// address's own: what precedes ends the path, and what follows begins the query, so that an address that is carried
// within another one's query does not count. A piece without one stands anywhere in the path.
bool hasPiece(const QUrl& url, QLatin1String piece);
// Whether the address ends so; one with a query or a fragment ends with that.
bool endsIn(const QUrl& url, QLatin1String ending);

} // namespace quenby
