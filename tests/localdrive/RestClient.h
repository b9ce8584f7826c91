// The requests of the REST road, by hand.
#pragma once

#include "tests/localdrive/LocalClient.h"

namespace quenby::testing {

class RestClient {
public:
    // `clientId`, `scope`: of the program that calls; empty: a test with full access.
    explicit RestClient(LocalDriveProcess& drive, const QString& clientId = {}, const QString& scope = {})
        : drive_(drive)
        , authorization_("Authorization: Bearer " + tokenOf(drive, clientId, scope)) {}

    const QByteArray& authorization() const { return authorization_; }

    // `path`: below /drive/v2, with its query.
    QByteArray request(const QByteArray& verb, const QByteArray& path, const QByteArray& body = {}) const {
        return RawHttp::request(verb, "/drive/v2/" + path, {authorization_, "Content-Type: application/json"}, body);
    }
    RawReply call(const QByteArray& verb, const QByteArray& path, const QByteArray& body = {}) const {
        return RawHttp::exchange(drive_.url(), request(verb, path, body));
    }
    QJsonObject get(const QByteArray& path) const { return jsonOf(call("GET", path).body); }
    QString insert(const QByteArray& resource) const {
        return jsonOf(call("POST", "files", resource).body)[QLatin1String("id")].toString();
    }
    static QString reasonOf(const RawReply& reply) {
        return jsonOf(reply.body)[QLatin1String("error")][QLatin1String("errors")][0][QLatin1String("reason")]
            .toString();
    }

    // An announcement with metadata; `path` is below /upload/drive/v2.
    RawReply announce(const QByteArray& verb, const QByteArray& path, qint64 length, const QByteArray& resource) const {
        const QByteArray joint = path.contains('?') ? "&" : "?";
        return RawHttp::exchange(drive_.url(),
                                 RawHttp::request(verb, "/upload/drive/v2/" + path + joint + "uploadType=resumable",
                                                  {authorization_, "Content-Type: application/json",
                                                   "X-Upload-Content-Length: " + QByteArray::number(length),
                                                   "X-Upload-Content-Type: text/plain"},
                                                  resource));
    }
    // Where an insertion's bytes go; empty when it was refused.
    QByteArray location(qint64 length, const QByteArray& resource = "{}") const {
        return LocalClient::targetOf(announce("POST", "files", length, resource));
    }
    RawReply put(const QByteArray& target, const QByteArray& piece, qint64 first, qint64 total) const {
        return RawHttp::exchange(drive_.url(), LocalClient::putRequest(target, piece, first, total));
    }
    RawReply askHeld(const QByteArray& target, qint64 total) const {
        return RawHttp::exchange(
            drive_.url(), RawHttp::request("PUT", target, {"Content-Range: bytes */" + QByteArray::number(total)}));
    }

private:
    static QByteArray tokenOf(LocalDriveProcess& drive, const QString& clientId, const QString& scope) {
        return drive.grant({}, clientId, scope)[QLatin1String("access_token")].toString().toLatin1();
    }

    LocalDriveProcess& drive_;
    const QByteArray authorization_;
};

} // namespace quenby::testing
