#include "localdrive/rpc/RpcMethods.h"

#include "localdrive/rpc/FieldMask.h"
#include "localdrive/store/About.h"
#include "localdrive/store/ApiError.h"
#include "localdrive/store/Apps.h"
#include "localdrive/store/Changes.h"
#include "localdrive/store/Channels.h"
#include "localdrive/store/Comments.h"
#include "localdrive/store/FileLists.h"
#include "localdrive/store/FileRecord.h"
#include "localdrive/store/Files.h"
#include "localdrive/store/Parameters.h"
#include "localdrive/store/Permissions.h"
#include "localdrive/store/Properties.h"
#include "localdrive/store/Realtime.h"
#include "localdrive/store/References.h"
#include "localdrive/store/Replies.h"
#include "localdrive/store/Revisions.h"
#include "localdrive/store/Work.h"

#include <QLoggingCategory>

#include <map>

namespace quenby::localdrive {
namespace {

Q_LOGGING_CATEGORY(log, "quenby.localdrive.rpc")

using Handler = Result<QJsonObject> (*)(Work&, const Parameters&);

struct Method {
    Session::Kind kind;
    QStringList required; // parameters
    Handler handler;
    bool takesMedia = false;
};

using MethodTable = std::map<QString, Method>;

constexpr auto reads = Session::Kind::read;
constexpr auto writes = Session::Kind::write;

const QString file = QStringLiteral("fileId");
const QString body = QStringLiteral("resource");
const QString comment = QStringLiteral("commentId");
const QString reply = QStringLiteral("replyId");
const QString folder = QStringLiteral("folderId");
const QString child = QStringLiteral("childId");
const QString parent = QStringLiteral("parentId");
const QString permission = QStringLiteral("permissionId");
const QString property = QStringLiteral("propertyKey");
const QString revision = QStringLiteral("revisionId");

MethodTable fileMethods() {
    return {
        {QStringLiteral("drive.files.copy"), {writes, {file}, files::copy}},
        {QStringLiteral("drive.files.delete"), {writes, {file}, files::remove}},
        {QStringLiteral("drive.files.emptyTrash"), {writes, {}, files::emptyTrash}},
        {QStringLiteral("drive.files.generateIds"), {reads, {}, files::generateIds}},
        {QStringLiteral("drive.files.get"), {reads, {file}, files::get}},
        {QStringLiteral("drive.files.insert"), {writes, {}, files::insert, true}},
        {QStringLiteral("drive.files.list"), {reads, {}, files::list}},
        {QStringLiteral("drive.files.patch"), {writes, {file}, files::update}},
        {QStringLiteral("drive.files.touch"), {writes, {file}, files::touch}},
        {QStringLiteral("drive.files.trash"), {writes, {file}, files::trash}},
        {QStringLiteral("drive.files.untrash"), {writes, {file}, files::untrash}},
        {QStringLiteral("drive.files.update"), {writes, {file}, files::update, true}},
        {QStringLiteral("drive.files.watch"), {writes, {file, body}, files::watch}},
        {QStringLiteral("drive.children.delete"), {writes, {folder, child}, children::remove}},
        {QStringLiteral("drive.children.get"), {reads, {folder, child}, children::get}},
        {QStringLiteral("drive.children.insert"), {writes, {folder, body}, children::insert}},
        {QStringLiteral("drive.children.list"), {reads, {folder}, children::list}},
        {QStringLiteral("drive.parents.delete"), {writes, {file, parent}, parents::remove}},
        {QStringLiteral("drive.parents.get"), {reads, {file, parent}, parents::get}},
        {QStringLiteral("drive.parents.insert"), {writes, {file, body}, parents::insert}},
        {QStringLiteral("drive.parents.list"), {reads, {file}, parents::list}},
    };
}

MethodTable driveMethods() {
    return {
        {QStringLiteral("drive.about.get"), {reads, {}, about::get}},
        {QStringLiteral("drive.apps.get"), {reads, {QStringLiteral("appId")}, apps::get}},
        {QStringLiteral("drive.apps.list"), {reads, {}, apps::list}},
        {QStringLiteral("drive.changes.get"), {reads, {QStringLiteral("changeId")}, changes::get}},
        {QStringLiteral("drive.changes.getStartPageToken"), {reads, {}, changes::getStartPageToken}},
        {QStringLiteral("drive.changes.list"), {reads, {}, changes::list}},
        {QStringLiteral("drive.changes.watch"), {writes, {body}, changes::watch}},
        {QStringLiteral("drive.channels.stop"), {writes, {body}, channels::stop}},
        {QStringLiteral("drive.realtime.get"), {reads, {file}, realtime::get}},
        {QStringLiteral("drive.realtime.update"), {writes, {file}, realtime::update, true}},
    };
}

MethodTable attachmentMethods() {
    return {
        {QStringLiteral("drive.comments.delete"), {writes, {file, comment}, comments::remove}},
        {QStringLiteral("drive.comments.get"), {reads, {file, comment}, comments::get}},
        {QStringLiteral("drive.comments.insert"), {writes, {file, body}, comments::insert}},
        {QStringLiteral("drive.comments.list"), {reads, {file}, comments::list}},
        {QStringLiteral("drive.comments.patch"), {writes, {file, comment, body}, comments::update}},
        {QStringLiteral("drive.comments.update"), {writes, {file, comment, body}, comments::update}},
        {QStringLiteral("drive.permissions.delete"), {writes, {file, permission}, permissions::remove}},
        {QStringLiteral("drive.permissions.get"), {reads, {file, permission}, permissions::get}},
        {QStringLiteral("drive.permissions.getIdForEmail"),
         {reads, {QStringLiteral("email")}, permissions::getIdForEmail}},
        {QStringLiteral("drive.permissions.insert"), {writes, {file, body}, permissions::insert}},
        {QStringLiteral("drive.permissions.list"), {reads, {file}, permissions::list}},
        {QStringLiteral("drive.permissions.patch"), {writes, {file, permission, body}, permissions::update}},
        {QStringLiteral("drive.permissions.update"), {writes, {file, permission, body}, permissions::update}},
        {QStringLiteral("drive.properties.delete"), {writes, {file, property}, properties::remove}},
        {QStringLiteral("drive.properties.get"), {reads, {file, property}, properties::get}},
        {QStringLiteral("drive.properties.insert"), {writes, {file, body}, properties::insert}},
        {QStringLiteral("drive.properties.list"), {reads, {file}, properties::list}},
        {QStringLiteral("drive.properties.patch"), {writes, {file, property, body}, properties::update}},
        {QStringLiteral("drive.properties.update"), {writes, {file, property, body}, properties::update}},
        {QStringLiteral("drive.replies.delete"), {writes, {file, comment, reply}, replies::remove}},
        {QStringLiteral("drive.replies.get"), {reads, {file, comment, reply}, replies::get}},
        {QStringLiteral("drive.replies.insert"), {writes, {file, comment, body}, replies::insert}},
        {QStringLiteral("drive.replies.list"), {reads, {file, comment}, replies::list}},
        {QStringLiteral("drive.replies.patch"), {writes, {file, comment, reply, body}, replies::update}},
        {QStringLiteral("drive.replies.update"), {writes, {file, comment, reply, body}, replies::update}},
        {QStringLiteral("drive.revisions.delete"), {writes, {file, revision}, revisions::remove}},
        {QStringLiteral("drive.revisions.get"), {reads, {file, revision}, revisions::get}},
        {QStringLiteral("drive.revisions.list"), {reads, {file}, revisions::list}},
        {QStringLiteral("drive.revisions.patch"), {writes, {file, revision, body}, revisions::update}},
        {QStringLiteral("drive.revisions.update"), {writes, {file, revision, body}, revisions::update}},
    };
}

const MethodTable& methods() {
    static const MethodTable table = [] {
        MethodTable all = fileMethods();
        all.merge(driveMethods());
        all.merge(attachmentMethods());
        return all;
    }();
    return table;
}

const Method* findMethod(const QString& name) {
    const auto found = methods().find(name);
    return found == methods().end() ? nullptr : &found->second;
}

// Reading a file is a mutation when the call also marks it as viewed.
Session::Kind kindOf(const Method& method, const Parameters& params) {
    return method.handler == files::get && params.flag("updateViewedDate", false) ? writes : method.kind;
}

Result<QJsonObject> execute(DriveStore& store, const Method& method, const Parameters& params, const FieldMask& mask,
                            const CallContext& context) {
    Work work(store, context, kindOf(method, params));
    Result<QJsonObject> result = method.handler(work, params);
    // A failed database explains a strange result, not the other way round.
    if (const MaybeError& failure = work.session().failure())
        return *failure;
    if (!result)
        return result;
    result = mask.apply(result.value());
    if (context.beforeCommit)
        context.beforeCommit(work.session(), result.value());
    if (const Result<void> committed = work.commit(); !committed)
        return committed.error();
    return result;
}

Result<QJsonObject> checkedCall(DriveStore& store, const QString& name, const QJsonObject& given,
                                const CallContext& context) {
    const Method* method = findMethod(name);
    if (!method)
        return apiError::methodNotFound(name);
    if (context.media && !method->takesMedia)
        return apiError::invalid(QStringLiteral("media"), QStringLiteral("%1 takes no content.").arg(name));
    const Parameters params(given, context.media, context.mediaType);
    if (const MaybeError wrong = params.check(method->required))
        return *wrong;
    const Result<FieldMask> mask = FieldMask::parse(params.text("fields"));
    if (!mask)
        return mask.error();
    return execute(store, *method, params, mask.value(), context);
}

} // namespace

QJsonObject RpcMethods::call(const QString& method, const QJsonObject& params, const CallContext& context) const {
    const Result<QJsonObject> result = checkedCall(store_, method, params, context);
    if (result)
        return {{QStringLiteral("result"), result.value()}};
    if (result.error().domain() != apiErrorDomain)
        qCWarning(log).noquote() << method << "failed:" << result.error().description();
    return {{QStringLiteral("error"), toRpcError(result.error())}};
}

Result<void> RpcMethods::checkAnnounced(const QString& method, const QJsonObject& params, qint64 bytes) const {
    Session session(store_.database(), reads);
    const Method* found = findMethod(method);
    if (found && found->handler == files::insert)
        if (const MaybeError refused = checkChosenId(session, params[body].toObject()))
            return *refused;
    const auto replaced = FileRecord::find(session, params[file].toString());
    const qint64 more = replaced ? bytes - replaced->size : bytes;
    const MaybeError full = checkQuota(session, store_.settings().quotaBytesTotal, more);
    if (session.failure())
        return *session.failure();
    return full ? Result<void>(*full) : Result<void>();
}

bool RpcMethods::takesMedia(const QString& method) {
    const Method* found = findMethod(method);
    return found && found->takesMedia;
}

QStringList RpcMethods::names() {
    QStringList names;
    for (const auto& [name, method] : methods())
        names.append(name);
    return names;
}

} // namespace quenby::localdrive
