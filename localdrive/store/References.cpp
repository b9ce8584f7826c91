#include "localdrive/store/References.h"

#include "localdrive/store/Access.h"
#include "localdrive/store/ApiError.h"
#include "localdrive/store/ChangeLog.h"
#include "localdrive/store/FileTree.h"
#include "localdrive/store/Links.h"
#include "localdrive/store/PageToken.h"
#include "localdrive/store/Text.h"

#include <QJsonArray>

namespace quenby::localdrive {
namespace {

// The two ends of a link, when both exist and it does too.
struct Link {
    QString fileId;
    QString folderId;
};

Result<Link> findLink(Work& work, const QString& fileId, const QString& folderId, Role needed) {
    const Result<FileRecord> file = findFile(work, fileId, needed);
    if (!file)
        return file.error();
    const QString folder = resolvedId(work, folderId);
    if (!FileTree(work).isParent(folder, file->id))
        return apiError::notFound(QStringLiteral("Parent"), folderId);
    return Link{file->id, folder};
}

Result<Link> insertLink(Work& work, const QString& fileId, const QString& folderId) {
    const Result<FileRecord> file = findFile(work, fileId, Role::writer);
    if (!file)
        return file.error();
    FileTree tree(work);
    if (const MaybeError refused = tree.addParent(file->id, folderId))
        return *refused;
    recordChange(work, file->id);
    tree.refreshTrashed(file->id);
    return Link{file->id, resolvedId(work, folderId)};
}

Result<QJsonObject> removeLink(Work& work, const QString& fileId, const QString& folderId) {
    const Result<Link> link = findLink(work, fileId, folderId, Role::writer);
    if (!link)
        return link.error();
    FileTree tree(work);
    tree.removeParent(link->fileId, link->folderId);
    recordChange(work, link->fileId);
    tree.refreshTrashed(link->fileId);
    return QJsonObject();
}

QString bodyId(const Parameters& params) { return cleaned(params.resource().value(QLatin1String("id")).toString()); }

} // namespace

QJsonObject parentReference(Work& work, const QString& fileId, const QString& parentId) {
    const QUrl& base = work.caller().base;
    return {{QStringLiteral("kind"), QStringLiteral("drive#parentReference")},
            {QStringLiteral("id"), parentId},
            {QStringLiteral("selfLink"),
             links::api(base, {QStringLiteral("files"), fileId, QStringLiteral("parents"), parentId})},
            {QStringLiteral("parentLink"), links::api(base, {QStringLiteral("files"), parentId})},
            {QStringLiteral("isRoot"), parentId == work.store().rootFolderId()}};
}

QJsonObject childReference(Work& work, const QString& folderId, const QString& childId) {
    const QUrl& base = work.caller().base;
    return {{QStringLiteral("kind"), QStringLiteral("drive#childReference")},
            {QStringLiteral("id"), childId},
            {QStringLiteral("selfLink"),
             links::api(base, {QStringLiteral("files"), folderId, QStringLiteral("children"), childId})},
            {QStringLiteral("childLink"), links::api(base, {QStringLiteral("files"), childId})}};
}

namespace parents {

Result<QJsonObject> list(Work& work, const Parameters& params) {
    const Result<FileRecord> file = findFile(work, params.text("fileId"));
    if (!file)
        return file.error();
    QJsonArray items;
    for (const QString& parent : FileTree(work).parents(file->id))
        items.append(parentReference(work, file->id, parent));
    const QString selfLink =
        links::api(work.caller().base, {QStringLiteral("files"), file->id, QStringLiteral("parents")});
    return unpagedList(QStringLiteral("drive#parentList"), selfLink, items);
}

Result<QJsonObject> get(Work& work, const Parameters& params) {
    const Result<Link> link = findLink(work, params.text("fileId"), params.text("parentId"), Role::reader);
    if (!link)
        return link.error();
    return parentReference(work, link->fileId, link->folderId);
}

Result<QJsonObject> insert(Work& work, const Parameters& params) {
    if (bodyId(params).isEmpty())
        return apiError::required(QStringLiteral("id"));
    const Result<Link> link = insertLink(work, params.text("fileId"), bodyId(params));
    if (!link)
        return link.error();
    return parentReference(work, link->fileId, link->folderId);
}

Result<QJsonObject> remove(Work& work, const Parameters& params) {
    return removeLink(work, params.text("fileId"), params.text("parentId"));
}

} // namespace parents

namespace children {

Result<QJsonObject> get(Work& work, const Parameters& params) {
    const Result<Link> link = findLink(work, params.text("childId"), params.text("folderId"), Role::reader);
    if (!link)
        return link.error();
    return childReference(work, link->folderId, link->fileId);
}

Result<QJsonObject> insert(Work& work, const Parameters& params) {
    if (bodyId(params).isEmpty())
        return apiError::required(QStringLiteral("id"));
    const Result<Link> link = insertLink(work, bodyId(params), params.text("folderId"));
    if (!link)
        return link.error();
    return childReference(work, link->folderId, link->fileId);
}

Result<QJsonObject> remove(Work& work, const Parameters& params) {
    return removeLink(work, params.text("childId"), params.text("folderId"));
}

} // namespace children
} // namespace quenby::localdrive
