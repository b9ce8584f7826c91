#include "localdrive/store/Changes.h"

#include "localdrive/store/Access.h"
#include "localdrive/store/ApiError.h"
#include "localdrive/store/ChangeLog.h"
#include "localdrive/store/FileResource.h"
#include "localdrive/store/Identifiers.h"
#include "localdrive/store/Links.h"
#include "localdrive/store/PageToken.h"
#include "localdrive/store/Text.h"

#include <QJsonArray>

namespace quenby::localdrive::changes {
namespace {

constexpr PageLimits pageLimits{100, 1000};

// Columns: id, file, deleted or not to be seen any more, date. The first value is the caller's permission id.
const QString& selectChanges() {
    static const QString sql =
        QStringLiteral("SELECT c.id, c.file_id, c.deleted OR p.id IS NULL, c.modified FROM changes c "
                       "LEFT JOIN permissions p ON p.file_id = c.file_id AND p.id = ? ");
    return sql;
}

// The list that tokens for the changes to come belong to.
const QString anyFilter = QStringLiteral("changes from now on");

QString startPageToken(Work& work) {
    return pageToken(work.store().pageTokenKey(), anyFilter, largestChangeId(work.session()));
}

QJsonObject changeResource(Work& work, const Row& row) {
    const QString id = row[0].toString();
    const QString fileId = row[1].toString();
    const bool deleted = row[2].toBool();
    QJsonObject resource{{QStringLiteral("kind"), QStringLiteral("drive#change")},
                         {QStringLiteral("etag"), entityTag(id.toLatin1() + fileId.toLatin1() + (deleted ? "d" : "-"))},
                         {QStringLiteral("fileId"), fileId},
                         {QStringLiteral("deleted"), deleted},
                         {QStringLiteral("modificationDate"), dateText(row[3])}};
    if (work.store().offersChangeIds()) {
        resource.insert(QStringLiteral("id"), id);
        resource.insert(QStringLiteral("selfLink"), links::api(work.caller().base, {QStringLiteral("changes"), id}));
    }
    if (!deleted)
        if (const std::optional<FileRecord> file = FileRecord::find(work.session(), fileId))
            resource.insert(QStringLiteral("file"), fileResource(work, *file));
    return resource;
}

bool isOwnFile(Work& work, const QString& fileId) {
    const std::optional<FileRecord> file = FileRecord::find(work.session(), fileId);
    return file && isShownTo(work, *file);
}

} // namespace

MaybeError checkStartChangeId(Work& work, const Parameters& params) {
    if (work.store().offersChangeIds() || !params.has("startChangeId"))
        return std::nullopt;
    return apiError::invalid(QStringLiteral("startChangeId"),
                             QStringLiteral("Changes have no numeric ids any more: use a start page token."));
}

Result<QJsonObject> list(Work& work, const Parameters& params) {
    const bool includeDeleted = params.flag("includeDeleted", true);
    const bool includeSubscribed = params.flag("includeSubscribed", true);
    if (const MaybeError refused = checkStartChangeId(work, params))
        return *refused;
    const qint64 start = params.number("startChangeId").value_or(0);
    if (start < 0)
        return apiError::invalid(QStringLiteral("startChangeId"),
                                 QStringLiteral("startChangeId must not be negative."));
    const QString name = QStringLiteral("changes %1 %2").arg(includeDeleted).arg(includeSubscribed);
    const Result<PageRequest> page = pageRequest(work, params, name, pageLimits, anyFilter);
    if (!page)
        return page.error();

    const qint64 first = page->after ? *page->after + 1 : start;
    const CallingProgram& program = work.caller().program;
    QList<Row> rows = work.session().rows(
        selectChanges() + QStringLiteral("WHERE c.id >= ? AND (? OR NOT (c.deleted OR p.id IS NULL)) "
                                         "AND (? OR c.deleted OR p.role = ? "
                                         "OR EXISTS(SELECT 1 FROM parents WHERE file_id = c.file_id)) "
                                         "AND (? OR EXISTS(SELECT 1 FROM files "
                                         "WHERE id = c.file_id AND made_with = ?)) "
                                         "ORDER BY c.id LIMIT ?"),
        {work.caller().user.permissionId(), first, includeDeleted, includeSubscribed, static_cast<int>(Role::owner),
         !program.seesOwnFilesOnly, program.clientId, page->limit + 1});
    const std::optional<qint64> last = cutPage(rows, page.value());
    QJsonArray items;
    for (const Row& row : std::as_const(rows))
        items.append(changeResource(work, row));
    QJsonObject list =
        listResource(work, QStringLiteral("drive#changeList"),
                     links::api(work.caller().base, {QStringLiteral("changes")}), items, page.value(), last);
    if (work.store().offersChangeIds())
        list.insert(QStringLiteral("largestChangeId"), int64(largestChangeId(work.session())));
    if (!last)
        list.insert(QStringLiteral("newStartPageToken"), startPageToken(work));
    return list;
}

Result<QJsonObject> getStartPageToken(Work& work, const Parameters&) {
    return QJsonObject{{QStringLiteral("kind"), QStringLiteral("drive#startPageToken")},
                       {QStringLiteral("startPageToken"), startPageToken(work)}};
}

Result<QJsonObject> get(Work& work, const Parameters& params) {
    const CallingProgram& program = work.caller().program;
    const QString id = params.text("changeId");
    const Row row = work.session().row(selectChanges() + QStringLiteral("WHERE c.id = ?"),
                                       {work.caller().user.permissionId(), id.toLongLong()});
    const bool isKnown = !row.isEmpty() && work.store().offersChangeIds();
    if (!isKnown || (program.seesOwnFilesOnly && !isOwnFile(work, row[1].toString())))
        return apiError::notFound(QStringLiteral("Change"), id);
    return changeResource(work, row);
}

} // namespace quenby::localdrive::changes
