#include "localdrive/store/FileResource.h"

#include "localdrive/store/Access.h"
#include "localdrive/store/FileTree.h"
#include "localdrive/store/Identifiers.h"
#include "localdrive/store/Links.h"
#include "localdrive/store/NativeTypes.h"
#include "localdrive/store/Permissions.h"
#include "localdrive/store/Properties.h"
#include "localdrive/store/References.h"
#include "localdrive/store/Text.h"

#include <QJsonArray>

#include <algorithm>

namespace quenby::localdrive {
namespace {

// Absent rather than empty, as the API does.
void insertText(QJsonObject& object, QLatin1String key, const QString& text) {
    if (!text.isEmpty())
        object.insert(key, text);
}

QJsonObject labels(const FileRecord& file) {
    return {{QStringLiteral("starred"), file.starred},
            {QStringLiteral("hidden"), file.hidden},
            {QStringLiteral("trashed"), file.trashed},
            {QStringLiteral("restricted"), file.restricted},
            {QStringLiteral("viewed"), !file.viewed.isNull()}};
}

void addDates(QJsonObject& resource, const FileRecord& file) {
    insertText(resource, QLatin1String("createdDate"), dateText(QVariant(file.created)));
    insertText(resource, QLatin1String("modifiedDate"), dateText(QVariant(file.modified)));
    insertText(resource, QLatin1String("modifiedByMeDate"), dateText(file.modifiedByMe));
    insertText(resource, QLatin1String("lastViewedByMeDate"), dateText(file.viewed));
    insertText(resource, QLatin1String("markedViewedByMeDate"), dateText(file.viewed));
    insertText(resource, QLatin1String("sharedWithMeDate"), dateText(file.sharedWithMe));
}

void addLinks(QJsonObject& resource, Work& work, const FileRecord& file) {
    const QUrl& base = work.caller().base;
    resource.insert(QStringLiteral("selfLink"), links::api(base, {QStringLiteral("files"), file.id}));
    resource.insert(QStringLiteral("alternateLink"), links::page(base, file));
    resource.insert(QStringLiteral("iconLink"), links::icon(base, file.mimeType));
    insertText(resource, QLatin1String("thumbnailLink"), links::thumbnail(base, file));
    if (const QJsonObject exports = exportLinks(base, file.mimeType, file.id); !exports.isEmpty())
        resource.insert(QStringLiteral("exportLinks"), exports);
}

void addContent(QJsonObject& resource, Work& work, const FileRecord& file) {
    insertText(resource, QLatin1String("headRevisionId"), file.headRevision);
    resource.insert(QStringLiteral("quotaBytesUsed"), int64(file.quotaUsed));
    if (!file.hasContent())
        return;
    resource.insert(QStringLiteral("downloadUrl"), links::download(work.caller().base, file.id));
    resource.insert(QStringLiteral("originalFilename"), file.originalFilename);
    resource.insert(QStringLiteral("fileExtension"), fileExtension(file.originalFilename));
    resource.insert(QStringLiteral("md5Checksum"), file.md5);
    resource.insert(QStringLiteral("fileSize"), int64(file.size));
}

void addPeople(QJsonObject& resource, Work& work, const FileRecord& file) {
    const QList<Permission> permissions = permissionsOf(work.session(), file.id);
    const QString me = work.caller().user.permissionId();
    QJsonArray owners;
    QJsonArray ownerNames;
    Role mine = Role::none;
    for (const Permission& permission : permissions) {
        if (permission.role == Role::owner) {
            const QJsonObject owner = work.user(permission.value);
            owners.append(owner);
            ownerNames.append(owner.value(QLatin1String("displayName")));
        }
        if (permission.id == me) {
            mine = permission.role;
            resource.insert(QStringLiteral("userPermission"), userPermissionResource(work, file.id, permission));
        }
    }
    resource.insert(QStringLiteral("owners"), owners);
    resource.insert(QStringLiteral("ownerNames"), ownerNames);
    resource.insert(QStringLiteral("shared"), permissions.size() > 1);
    resource.insert(QStringLiteral("editable"), mine >= Role::writer);
    const QJsonObject modifier = work.user(file.modifiedBy);
    resource.insert(QStringLiteral("lastModifyingUser"), modifier);
    resource.insert(QStringLiteral("lastModifyingUserName"), modifier.value(QLatin1String("displayName")));
}

} // namespace

QString fileExtension(const QString& name) {
    const qsizetype dot = name.lastIndexOf(QLatin1Char('.'));
    return dot < 0 ? QString() : name.mid(dot + 1);
}

QJsonObject fileResource(Work& work, const FileRecord& file) {
    QJsonObject resource{{QStringLiteral("kind"), QStringLiteral("drive#file")},
                         {QStringLiteral("id"), file.id},
                         {QStringLiteral("title"), file.title},
                         {QStringLiteral("mimeType"), file.mimeType},
                         {QStringLiteral("labels"), labels(file)},
                         {QStringLiteral("explicitlyTrashed"), file.explicitlyTrashed},
                         {QStringLiteral("version"), int64(file.version)},
                         {QStringLiteral("writersCanShare"), file.writersCanShare},
                         {QStringLiteral("copyable"), !file.isFolder() && !file.restricted},
                         {QStringLiteral("appDataContents"), false},
                         {QStringLiteral("spaces"), QJsonArray{QStringLiteral("drive")}}};
    resource.insert(QStringLiteral("etag"), entityTag(file.id.toLatin1() + QByteArray::number(file.version)));
    insertText(resource, QLatin1String("description"), file.description);
    insertText(resource, QLatin1String("folderColorRgb"), file.folderColor);
    addDates(resource, file);
    addLinks(resource, work, file);
    addContent(resource, work, file);
    addPeople(resource, work, file);

    QJsonArray parents;
    for (const QString& parent : FileTree(work).parents(file.id))
        parents.append(parentReference(work, file.id, parent));
    resource.insert(QStringLiteral("parents"), parents);
    if (const QJsonArray properties = propertyResources(work, file.id); !properties.isEmpty())
        resource.insert(QStringLiteral("properties"), properties);
    return resource;
}

} // namespace quenby::localdrive
