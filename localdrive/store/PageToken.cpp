#include "localdrive/store/PageToken.h"

#include "localdrive/store/ApiError.h"
#include "localdrive/store/Identifiers.h"

#include <QMessageAuthenticationCode>
#include <QtEndian>

#include <algorithm>

namespace quenby::localdrive {
namespace {

constexpr auto base64 = QByteArray::Base64UrlEncoding | QByteArray::OmitTrailingEquals;
constexpr qsizetype positionSize = sizeof(qint64);

QByteArray signedPosition(const QByteArray& key, const QString& list, qint64 position) {
    QByteArray bytes(positionSize, Qt::Uninitialized);
    qToBigEndian(position, bytes.data());
    constexpr qsizetype signatureSize = 16;
    const QByteArray signature =
        QMessageAuthenticationCode::hash(bytes + list.toUtf8(), key, QCryptographicHash::Sha256);
    return bytes + signature.first(signatureSize);
}

} // namespace

QString pageToken(const QByteArray& key, const QString& list, qint64 position) {
    return QString::fromLatin1(signedPosition(key, list, position).toBase64(base64));
}

std::optional<qint64> pagePosition(const QByteArray& key, const QString& list, const QString& token) {
    const auto decoded =
        QByteArray::fromBase64Encoding(token.toLatin1(), base64 | QByteArray::AbortOnBase64DecodingErrors);
    if (!decoded || decoded.decoded.size() < positionSize)
        return std::nullopt;
    const auto position = qFromBigEndian<qint64>(decoded.decoded.constData());
    if (signedPosition(key, list, position) != decoded.decoded)
        return std::nullopt;
    return position;
}

Result<PageRequest> pageRequest(Work& work, const Parameters& params, const QString& list, PageLimits limits,
                                const QString& anyFilter) {
    PageRequest page{list, params.number("maxResults").value_or(limits.usual), std::nullopt};
    if (page.limit < 1)
        return apiError::invalid(QStringLiteral("maxResults"), QStringLiteral("maxResults must be at least 1."));
    page.limit = std::min(page.limit, limits.most);
    if (const QString token = params.text("pageToken"); !token.isEmpty()) {
        page.after = pagePosition(work.store().pageTokenKey(), list, token);
        if (!page.after && !anyFilter.isEmpty())
            page.after = pagePosition(work.store().pageTokenKey(), anyFilter, token);
        if (!page.after)
            return apiError::invalid(QStringLiteral("pageToken"),
                                     QStringLiteral("Invalid page token: begin again with the first page."));
    }
    return page;
}

std::optional<qint64> cutPage(QList<Row>& rows, const PageRequest& page) {
    if (rows.size() <= page.limit)
        return std::nullopt;
    rows.resize(page.limit);
    return rows.last()[0].toLongLong();
}

QJsonObject unpagedList(const QString& kind, const QString& selfLink, const QJsonArray& items) {
    QByteArray tags = kind.toLatin1();
    for (const QJsonValue item : items)
        tags += item[QLatin1String("etag")].toString().toLatin1() + item[QLatin1String("id")].toString().toUtf8();
    return {{QStringLiteral("kind"), kind},
            {QStringLiteral("etag"), entityTag(tags)},
            {QStringLiteral("selfLink"), selfLink},
            {QStringLiteral("items"), items}};
}

QJsonObject listResource(Work& work, const QString& kind, const QString& selfLink, const QJsonArray& items,
                         const PageRequest& page, std::optional<qint64> last) {
    QJsonObject list = unpagedList(kind, selfLink, items);
    if (last) {
        const QString token = pageToken(work.store().pageTokenKey(), page.list, *last);
        const QChar joint = selfLink.contains(QLatin1Char('?')) ? QLatin1Char('&') : QLatin1Char('?');
        list.insert(QStringLiteral("nextPageToken"), token);
        list.insert(QStringLiteral("nextLink"), QString(selfLink + joint + QStringLiteral("pageToken=") + token));
    }
    return list;
}

} // namespace quenby::localdrive
