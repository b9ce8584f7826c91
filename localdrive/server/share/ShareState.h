// What the sharing dialog shows of a file, and what it may ask for, in the API's terms.
#pragma once

#include "core/Result.h"
#include "localdrive/rpc/RpcMethods.h"

#include <QJsonObject>
#include <QString>

namespace quenby::localdrive::sharing {

// The permission that lets in whoever has the file's address.
inline const QString linkPermission = QStringLiteral("anyoneWithLink");

// The result of a method, or the API's error.
Result<QJsonObject> call(const RpcMethods& methods, const QString& method, const QJsonObject& params,
                         const Caller& caller);

// {"title", "icon", "link", "canShare", "linkRole": "off" or a role,
//  "people": [{"id", "name", "email", "role": "reader", "commenter", "writer" or "owner", "isYou"}]}
Result<QJsonObject> state(const RpcMethods& methods, const QString& fileId, const Caller& caller);

// Lets people in, named by their addresses, which commas, semicolons and blanks separate. Nobody is let in when one of
// them is no address.
Result<void> add(const RpcMethods& methods, const QString& fileId, const QString& addresses, const QString& role,
                 const Caller& caller);
Result<void> setRole(const RpcMethods& methods, const QString& fileId, const QString& permissionId, const QString& role,
                     const Caller& caller);
Result<void> remove(const RpcMethods& methods, const QString& fileId, const QString& permissionId,
                    const Caller& caller);

} // namespace quenby::localdrive::sharing
