#include "localdrive/server/activity/ActivityActs.h"

#include "localdrive/store/ApiError.h"
#include "localdrive/store/FileLists.h"
#include "localdrive/store/Files.h"
#include "localdrive/store/Permissions.h"
#include "localdrive/store/Text.h"

#include <QJsonArray>

#include <algorithm>

namespace quenby::localdrive {
namespace {

const QString partName = QStringLiteral("activity");
const QString propertyKey = QStringLiteral("activity"); // marks files of ours; its value is the editor's address
const QString fileIdKey = QStringLiteral("fileId");
const QString resourceKey = QStringLiteral("resource");

QString editorOf(const QJsonObject& file) {
    for (const QJsonValue property : file[QLatin1String("properties")].toArray()) {
        if (property[QLatin1String("key")].toString() == propertyKey)
            return property[QLatin1String("value")].toString();
    }
    return {};
}

QJsonObject markFor(const Account& editor) {
    return {{QStringLiteral("key"), propertyKey}, {QStringLiteral("value"), editor.emailAddress}};
}

QString idOf(const QJsonObject& file) { return file[QLatin1String("id")].toString(); }

Parameters forFile(const ActivityFile& file) { return Parameters({{fileIdKey, file.id}}); }

Result<void> outcome(const Result<QJsonObject>& result) { return result ? Result<void>() : result.error(); }

} // namespace

ActivityActs::ActivityActs(DriveStore& store, const ServerClock& clock, QUrl base)
    : store_(store)
    , clock_(clock)
    , base_(std::move(base)) {}

Result<QJsonObject> ActivityActs::perform(const Account& person, Session::Kind kind, const Act& act) {
    const Caller caller{person, base_, clock_.now()};
    Work work(store_, caller, kind);
    Result<QJsonObject> result = act(work);
    if (work.session().failure())
        return *work.session().failure();
    if (!result)
        return result;
    const Result<void> committed = work.commit();
    return committed ? result : committed.error();
}

Result<std::optional<StagedBlob>> ActivityActs::stage(const QByteArray& content) {
    if (content.isNull())
        return std::optional<StagedBlob>();
    store_.blobs().discardIncoming(partName); // of an act that failed
    const Result<std::unique_ptr<IncomingBlob>> part = store_.blobs().incoming(partName);
    if (!part)
        return part.error();
    if (const Result<void> written = part.value()->append(0, content); !written)
        return written.error();
    const Result<StagedBlob> staged = part.value()->finish();
    return staged ? Result(std::optional(*staged)) : staged.error();
}

Result<bool> ActivityActs::isDriveEmpty() {
    const auto list = perform(store_.settings().account, Session::Kind::read, [](Work& work) {
        return files::list(work, Parameters({{QStringLiteral("maxResults"), 1}}));
    });
    return list ? Result(list->value(QLatin1String("items")).toArray().isEmpty()) : list.error();
}

Result<QList<ActivityFile>> ActivityActs::filesOf(const Account& person) {
    const auto list = perform(person, Session::Kind::read, [](Work& work) {
        return files::list(work, Parameters({{QStringLiteral("maxResults"), 1000}}));
    });
    if (!list)
        return list.error();
    QList<ActivityFile> found;
    for (const QJsonValue item : list->value(QLatin1String("items")).toArray()) {
        const QJsonObject file = item.toObject();
        if (editorOf(file) != person.emailAddress)
            continue;
        found.prepend({idOf(file), file[QLatin1String("title")].toString(), file[QLatin1String("mimeType")].toString(),
                       person, file[QLatin1String("owners")][0][QLatin1String("emailAddress")] == person.emailAddress,
                       file[QLatin1String("labels")][QLatin1String("trashed")].toBool()});
    }
    return found;
}

// In one transaction: a file that is not shared yet would look like a deleted one to the other person.
Result<QJsonObject> ActivityActs::insert(const InventedFile& file, const Account& owner, const Account& guest,
                                         QJsonObject resource) {
    const Result<std::optional<StagedBlob>> media = stage(file.content);
    if (!media)
        return media.error();
    resource.insert(QStringLiteral("title"), file.title);
    resource.insert(QStringLiteral("mimeType"), file.mimeType);
    return perform(owner, Session::Kind::write, [&](Work& work) -> Result<QJsonObject> {
        Result<QJsonObject> made = files::insert(work, Parameters({{resourceKey, resource}}, *media, file.mimeType));
        if (!made)
            return made;
        const QJsonObject permission{{QStringLiteral("role"), QStringLiteral("writer")},
                                     {QStringLiteral("type"), QStringLiteral("user")},
                                     {QStringLiteral("value"), guest.emailAddress}};
        const Result<QJsonObject> shared =
            permissions::insert(work, Parameters({{fileIdKey, idOf(*made)}, {resourceKey, permission}}));
        return shared ? made : shared;
    });
}

Result<ActivityFile> ActivityActs::add(const InventedFile& file, const Account& person) {
    // The root folder is the Drive owner's: others' files lie in none.
    const auto made = insert(
        file, person, store_.settings().account,
        {{QStringLiteral("parents"), QJsonArray()}, {QStringLiteral("properties"), QJsonArray{markFor(person)}}});
    if (!made)
        return made.error();
    return ActivityFile{idOf(*made), file.title, file.mimeType, person, true, false};
}

Result<ActivityFile> ActivityActs::addToStart(const InventedFile& file, const Account& editor, const QString& folderId,
                                              const QDateTime& when) {
    const auto made = insert(file, store_.settings().account, editor,
                             {{QStringLiteral("parents"), QJsonArray{QJsonObject{{QStringLiteral("id"), folderId}}}},
                              {QStringLiteral("properties"), QJsonArray{markFor(editor)}},
                              {QStringLiteral("createdDate"), dateText(when)},
                              {QStringLiteral("modifiedDate"), dateText(when)}});
    if (!made)
        return made.error();
    return ActivityFile{idOf(*made), file.title, file.mimeType, editor, false, false};
}

Result<void> ActivityActs::edit(const ActivityFile& file, const QByteArray& content) {
    const Result<std::optional<StagedBlob>> media = stage(content);
    if (!media)
        return media.error();
    return outcome(perform(file.editor, Session::Kind::write, [&](Work& work) -> Result<QJsonObject> {
        const Result<QJsonObject> now = files::get(work, forFile(file));
        if (!now)
            return now;
        if (now->value(QLatin1String("labels"))[QLatin1String("trashed")].toBool())
            return apiError::forbidden(QStringLiteral("Nobody edits what is in the trash."));
        if (!*media)
            return files::touch(work, forFile(file));
        // The revision before is forgotten: nobody will miss it, and there may be thousands.
        return files::update(work, Parameters({{fileIdKey, file.id},
                                               {QStringLiteral("newRevision"), false},
                                               {QStringLiteral("updateViewedDate"), false}},
                                              *media, file.mimeType));
    }));
}

Result<void> ActivityActs::setTrashed(ActivityFile& file, bool isTrashed) {
    const auto done = perform(file.editor, Session::Kind::write, [&](Work& work) {
        return isTrashed ? files::trash(work, forFile(file)) : files::untrash(work, forFile(file));
    });
    if (done)
        file.isTrashed = isTrashed;
    return outcome(done);
}

Result<void> ActivityActs::remove(const ActivityFile& file) {
    return outcome(
        perform(file.editor, Session::Kind::write, [&](Work& work) { return files::remove(work, forFile(file)); }));
}

} // namespace quenby::localdrive
