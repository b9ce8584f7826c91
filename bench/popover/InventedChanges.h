// A feed that nobody has: files whose changes are a minute apart, and pictures of them.
//
// A file is named by its rank: the higher it is, the later the file changed.
#pragma once

#include <QByteArray>
#include <QDateTime>
#include <QImage>
#include <QString>

#include <vector>

namespace quenby::bench {

QString inventedIdentifier(int rank);
// Years ago, so that no row says something else from one minute to the next.
QDateTime inventedDate(int rank);

// One page of a change list as the service answers it: compact, and with nothing but what the feed asks for. A token
// says that there are more pages. The page's largest change is its highest rank plus one.
QByteArray inventedPage(const std::vector<int>& ranks, const QByteArray& nextPageToken = {});

// So many pages of a thousand changes each, in no order; the highest rank is their last one.
constexpr int changesOfAPage = 1000;
std::vector<QByteArray> inventedPages(int count);

// A photograph's worth of detail, and this colour in the middle.
QImage inventedThumbnail(int rank);
QColor middleOfThumbnail(int rank);

} // namespace quenby::bench
