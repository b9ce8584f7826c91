#include "localdrive/server/rest/RestMethods.h"

#include <QUrl>
#include <QUrlQuery>

#include <algorithm>
#include <vector>

namespace quenby::localdrive {
namespace {

// A path's parts in braces are parameters.
struct Address {
    const char* verb;
    const char* path;
    const char* method; // without "drive."
};

// Fixed words come before parameters that would take them.
constexpr Address addresses[] = {
    {"GET", "about", "about.get"},
    {"GET", "apps", "apps.list"},
    {"GET", "apps/{appId}", "apps.get"},

    {"GET", "changes", "changes.list"},
    {"GET", "changes/startPageToken", "changes.getStartPageToken"},
    {"POST", "changes/watch", "changes.watch"},
    {"GET", "changes/{changeId}", "changes.get"},
    {"POST", "channels/stop", "channels.stop"},

    {"GET", "files", "files.list"},
    {"POST", "files", "files.insert"},
    {"GET", "files/generateIds", "files.generateIds"},
    {"DELETE", "files/trash", "files.emptyTrash"},
    {"GET", "files/{fileId}", "files.get"},
    {"PUT", "files/{fileId}", "files.update"},
    {"PATCH", "files/{fileId}", "files.patch"},
    {"DELETE", "files/{fileId}", "files.delete"},
    {"POST", "files/{fileId}/copy", "files.copy"},
    {"POST", "files/{fileId}/touch", "files.touch"},
    {"POST", "files/{fileId}/trash", "files.trash"},
    {"POST", "files/{fileId}/untrash", "files.untrash"},
    {"POST", "files/{fileId}/watch", "files.watch"},
    {"GET", "files/{fileId}/realtime", "realtime.get"},

    {"GET", "files/{folderId}/children", "children.list"},
    {"POST", "files/{folderId}/children", "children.insert"},
    {"GET", "files/{folderId}/children/{childId}", "children.get"},
    {"DELETE", "files/{folderId}/children/{childId}", "children.delete"},

    {"GET", "files/{fileId}/parents", "parents.list"},
    {"POST", "files/{fileId}/parents", "parents.insert"},
    {"GET", "files/{fileId}/parents/{parentId}", "parents.get"},
    {"DELETE", "files/{fileId}/parents/{parentId}", "parents.delete"},

    {"GET", "permissionIds/{email}", "permissions.getIdForEmail"},
    {"GET", "files/{fileId}/permissions", "permissions.list"},
    {"POST", "files/{fileId}/permissions", "permissions.insert"},
    {"GET", "files/{fileId}/permissions/{permissionId}", "permissions.get"},
    {"PUT", "files/{fileId}/permissions/{permissionId}", "permissions.update"},
    {"PATCH", "files/{fileId}/permissions/{permissionId}", "permissions.patch"},
    {"DELETE", "files/{fileId}/permissions/{permissionId}", "permissions.delete"},

    {"GET", "files/{fileId}/properties", "properties.list"},
    {"POST", "files/{fileId}/properties", "properties.insert"},
    {"GET", "files/{fileId}/properties/{propertyKey}", "properties.get"},
    {"PUT", "files/{fileId}/properties/{propertyKey}", "properties.update"},
    {"PATCH", "files/{fileId}/properties/{propertyKey}", "properties.patch"},
    {"DELETE", "files/{fileId}/properties/{propertyKey}", "properties.delete"},

    {"GET", "files/{fileId}/revisions", "revisions.list"},
    {"GET", "files/{fileId}/revisions/{revisionId}", "revisions.get"},
    {"PUT", "files/{fileId}/revisions/{revisionId}", "revisions.update"},
    {"PATCH", "files/{fileId}/revisions/{revisionId}", "revisions.patch"},
    {"DELETE", "files/{fileId}/revisions/{revisionId}", "revisions.delete"},

    {"GET", "files/{fileId}/comments", "comments.list"},
    {"POST", "files/{fileId}/comments", "comments.insert"},
    {"GET", "files/{fileId}/comments/{commentId}", "comments.get"},
    {"PUT", "files/{fileId}/comments/{commentId}", "comments.update"},
    {"PATCH", "files/{fileId}/comments/{commentId}", "comments.patch"},
    {"DELETE", "files/{fileId}/comments/{commentId}", "comments.delete"},

    {"GET", "files/{fileId}/comments/{commentId}/replies", "replies.list"},
    {"POST", "files/{fileId}/comments/{commentId}/replies", "replies.insert"},
    {"GET", "files/{fileId}/comments/{commentId}/replies/{replyId}", "replies.get"},
    {"PUT", "files/{fileId}/comments/{commentId}/replies/{replyId}", "replies.update"},
    {"PATCH", "files/{fileId}/comments/{commentId}/replies/{replyId}", "replies.patch"},
    {"DELETE", "files/{fileId}/comments/{commentId}/replies/{replyId}", "replies.delete"},
};

// A content that comes with PATCH is for the one method that takes it.
constexpr Address uploadAddresses[] = {
    {"POST", "files", "files.insert"},
    {"PUT", "files/{fileId}", "files.update"},
    {"PATCH", "files/{fileId}", "files.update"},
    {"PUT", "files/{fileId}/realtime", "realtime.update"},
};

// Of the transport, not of the call.
const QStringList& transportParameters() {
    static const QStringList names{
        QStringLiteral("access_token"), QStringLiteral("alt"),       QStringLiteral("callback"),
        QStringLiteral("key"),          QStringLiteral("quotaUser"), QStringLiteral("oauth_token"),
        QStringLiteral("prettyPrint"),  QStringLiteral("resource"),  QStringLiteral("upload_id"),
        QStringLiteral("uploadType"),   QStringLiteral("userIp"),
    };
    return names;
}

// The parameters in the path, when the address is of this form.
std::optional<QJsonObject> matchPath(const QByteArrayList& form, const QByteArrayList& parts) {
    if (form.size() != parts.size())
        return std::nullopt;
    QJsonObject params;
    for (qsizetype i = 0; i < form.size(); ++i) {
        const QString part = QUrl::fromPercentEncoding(parts[i]);
        if (form[i].startsWith('{'))
            params.insert(QString::fromLatin1(form[i].sliced(1, form[i].size() - 2)), part);
        else if (part != QLatin1String(form[i]))
            return std::nullopt;
    }
    return params;
}

struct Entry {
    QByteArray verb;
    QByteArrayList form;
    QString method;
};

template <std::size_t N>
std::vector<Entry> entries(const Address (&table)[N]) {
    std::vector<Entry> made;
    for (const Address& address : table)
        made.push_back({address.verb, QByteArray(address.path).split('/'),
                        QStringLiteral("drive.") + QLatin1String(address.method)});
    return made;
}

std::optional<RestMethod> find(const std::vector<Entry>& table, QByteArrayView base, QByteArrayView verb,
                               const QByteArray& path) {
    if (!path.startsWith(base) || path.mid(base.size(), 1) != "/")
        return std::nullopt;
    const QByteArrayList parts = path.mid(base.size() + 1).split('/');
    for (const Entry& entry : table) {
        if (verb != entry.verb)
            continue;
        if (const auto params = matchPath(entry.form, parts)) {
            const bool hasNoResult = verb == "DELETE" || entry.method == QLatin1String("drive.channels.stop");
            return RestMethod{entry.method, *params, hasNoResult};
        }
    }
    return std::nullopt;
}

QList<QPair<QString, QString>> queryItems(const QByteArray& query) {
    QByteArray plain = query;
    plain.replace('+', "%20");
    return QUrlQuery(QString::fromLatin1(plain)).queryItems(QUrl::FullyDecoded);
}

} // namespace

RestTarget RestTarget::parse(QByteArrayView target) {
    const qsizetype mark = target.indexOf('?');
    return mark < 0 ? RestTarget{target.toByteArray(), {}}
                    : RestTarget{target.first(mark).toByteArray(), target.sliced(mark + 1).toByteArray()};
}

QString RestTarget::parameter(const char* name) const {
    for (const auto& [key, value] : queryItems(query))
        if (key == QLatin1String(name))
            return value;
    return {};
}

QJsonObject RestTarget::params() const {
    QJsonObject params;
    for (const auto& [key, value] : queryItems(query))
        if (!transportParameters().contains(key))
            params.insert(key, value);
    return params;
}

std::optional<RestMethod> restMethod(QByteArrayView verb, const QByteArray& path) {
    static const std::vector<Entry> table = entries(addresses);
    return find(table, restBase, verb, path);
}

std::optional<RestMethod> restUploadMethod(QByteArrayView verb, const QByteArray& path) {
    static const std::vector<Entry> table = entries(uploadAddresses);
    return find(table, restUploadBase, verb, path);
}

std::optional<RestMethod> calledMethod(QByteArrayView verb, QByteArrayView target) {
    const RestTarget parsed = RestTarget::parse(target);
    if (parsed.path.startsWith(restUploadBase))
        return parsed.parameter("upload_id").isEmpty() ? restUploadMethod(verb, parsed.path) : std::nullopt;
    return parsed.parameter("alt") == QLatin1String("media") ? std::nullopt : restMethod(verb, parsed.path);
}

} // namespace quenby::localdrive
