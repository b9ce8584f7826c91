#include "localdrive/store/Channels.h"

#include "localdrive/store/Access.h"
#include "localdrive/store/ApiError.h"
#include "localdrive/store/Links.h"
#include "localdrive/store/Text.h"

#include <algorithm>
#include <chrono>

namespace quenby::localdrive {
namespace {

using namespace std::chrono_literals;
constexpr std::chrono::milliseconds usualLife = 1h;
constexpr std::chrono::milliseconds longestLife = 24h;

QString field(const QJsonObject& channel, const char* name) {
    return cleaned(channel.value(QLatin1String(name)).toString());
}

// Milliseconds since 1970: what was asked for, within limits.
qint64 expirationOf(const QJsonObject& channel, qint64 now) {
    const qint64 asked = channel.value(QLatin1String("expiration")).toVariant().toLongLong();
    return asked > now ? std::min(asked, now + longestLife.count()) : now + usualLife.count();
}

Result<QJsonObject> open(Work& work, const QJsonObject& channel, const QString& resourceId,
                         const QString& resourceUri) {
    const QString id = field(channel, "id");
    const QString address = field(channel, "address");
    if (id.isEmpty())
        return apiError::required(QStringLiteral("id"));
    if (field(channel, "type") != QLatin1String("web_hook"))
        return apiError::invalid(QStringLiteral("type"), QStringLiteral("A channel's type must be web_hook."));
    if (!QUrl(address, QUrl::StrictMode).scheme().startsWith(QLatin1String("http")))
        return apiError::invalid(QStringLiteral("address"), QStringLiteral("A channel needs a web address."));

    Session& session = work.session();
    session.run(QStringLiteral("DELETE FROM channels WHERE expiration <= ?"), {work.now()});
    if (session.value(QStringLiteral("SELECT 1 FROM channels WHERE id = ?"), {id}).isValid())
        return apiError::duplicate(QStringLiteral("The channel %1 is open already: choose a new id.").arg(id));
    const qint64 expiration = expirationOf(channel, work.now());
    session.run(QStringLiteral("INSERT INTO channels(id, resource_id, resource_uri, type, address, token, expiration) "
                               "VALUES(?, ?, ?, ?, ?, ?, ?)"),
                {id, resourceId, resourceUri, field(channel, "type"), address, field(channel, "token"), expiration});
    return QJsonObject{{QStringLiteral("kind"), QStringLiteral("api#channel")},
                       {QStringLiteral("id"), id},
                       {QStringLiteral("resourceId"), resourceId},
                       {QStringLiteral("resourceUri"), resourceUri},
                       {QStringLiteral("token"), field(channel, "token")},
                       {QStringLiteral("expiration"), int64(expiration)}};
}

} // namespace

namespace files {

Result<QJsonObject> watch(Work& work, const Parameters& params) {
    const Result<FileRecord> file = findFile(work, params.text("fileId"));
    if (!file)
        return file.error();
    return open(work, params.resource(), file->id, links::api(work.caller().base, {QStringLiteral("files"), file->id}));
}

} // namespace files

namespace changes {

Result<QJsonObject> watch(Work& work, const Parameters& params) {
    return open(work, params.resource(), QStringLiteral("changes"),
                links::api(work.caller().base, {QStringLiteral("changes")}));
}

} // namespace changes

namespace channels {

Result<QJsonObject> stop(Work& work, const Parameters& params) {
    const QJsonObject channel = params.resource();
    const qint64 stopped = work.session().run(QStringLiteral("DELETE FROM channels WHERE id = ? AND resource_id = ?"),
                                              {field(channel, "id"), field(channel, "resourceId")});
    if (stopped == 0)
        return apiError::notFound(QStringLiteral("Channel"), field(channel, "id"));
    return QJsonObject();
}

} // namespace channels
} // namespace quenby::localdrive
