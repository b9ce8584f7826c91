#include "localdrive/store/Permissions.h"

#include "localdrive/store/ApiError.h"
#include "localdrive/store/ChangeLog.h"
#include "localdrive/store/Identifiers.h"
#include "localdrive/store/Links.h"
#include "localdrive/store/PageToken.h"
#include "localdrive/store/Text.h"

#include <QJsonArray>

namespace quenby::localdrive {
namespace {

QString roleName(Role role) {
    switch (role) {
    case Role::owner:
        return QStringLiteral("owner");
    case Role::writer:
        return QStringLiteral("writer");
    case Role::commenter: // a reader with the additional role
    case Role::reader:
    case Role::none:
        break;
    }
    return QStringLiteral("reader");
}

Result<Role> requestedRole(const QJsonObject& resource) {
    const QString name = resource.value(QLatin1String("role")).toString();
    const QJsonArray additional = resource.value(QLatin1String("additionalRoles")).toArray();
    if (name == QLatin1String("owner"))
        return Role::owner;
    if (name == QLatin1String("writer"))
        return Role::writer;
    if (name == QLatin1String("reader"))
        return additional.contains(QStringLiteral("commenter")) ? Role::commenter : Role::reader;
    return apiError::invalid(QStringLiteral("role"),
                             QStringLiteral("The permission's role must be owner, writer or reader."));
}

Result<Permission> requestedPermission(const QJsonObject& resource) {
    const Result<Role> role = requestedRole(resource);
    if (!role)
        return role.error();
    Permission permission;
    permission.role = role.value();
    permission.type = resource.value(QLatin1String("type")).toString();
    permission.value = cleaned(resource.value(QLatin1String("value")).toString());
    permission.withLink = resource.value(QLatin1String("withLink")).toBool();
    static const QStringList types{QStringLiteral("user"), QStringLiteral("group"), QStringLiteral("domain"),
                                   QStringLiteral("anyone")};
    if (!types.contains(permission.type))
        return apiError::invalid(QStringLiteral("type"),
                                 QStringLiteral("The permission's type must be user, group, domain or anyone."));
    if (permission.type == QLatin1String("anyone"))
        permission.value.clear();
    else if (permission.value.isEmpty())
        return apiError::required(QStringLiteral("value"));
    permission.id = permissionId(permission.type, permission.value, permission.withLink);
    return permission;
}

Permission fromRow(const Row& row) {
    return {row[0].toString(), row[1].toString(), static_cast<Role>(row[2].toInt()), row[3].toString(),
            row[4].toBool()};
}

void store(Work& work, const QString& fileId, const Permission& permission) {
    work.session().run(QStringLiteral("INSERT OR REPLACE INTO permissions(file_id, id, type, role, value, with_link) "
                                      "VALUES(?, ?, ?, ?, ?, ?)"),
                       {fileId, permission.id, permission.type, static_cast<int>(permission.role), permission.value,
                        permission.withLink});
}

QJsonObject permissionResource(Work& work, const QString& fileId, const Permission& permission) {
    QJsonObject resource{{QStringLiteral("kind"), QStringLiteral("drive#permission")},
                         {QStringLiteral("id"), permission.id},
                         {QStringLiteral("type"), permission.type},
                         {QStringLiteral("role"), roleName(permission.role)},
                         {QStringLiteral("selfLink"),
                          links::api(work.caller().base,
                                     {QStringLiteral("files"), fileId, QStringLiteral("permissions"), permission.id})}};
    if (permission.role == Role::commenter)
        resource.insert(QStringLiteral("additionalRoles"), QJsonArray{QStringLiteral("commenter")});
    if (permission.type == QLatin1String("domain")) {
        resource.insert(QStringLiteral("name"), permission.value);
        resource.insert(QStringLiteral("domain"), permission.value);
    } else if (permission.type == QLatin1String("anyone")) {
        resource.insert(QStringLiteral("withLink"), permission.withLink);
    } else {
        resource.insert(QStringLiteral("name"),
                        work.user(permission.value).value(QLatin1String("displayName")).toString());
        resource.insert(QStringLiteral("emailAddress"), permission.value);
        resource.insert(QStringLiteral("domain"), permission.value.section(QLatin1Char('@'), 1));
    }
    resource.insert(QStringLiteral("etag"), entityTag((fileId + permission.id + roleName(permission.role) +
                                                       QString::number(static_cast<int>(permission.role)))
                                                          .toUtf8()));
    return resource;
}

Result<Permission> findPermission(Work& work, const FileRecord& file, const QString& id) {
    const QString wanted = id == QLatin1String("me") ? work.caller().user.permissionId() : id;
    for (const Permission& permission : permissionsOf(work.session(), file.id))
        if (permission.id == wanted)
            return permission;
    return apiError::notFound(QStringLiteral("Permission"), id);
}

// The file, when the caller may decide who sees it.
Result<FileRecord> sharableFile(Work& work, const QString& id) {
    Result<FileRecord> file = findFile(work, id, Role::writer);
    if (file && !file->writersCanShare && roleOf(work, file->id) < Role::owner)
        return apiError::forbidden(QStringLiteral("Only the owner may share this file."));
    return file;
}

// Gives the file to the permission's holder; owners so far become writers.
MaybeError transferOwnership(Work& work, const FileRecord& file, const Permission& heir) {
    if (roleOf(work, file.id) < Role::owner)
        return apiError::forbidden(QStringLiteral("Only the owner may give a file away."));
    if (heir.type != QLatin1String("user"))
        return apiError::invalid(QStringLiteral("role"), QStringLiteral("Only a user can own a file."));
    work.session().run(QStringLiteral("UPDATE permissions SET role = ? WHERE file_id = ? AND role = ? AND id <> ?"),
                       {static_cast<int>(Role::writer), file.id, static_cast<int>(Role::owner), heir.id});
    return std::nullopt;
}

Result<QJsonObject> put(Work& work, const FileRecord& file, const Permission& permission) {
    if (permission.role == Role::owner)
        if (const MaybeError refused = transferOwnership(work, file, permission))
            return *refused;
    store(work, file.id, permission);
    recordChange(work, file.id);
    return permissionResource(work, file.id, permission);
}

} // namespace

QList<Permission> permissionsOf(Session& session, const QString& fileId) {
    QList<Permission> permissions;
    const QList<Row> rows = session.rows(QStringLiteral("SELECT id, type, role, value, with_link FROM permissions "
                                                        "WHERE file_id = ? ORDER BY role DESC, id"),
                                         {fileId});
    for (const Row& row : rows)
        permissions.append(fromRow(row));
    return permissions;
}

QJsonObject userPermissionResource(Work& work, const QString& fileId, const Permission& permission) {
    QJsonObject resource = permissionResource(work, fileId, permission);
    resource.insert(QStringLiteral("id"), QStringLiteral("me"));
    return resource;
}

void insertOwner(Work& work, const QString& fileId) {
    const Account& user = work.caller().user;
    store(work, fileId, {user.permissionId(), QStringLiteral("user"), Role::owner, user.emailAddress, false});
}

namespace permissions {

Result<QJsonObject> list(Work& work, const Parameters& params) {
    const Result<FileRecord> file = findFile(work, params.text("fileId"));
    if (!file)
        return file.error();
    QJsonArray items;
    for (const Permission& permission : permissionsOf(work.session(), file->id))
        items.append(permissionResource(work, file->id, permission));
    const QString selfLink =
        links::api(work.caller().base, {QStringLiteral("files"), file->id, QStringLiteral("permissions")});
    return unpagedList(QStringLiteral("drive#permissionList"), selfLink, items);
}

Result<QJsonObject> get(Work& work, const Parameters& params) {
    const Result<FileRecord> file = findFile(work, params.text("fileId"));
    if (!file)
        return file.error();
    const Result<Permission> permission = findPermission(work, file.value(), params.text("permissionId"));
    if (!permission)
        return permission.error();
    return permissionResource(work, file->id, permission.value());
}

Result<QJsonObject> getIdForEmail(Work&, const Parameters& params) {
    const QString email = params.text("email");
    if (!email.contains(QLatin1Char('@')))
        return apiError::invalid(QStringLiteral("email"), QStringLiteral("%1 is no e-mail address.").arg(email));
    return QJsonObject{{QStringLiteral("kind"), QStringLiteral("drive#permissionId")},
                       {QStringLiteral("id"), Account{{}, email}.permissionId()}};
}

Result<QJsonObject> insert(Work& work, const Parameters& params) {
    const Result<FileRecord> file = sharableFile(work, params.text("fileId"));
    if (!file)
        return file.error();
    const Result<Permission> permission = requestedPermission(params.resource());
    if (!permission)
        return permission.error();
    const Result<Permission> existing = findPermission(work, file.value(), permission->id);
    if (existing && existing->role == Role::owner && permission->role != Role::owner)
        return apiError::forbidden(QStringLiteral("The owner's permission can't be replaced by a lesser one."));
    return put(work, file.value(), permission.value());
}

Result<QJsonObject> update(Work& work, const Parameters& params) {
    const Result<FileRecord> file = sharableFile(work, params.text("fileId"));
    if (!file)
        return file.error();
    Result<Permission> permission = findPermission(work, file.value(), params.text("permissionId"));
    if (!permission)
        return permission.error();
    const Result<Role> role = requestedRole(params.resource());
    if (!role)
        return role.error();
    if (permission->role == Role::owner && role.value() != Role::owner)
        return apiError::forbidden(QStringLiteral("A file needs an owner: give it to somebody else first."));
    if (role.value() == Role::owner && permission->role != Role::owner && !params.flag("transferOwnership", false))
        return apiError::forbidden(QStringLiteral("transferOwnership must be true to make somebody the owner."));
    permission->role = role.value();
    return put(work, file.value(), permission.value());
}

Result<QJsonObject> remove(Work& work, const Parameters& params) {
    const Result<FileRecord> file = findFile(work, params.text("fileId"));
    if (!file)
        return file.error();
    const Result<Permission> permission = findPermission(work, file.value(), params.text("permissionId"));
    if (!permission)
        return permission.error();
    // Everybody may leave; only who may share can send others away.
    if (permission->id != work.caller().user.permissionId())
        if (const Result<FileRecord> allowed = sharableFile(work, file->id); !allowed)
            return allowed.error();
    if (permission->role == Role::owner)
        return apiError::forbidden(QStringLiteral("A file needs an owner: give it to somebody else first."));
    work.session().run(QStringLiteral("DELETE FROM permissions WHERE file_id = ? AND id = ?"),
                       {file->id, permission->id});
    recordChange(work, file->id);
    return QJsonObject();
}

} // namespace permissions
} // namespace quenby::localdrive
