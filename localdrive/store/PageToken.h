// Page tokens and the frame that all lists share.
//
// A token says behind which position the next page begins. It is signed for one list, that is, one method with its
// filters: a token that was made up, changed or taken from another list is 400 "invalid".
#pragma once

#include "core/Result.h"
#include "localdrive/store/Parameters.h"
#include "localdrive/store/Work.h"

#include <QJsonArray>
#include <QString>

#include <optional>

namespace quenby::localdrive {

// How long a page may be.
struct PageLimits {
    qint64 usual; // when nothing is asked for
    qint64 most;  // more is not given, however much is asked for
};

struct PageRequest {
    QString list;                // names the list that the token belongs to
    qint64 limit = 0;            // items on the page
    std::optional<qint64> after; // position of the last item of the page before
};

// Reads "maxResults" (at least 1) and "pageToken". `list` must tell lists of different filters apart. A token of
// `anyFilter` is good as well.
Result<PageRequest> pageRequest(Work& work, const Parameters& params, const QString& list, PageLimits limits,
                                const QString& anyFilter = {});

// For rows that were asked for with one more than the limit and have their position in the first column: takes the
// surplus one off and returns the position of the last that stays; nothing when the page is the last.
std::optional<qint64> cutPage(QList<Row>& rows, const PageRequest& page);

QString pageToken(const QByteArray& key, const QString& list, qint64 position);
std::optional<qint64> pagePosition(const QByteArray& key, const QString& list, const QString& token);

// A list resource: kind, etag, selfLink and items, and when there is a next page, its token and link. `last` is the
// position of the last item when more follow it.
QJsonObject listResource(Work& work, const QString& kind, const QString& selfLink, const QJsonArray& items,
                         const PageRequest& page, std::optional<qint64> last);
// The same for lists that are always given whole.
QJsonObject unpagedList(const QString& kind, const QString& selfLink, const QJsonArray& items);

} // namespace quenby::localdrive
