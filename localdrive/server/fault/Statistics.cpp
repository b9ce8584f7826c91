#include "localdrive/server/fault/Statistics.h"

#include <QStringList>

namespace quenby::localdrive {
namespace {

QJsonObject countsToJson(const QHash<QString, qint64>& counts) {
    QJsonObject object;
    for (auto count = counts.begin(); count != counts.end(); ++count)
        object.insert(count.key(), count.value());
    return object;
}

} // namespace

void Statistics::requestSeen(const RequestFacts& request) {
    if (!isKept_)
        return;
    const std::lock_guard lock(mutex_);
    ++requests_[QString::fromUtf8(request.method + ' ' + request.path())];
    for (const QString& method : request.rpcMethods)
        ++rpcMethods_[method];
}

void Statistics::uploadReceived(const QString& session, qint64 bytes, qint64 duplicates) {
    if (!isKept_)
        return;
    const std::lock_guard lock(mutex_);
    UploadCount& count = uploads_[session];
    count.received += bytes;
    count.duplicates += duplicates;
}

void Statistics::uploadRefused(const QString& digest, qint64 bytes) {
    if (!isKept_)
        return;
    const std::lock_guard lock(mutex_);
    RefusedCount& count = refused_[digest];
    ++(bytes > 0 ? count.puts : count.queries);
    count.bytes += bytes;
}

void Statistics::secretIssued(const QByteArray& secret) {
    if (!isKept_ || secret.isEmpty())
        return;
    const std::lock_guard lock(mutex_);
    secrets_.insert(secret);
}

QJsonObject Statistics::toJson() const {
    const std::lock_guard lock(mutex_);
    QJsonObject uploads;
    for (auto upload = uploads_.begin(); upload != uploads_.end(); ++upload) {
        uploads.insert(upload.key(), QJsonObject{{QStringLiteral("received"), upload->received},
                                                 {QStringLiteral("duplicates"), upload->duplicates}});
    }
    QJsonObject refused;
    for (auto upload = refused_.begin(); upload != refused_.end(); ++upload) {
        refused.insert(upload.key(), QJsonObject{{QStringLiteral("puts"), upload->puts},
                                                 {QStringLiteral("bytes"), upload->bytes},
                                                 {QStringLiteral("queries"), upload->queries}});
    }
    return {{QStringLiteral("requests"), countsToJson(requests_)},
            {QStringLiteral("refusedUploads"), refused},
            {QStringLiteral("rpcMethods"), countsToJson(rpcMethods_)},
            {QStringLiteral("uploads"), uploads}};
}

QStringList Statistics::secrets() const {
    const std::lock_guard lock(mutex_);
    QStringList list;
    for (const QByteArray& secret : secrets_)
        list.append(QString::fromUtf8(secret));
    return list;
}

} // namespace quenby::localdrive
