#include "localdrive/server/share/ShareState.h"

#include "localdrive/store/ApiError.h"

#include <QJsonArray>
#include <QRegularExpression>
#include <QUrl>

namespace quenby::localdrive::sharing {
namespace {

QString roleOf(const QJsonObject& permission) {
    const bool comments = permission[QLatin1String("additionalRoles")].toArray().contains(QStringLiteral("commenter"));
    return comments ? QStringLiteral("commenter") : permission[QLatin1String("role")].toString();
}

// The dialog gives nobody a file: an owner is no role here.
Result<QJsonObject> permissionResource(const QString& role) {
    if (role == QLatin1String("reader") || role == QLatin1String("writer"))
        return QJsonObject{{QStringLiteral("role"), role}};
    if (role == QLatin1String("commenter"))
        return QJsonObject{{QStringLiteral("role"), QStringLiteral("reader")},
                           {QStringLiteral("additionalRoles"), QJsonArray{role}}};
    return apiError::invalid(QStringLiteral("role"), QStringLiteral("The role must be reader, commenter or writer."));
}

QJsonObject person(const QJsonObject& permission, const Caller& caller) {
    const QString id = permission[QLatin1String("id")].toString();
    const QString name = permission[QLatin1String("type")].toString() == QLatin1String("anyone")
                             ? QStringLiteral("Everybody")
                             : permission[QLatin1String("name")].toString();
    return {{QStringLiteral("id"), id},
            {QStringLiteral("name"), name},
            {QStringLiteral("email"), permission[QLatin1String("emailAddress")].toString()},
            {QStringLiteral("role"), roleOf(permission)},
            {QStringLiteral("isYou"), id == caller.user.permissionId()}};
}

bool mayShare(const QJsonObject& file) {
    const bool owns = file[QLatin1String("userPermission")][QLatin1String("role")].toString() == QLatin1String("owner");
    return owns || (file[QLatin1String("editable")].toBool() && file[QLatin1String("writersCanShare")].toBool());
}

Result<void> withoutResult(const Result<QJsonObject>& called) {
    return called ? Result<void>() : Result<void>(called.error());
}

Result<QStringList> addressesIn(const QString& text) {
    static const QRegularExpression separators(QStringLiteral("[,;\\s]+"));
    static const QRegularExpression address(QStringLiteral("^[^@]+@[^@]+$"));
    const QStringList addresses = text.split(separators, Qt::SkipEmptyParts);
    if (addresses.isEmpty())
        return apiError::invalid(QStringLiteral("people"), QStringLiteral("Enter an e-mail address."));
    for (const QString& one : addresses)
        if (!address.match(one).hasMatch())
            return apiError::invalid(QStringLiteral("people"), QStringLiteral("“%1” is no e-mail address.").arg(one));
    return addresses;
}

} // namespace

Result<QJsonObject> call(const RpcMethods& methods, const QString& method, const QJsonObject& params,
                         const Caller& caller) {
    CallContext context;
    static_cast<Caller&>(context) = caller;
    const QJsonObject reply = methods.call(method, params, context);
    if (reply.contains(QLatin1String("result")))
        return reply[QLatin1String("result")].toObject();
    const QJsonObject error = reply[QLatin1String("error")].toObject();
    return Error(apiErrorDomain, error[QLatin1String("code")].toInt(),
                 {{errorKey::reason, error[QLatin1String("message")].toString()}});
}

Result<QJsonObject> state(const RpcMethods& methods, const QString& fileId, const Caller& caller) {
    const QJsonObject params{{QStringLiteral("fileId"), fileId}};
    const auto file = call(methods, QStringLiteral("drive.files.get"), params, caller);
    if (!file)
        return file.error();
    const auto list = call(methods, QStringLiteral("drive.permissions.list"), params, caller);
    if (!list)
        return list.error();
    QString linkRole = QStringLiteral("off");
    QJsonArray people;
    for (const QJsonValue item : (*list)[QLatin1String("items")].toArray()) {
        const QJsonObject permission = item.toObject();
        if (permission[QLatin1String("id")].toString() == linkPermission)
            linkRole = roleOf(permission);
        else
            people.append(person(permission, caller));
    }
    return QJsonObject{{QStringLiteral("title"), (*file)[QLatin1String("title")]},
                       {QStringLiteral("icon"), QUrl((*file)[QLatin1String("iconLink")].toString()).path()},
                       {QStringLiteral("link"), (*file)[QLatin1String("alternateLink")]},
                       {QStringLiteral("canShare"), mayShare(*file)},
                       {QStringLiteral("linkRole"), linkRole},
                       {QStringLiteral("people"), people}};
}

Result<void> add(const RpcMethods& methods, const QString& fileId, const QString& addresses, const QString& role,
                 const Caller& caller) {
    const Result<QStringList> all = addressesIn(addresses);
    if (!all)
        return all.error();
    Result<QJsonObject> resource = permissionResource(role);
    if (!resource)
        return resource.error();
    resource->insert(QStringLiteral("type"), QStringLiteral("user"));
    for (const QString& address : *all) {
        resource->insert(QStringLiteral("value"), address);
        const auto inserted =
            call(methods, QStringLiteral("drive.permissions.insert"),
                 {{QStringLiteral("fileId"), fileId}, {QStringLiteral("resource"), *resource}}, caller);
        if (!inserted)
            return inserted.error();
    }
    return {};
}

Result<void> setRole(const RpcMethods& methods, const QString& fileId, const QString& permissionId, const QString& role,
                     const Caller& caller) {
    Result<QJsonObject> resource = permissionResource(role);
    if (!resource)
        return resource.error();
    QJsonObject params{{QStringLiteral("fileId"), fileId}};
    if (permissionId != linkPermission) {
        params.insert(QStringLiteral("permissionId"), permissionId);
        params.insert(QStringLiteral("resource"), *resource);
        return withoutResult(call(methods, QStringLiteral("drive.permissions.update"), params, caller));
    }
    // The link may not be open yet.
    resource->insert(QStringLiteral("type"), QStringLiteral("anyone"));
    resource->insert(QStringLiteral("withLink"), true);
    params.insert(QStringLiteral("resource"), *resource);
    return withoutResult(call(methods, QStringLiteral("drive.permissions.insert"), params, caller));
}

Result<void> remove(const RpcMethods& methods, const QString& fileId, const QString& permissionId,
                    const Caller& caller) {
    return withoutResult(call(methods, QStringLiteral("drive.permissions.delete"),
                              {{QStringLiteral("fileId"), fileId}, {QStringLiteral("permissionId"), permissionId}},
                              caller));
}

} // namespace quenby::localdrive::sharing
