// The addresses of the REST API: which method a verb and a path call.
#pragma once

#include <QByteArrayView>
#include <QJsonObject>
#include <QString>

#include <optional>

namespace quenby::localdrive {

inline constexpr char restBase[] = "/drive/v2";
inline constexpr char restUploadBase[] = "/upload/drive/v2";

struct RestMethod {
    QString name;             // "drive.files.get"
    QJsonObject pathParams;   // what the path says: {"fileId": "..."}
    bool hasNoResult = false; // answered with 204
};

// The parts of a request's target, as sent: path and query, both percent-encoded.
struct RestTarget {
    QByteArray path;
    QByteArray query;

    static RestTarget parse(QByteArrayView target);
    // A parameter of the query, decoded; empty when it is missing.
    QString parameter(const char* name) const;
    // The query as a call's parameters: texts, without those that concern the transport, such as "alt".
    QJsonObject params() const;
};

// The method that is called by a path below restBase. Nothing when there is none.
std::optional<RestMethod> restMethod(QByteArrayView verb, const QByteArray& path);
// The same below restUploadBase: the methods that take a content.
std::optional<RestMethod> restUploadMethod(QByteArrayView verb, const QByteArray& path);

// What a request with this target calls, without looking at its body: nothing for contents and for bytes of uploads.
std::optional<RestMethod> calledMethod(QByteArrayView verb, QByteArrayView target);

} // namespace quenby::localdrive
