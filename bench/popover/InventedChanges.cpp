#include "bench/popover/InventedChanges.h"

#include "app/pictures/PictureDecoder.h"

#include <QColor>
#include <QPainter>
#include <QRandomGenerator>
#include <QTimeZone>

#include <algorithm>

namespace quenby::bench {
namespace {

constexpr int middleSide = 45; // pixels: some are left of it at a third of the size

QByteArray dateText(const QDateTime& date) { return date.toString(Qt::ISODateWithMs).toLatin1(); }

QByteArray changeJSON(int rank) {
    const QByteArray id = inventedIdentifier(rank).toLatin1();
    const QByteArray changed = dateText(inventedDate(rank));
    return "{\"fileId\":\"" + id + "\",\"deleted\":false,\"modificationDate\":\"" + changed + "\",\"file\":{\"id\":\"" +
           id + "\",\"title\":\"Bericht \\u00fcber Messung \xE2\x84\x96 " + QByteArray::number(rank) +
           ".png\",\"mimeType\":\"image/png\","
           "\"iconLink\":\"https://ssl.example.com/docs/doclist/images/icon_11_image_list.png\","
           "\"thumbnailLink\":\"https://lh3.example.com/thumbnails/" +
           id + "=s220\",\"createdDate\":\"" + dateText(inventedDate(rank).addDays(-3)) + "\",\"modifiedDate\":\"" +
           changed + "\",\"labels\":{\"trashed\":false}}}";
}

} // namespace

QString inventedIdentifier(int rank) {
    return QStringLiteral("0B7dQ%1xYmVuY2htYXJr").arg(rank, 8, 10, QLatin1Char('0'));
}

QDateTime inventedDate(int rank) { return QDateTime(QDate(2014, 7, 1), QTime(8, 0), Qt::UTC).addSecs(rank * 60LL); }

QByteArray inventedPage(const std::vector<int>& ranks, const QByteArray& nextPageToken) {
    QByteArray json = "{\"id\":\"gtl_1\",\"result\":{\"items\":[";
    int highest = 0;
    for (const int rank : ranks) {
        json += (rank == ranks.front() ? "" : ",") + changeJSON(rank);
        highest = std::max(highest, rank);
    }
    json += "],\"largestChangeId\":\"" + QByteArray::number(highest + 1) + '"';
    if (!nextPageToken.isEmpty())
        json += ",\"nextPageToken\":\"" + nextPageToken + '"';
    return json + "}}";
}

std::vector<QByteArray> inventedPages(int count) {
    const int changeCount = count * changesOfAPage;
    constexpr int stride = 7919; // a prime: every rank comes once
    std::vector<QByteArray> pages;
    for (int page = 0; page < count; ++page) {
        std::vector<int> ranks;
        for (int n = page * changesOfAPage; n < (page + 1) * changesOfAPage; ++n)
            ranks.push_back(static_cast<int>(n * qint64{stride} % changeCount));
        pages.push_back(inventedPage(ranks, page + 1 < count ? "page" + QByteArray::number(page + 1) : QByteArray()));
    }
    return pages;
}

QImage inventedThumbnail(int rank) {
    QImage picture(rowPictureSize, QImage::Format_RGB32);
    QRandomGenerator random(static_cast<quint32>(rank));
    for (int y = 0; y < picture.height(); ++y) {
        auto* line = reinterpret_cast<QRgb*>(picture.scanLine(y));
        for (int x = 0; x < picture.width(); ++x)
            line[x] = qRgb(x, y, random.bounded(256));
    }
    QRect middle(0, 0, middleSide, middleSide);
    middle.moveCenter(picture.rect().center());
    QPainter(&picture).fillRect(middle, middleOfThumbnail(rank));
    return picture;
}

QColor middleOfThumbnail(int rank) { return QColor::fromHsv(rank * 47 % 360, 220, 210); }

} // namespace quenby::bench
