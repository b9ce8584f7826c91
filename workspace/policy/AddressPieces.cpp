#include "workspace/policy/AddressPieces.h"

#include "core/WebPlaces.h"

namespace quenby {

bool hasPiece(const QUrl& url, QLatin1String piece) {
    const qsizetype mark = piece.indexOf(QLatin1Char('?'));
    if (mark < 0)
        return understoodPath(url).contains(piece);
    return understoodPath(url).endsWith(piece.first(mark)) &&
           url.query(QUrl::FullyEncoded).startsWith(piece.sliced(mark + 1));
}

bool endsIn(const QUrl& url, QLatin1String ending) {
    return !url.hasQuery() && !url.hasFragment() && understoodPath(url).endsWith(ending);
}

} // namespace quenby
