#include "localdrive/store/FileLists.h"

#include "localdrive/search/SearchSql.h"
#include "localdrive/store/Access.h"
#include "localdrive/store/FileResource.h"
#include "localdrive/store/Links.h"
#include "localdrive/store/PageToken.h"
#include "localdrive/store/References.h"

#include <QJsonArray>

namespace quenby::localdrive {
namespace {

constexpr PageLimits pageLimits{100, 1000};

struct FilePage {
    QList<FileRecord> files;
    std::optional<qint64> last; // position of the last file when more follow
};

// The files of the page that the caller may see and that meet the condition.
FilePage selectPage(Work& work, const SearchCondition& condition, const PageRequest& page) {
    const CallingProgram& program = work.caller().program;
    const QString sql = FileRecord::select() +
                        QStringLiteral("WHERE f.seq < ? AND f.id <> ? AND EXISTS(SELECT 1 FROM permissions "
                                       "WHERE file_id = f.id AND id = ?) AND (? OR f.made_with = ?) AND ") +
                        condition.sql + QStringLiteral(" ORDER BY f.seq DESC LIMIT ?");
    QVariantList values{page.after.value_or(std::numeric_limits<qint64>::max()), work.store().rootFolderId(),
                        work.caller().user.permissionId(), !program.seesOwnFilesOnly, program.clientId};
    values += condition.values;
    values += page.limit + 1; // one more tells whether there is a next page

    QList<Row> rows = work.session().rows(sql, values);
    FilePage found;
    found.last = cutPage(rows, page);
    for (const Row& row : std::as_const(rows))
        found.files.append(FileRecord::fromRow(row));
    return found;
}

// The search of "q" as a condition of its own, in parentheses.
Result<SearchCondition> requestedCondition(Work& work, const Parameters& params) {
    const Result<std::unique_ptr<SearchNode>> search = parseSearch(params.text("q"));
    if (!search)
        return search.error();
    SearchCondition condition =
        searchCondition(*search.value(), {work.caller().user.emailAddress, work.store().rootFolderId()});
    condition.sql = QLatin1Char('(') + condition.sql + QLatin1Char(')');
    return condition;
}

QString withQuery(const QString& link, const QString& q) {
    return q.isEmpty() ? link : link + QStringLiteral("?q=") + QString::fromLatin1(QUrl::toPercentEncoding(q));
}

} // namespace

namespace files {

Result<QJsonObject> list(Work& work, const Parameters& params) {
    const QString q = params.text("q");
    const Result<PageRequest> page = pageRequest(work, params, QString(QStringLiteral("files\n") + q), pageLimits);
    if (!page)
        return page.error();
    const Result<SearchCondition> condition = requestedCondition(work, params);
    if (!condition)
        return condition.error();
    const FilePage found = selectPage(work, condition.value(), page.value());
    QJsonArray items;
    for (const FileRecord& file : found.files)
        items.append(fileResource(work, file));
    const QString selfLink = withQuery(links::api(work.caller().base, {QStringLiteral("files")}), q);
    return listResource(work, QStringLiteral("drive#fileList"), selfLink, items, page.value(), found.last);
}

} // namespace files

namespace children {

Result<QJsonObject> list(Work& work, const Parameters& params) {
    const Result<FileRecord> folder = findFile(work, params.text("folderId"));
    if (!folder)
        return folder.error();
    const QString q = params.text("q");
    const Result<PageRequest> page = pageRequest(
        work, params, QString(QStringLiteral("children\n") + folder->id + QLatin1Char('\n') + q), pageLimits);
    if (!page)
        return page.error();
    Result<SearchCondition> condition = requestedCondition(work, params);
    if (!condition)
        return condition.error();
    condition->sql += QStringLiteral(" AND f.id IN (SELECT file_id FROM parents WHERE parent_id = ?)");
    condition->values += folder->id;
    const FilePage found = selectPage(work, condition.value(), page.value());
    QJsonArray items;
    for (const FileRecord& file : found.files)
        items.append(childReference(work, folder->id, file.id));
    const QString selfLink =
        withQuery(links::api(work.caller().base, {QStringLiteral("files"), folder->id, QStringLiteral("children")}), q);
    return listResource(work, QStringLiteral("drive#childList"), selfLink, items, page.value(), found.last);
}

} // namespace children
} // namespace quenby::localdrive
