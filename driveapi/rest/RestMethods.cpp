#include "driveapi/rest/RestMethods.h"

#include <QHash>

namespace quenby {
namespace {

constexpr auto resource = RestMethod::Body::resource;
constexpr auto media = RestMethod::Body::media;

constexpr RestMethod table[] = {
    {"drive.about.get", "GET", "/about"},
    {"drive.apps.get", "GET", "/apps/{appId}"},
    {"drive.apps.list", "GET", "/apps"},
    {"drive.changes.get", "GET", "/changes/{changeId}"},
    {"drive.changes.getStartPageToken", "GET", "/changes/startPageToken"},
    {"drive.changes.list", "GET", "/changes"},
    {"drive.changes.watch", "POST", "/changes/watch", resource},
    {"drive.channels.stop", "POST", "/channels/stop", resource},
    {"drive.children.delete", "DELETE", "/files/{folderId}/children/{childId}"},
    {"drive.children.get", "GET", "/files/{folderId}/children/{childId}"},
    {"drive.children.insert", "POST", "/files/{folderId}/children", resource},
    {"drive.children.list", "GET", "/files/{folderId}/children"},
    {"drive.comments.delete", "DELETE", "/files/{fileId}/comments/{commentId}"},
    {"drive.comments.get", "GET", "/files/{fileId}/comments/{commentId}"},
    {"drive.comments.insert", "POST", "/files/{fileId}/comments", resource},
    {"drive.comments.list", "GET", "/files/{fileId}/comments"},
    {"drive.comments.patch", "PATCH", "/files/{fileId}/comments/{commentId}", resource},
    {"drive.comments.update", "PUT", "/files/{fileId}/comments/{commentId}", resource},
    {"drive.files.copy", "POST", "/files/{fileId}/copy", resource},
    {"drive.files.delete", "DELETE", "/files/{fileId}"},
    {"drive.files.emptyTrash", "DELETE", "/files/trash"},
    {"drive.files.generateIds", "GET", "/files/generateIds"},
    {"drive.files.get", "GET", "/files/{fileId}"},
    {"drive.files.insert", "POST", "/files", media},
    {"drive.files.list", "GET", "/files"},
    {"drive.files.patch", "PATCH", "/files/{fileId}", resource},
    {"drive.files.touch", "POST", "/files/{fileId}/touch"},
    {"drive.files.trash", "POST", "/files/{fileId}/trash"},
    {"drive.files.untrash", "POST", "/files/{fileId}/untrash"},
    {"drive.files.update", "PUT", "/files/{fileId}", media},
    {"drive.files.watch", "POST", "/files/{fileId}/watch", resource},
    {"drive.parents.delete", "DELETE", "/files/{fileId}/parents/{parentId}"},
    {"drive.parents.get", "GET", "/files/{fileId}/parents/{parentId}"},
    {"drive.parents.insert", "POST", "/files/{fileId}/parents", resource},
    {"drive.parents.list", "GET", "/files/{fileId}/parents"},
    {"drive.permissions.delete", "DELETE", "/files/{fileId}/permissions/{permissionId}"},
    {"drive.permissions.get", "GET", "/files/{fileId}/permissions/{permissionId}"},
    {"drive.permissions.getIdForEmail", "GET", "/permissionIds/{email}"},
    {"drive.permissions.insert", "POST", "/files/{fileId}/permissions", resource},
    {"drive.permissions.list", "GET", "/files/{fileId}/permissions"},
    {"drive.permissions.patch", "PATCH", "/files/{fileId}/permissions/{permissionId}", resource},
    {"drive.permissions.update", "PUT", "/files/{fileId}/permissions/{permissionId}", resource},
    {"drive.properties.delete", "DELETE", "/files/{fileId}/properties/{propertyKey}"},
    {"drive.properties.get", "GET", "/files/{fileId}/properties/{propertyKey}"},
    {"drive.properties.insert", "POST", "/files/{fileId}/properties", resource},
    {"drive.properties.list", "GET", "/files/{fileId}/properties"},
    {"drive.properties.patch", "PATCH", "/files/{fileId}/properties/{propertyKey}", resource},
    {"drive.properties.update", "PUT", "/files/{fileId}/properties/{propertyKey}", resource},
    {"drive.realtime.get", "GET", "/files/{fileId}/realtime"},
    {"drive.realtime.update", "PUT", "/files/{fileId}/realtime", media},
    {"drive.replies.delete", "DELETE", "/files/{fileId}/comments/{commentId}/replies/{replyId}"},
    {"drive.replies.get", "GET", "/files/{fileId}/comments/{commentId}/replies/{replyId}"},
    {"drive.replies.insert", "POST", "/files/{fileId}/comments/{commentId}/replies", resource},
    {"drive.replies.list", "GET", "/files/{fileId}/comments/{commentId}/replies"},
    {"drive.replies.patch", "PATCH", "/files/{fileId}/comments/{commentId}/replies/{replyId}", resource},
    {"drive.replies.update", "PUT", "/files/{fileId}/comments/{commentId}/replies/{replyId}", resource},
    {"drive.revisions.delete", "DELETE", "/files/{fileId}/revisions/{revisionId}"},
    {"drive.revisions.get", "GET", "/files/{fileId}/revisions/{revisionId}"},
    {"drive.revisions.list", "GET", "/files/{fileId}/revisions"},
    {"drive.revisions.patch", "PATCH", "/files/{fileId}/revisions/{revisionId}", resource},
    {"drive.revisions.update", "PUT", "/files/{fileId}/revisions/{revisionId}", resource},
};

} // namespace

std::span<const RestMethod> restMethods() { return table; }

const RestMethod* restMethodNamed(const QString& name) {
    static const QHash<QString, const RestMethod*> byName = [] {
        QHash<QString, const RestMethod*> methods;
        for (const RestMethod& method : table)
            methods.insert(QString::fromLatin1(method.name), &method);
        return methods;
    }();
    return byName.value(name);
}

} // namespace quenby
