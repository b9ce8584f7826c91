// The requests that a client of the local Drive makes, by hand.
#pragma once

#include "tests/support/LocalDriveProcess.h"
#include "tests/support/RawHttp.h"

#include <QJsonDocument>
#include <QUrlQuery>

namespace quenby::testing {

inline QJsonObject jsonOf(const QByteArray& bytes) { return QJsonDocument::fromJson(bytes).object(); }

// Form fields as "a=b&c=d", percent-encoded.
inline QByteArray formOf(const QList<QPair<QString, QString>>& fields) {
    QByteArrayList pairs;
    for (const auto& [name, value] : fields)
        pairs.append(QUrl::toPercentEncoding(name) + '=' + QUrl::toPercentEncoding(value));
    return pairs.join('&');
}

class LocalClient {
public:
    explicit LocalClient(LocalDriveProcess& drive)
        : drive_(drive)
        , token_(drive.newAccessToken()) {}

    QByteArray authorization() const { return "Authorization: Bearer " + token_; }

    static QByteArray callBody(const QString& method, const QJsonObject& params = {}) {
        return QJsonDocument(QJsonObject{{QStringLiteral("jsonrpc"), QStringLiteral("2.0")},
                                         {QStringLiteral("id"), QStringLiteral("call-1")},
                                         {QStringLiteral("method"), method},
                                         {QStringLiteral("params"), params}})
            .toJson(QJsonDocument::Compact);
    }
    QByteArray callRequest(const QString& method, const QJsonObject& params = {}) const {
        return RawHttp::request(
            "POST", "/rpc", {authorization(), "Content-Type: application/json-rpc", LocalDriveProcess::controlHeader()},
            callBody(method, params));
    }
    RawReply call(const QString& method, const QJsonObject& params = {}) const {
        return RawHttp::exchange(drive_.url(), callRequest(method, params));
    }
    RawReply about() const { return call(QStringLiteral("drive.about.get")); }
    // Ids of the files with this title.
    QStringList filesNamed(const QString& title) const {
        const QString q = QStringLiteral("title = '%1'").arg(title);
        const QJsonObject list = jsonOf(call(QStringLiteral("drive.files.list"), {{QStringLiteral("q"), q}}).body);
        QStringList ids;
        for (const QJsonValue file : list[QLatin1String("result")][QLatin1String("items")].toArray())
            ids.append(file[QLatin1String("id")].toString());
        return ids;
    }

    QByteArray announceRequest(qint64 length, const QString& title) const {
        const QJsonObject resource{{QStringLiteral("title"), title}};
        return RawHttp::request(
            "POST", "/upload/rpc?uploadType=resumable&prettyPrint=false",
            {authorization(), LocalDriveProcess::controlHeader(),
             "X-Upload-Content-Length: " + QByteArray::number(length), "X-Upload-Content-Type: application/x-test"},
            callBody(QStringLiteral("drive.files.insert"), {{QStringLiteral("resource"), resource}}));
    }
    // The path and query at which the upload goes on; empty when it was refused.
    QByteArray announce(qint64 length, const QString& title) const {
        return targetOf(RawHttp::exchange(drive_.url(), announceRequest(length, title)));
    }
    static QByteArray targetOf(const RawReply& reply) {
        return QUrl::fromEncoded(reply.header("Location")).toEncoded(QUrl::RemoveScheme | QUrl::RemoveAuthority);
    }

    static QByteArray putRequest(const QByteArray& target, const QByteArray& piece, qint64 first, qint64 total) {
        return RawHttp::request("PUT", target,
                                {"Content-Range: bytes " + QByteArray::number(first) + '-' +
                                 QByteArray::number(first + piece.size() - 1) + '/' + QByteArray::number(total)},
                                piece);
    }
    RawReply put(const QByteArray& target, const QByteArray& piece, qint64 first, qint64 total) const {
        return RawHttp::exchange(drive_.url(), putRequest(target, piece, first, total));
    }
    RawReply askHeld(const QByteArray& target, qint64 total) const {
        return RawHttp::exchange(
            drive_.url(), RawHttp::request("PUT", target, {"Content-Range: bytes */" + QByteArray::number(total)}));
    }
    // What the server says it holds: the last byte's number plus one.
    qint64 held(const QByteArray& target, qint64 total) const {
        const QByteArray range = askHeld(target, total).header("Range");
        return range.isEmpty() ? 0 : range.mid(range.indexOf('-') + 1).toLongLong() + 1;
    }

private:
    LocalDriveProcess& drive_;
    const QByteArray token_;
};

} // namespace quenby::testing
