// "drive#permission": to whom a file is open, and how far.
//
// A permission holds for its file alone; sharing a folder does not share what is in it.
#pragma once

#include "core/Result.h"
#include "localdrive/store/Access.h"
#include "localdrive/store/Parameters.h"
#include "localdrive/store/Work.h"

#include <QJsonObject>

namespace quenby::localdrive {

struct Permission {
    QString id;
    QString type; // user, group, domain or anyone
    Role role = Role::none;
    QString value; // e-mail address or domain; empty for anyone
    bool withLink = false;
};

QList<Permission> permissionsOf(Session& session, const QString& fileId);
// What "drive#file" has as userPermission.
QJsonObject userPermissionResource(Work& work, const QString& fileId, const Permission& permission);
// Makes the caller the owner of a new file.
void insertOwner(Work& work, const QString& fileId);

namespace permissions {

Result<QJsonObject> list(Work& work, const Parameters& params);
Result<QJsonObject> get(Work& work, const Parameters& params);
Result<QJsonObject> getIdForEmail(Work& work, const Parameters& params);
Result<QJsonObject> insert(Work& work, const Parameters& params);
// Role and additional roles alone can change. With "transferOwnership" an owner gives the file away and stays a writer.
Result<QJsonObject> update(Work& work, const Parameters& params);
Result<QJsonObject> remove(Work& work, const Parameters& params);

} // namespace permissions
} // namespace quenby::localdrive
