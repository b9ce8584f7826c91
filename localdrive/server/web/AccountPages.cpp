#include "localdrive/server/web/AccountPages.h"

#include "localdrive/server/web/FileTexts.h"
#include "localdrive/store/Files.h"
#include "localdrive/store/Links.h"

#include <algorithm>

namespace quenby::localdrive {
namespace {

using httplib::Request;
using httplib::Response;

constexpr int shownFiles = 25;
constexpr qint64 barWidth = 1000;

struct Share {
    QString name; // as typeIcon() has it, or "trash" and the like
    QString title;
    qint64 bytes = 0;
};

// What takes room, by kind; the trash is one of them, and so is what other people keep in the same Drive.
QList<Share> shares(Session& session, const Caller& caller) {
    QList<Share> all{{QStringLiteral("image"), QStringLiteral("Pictures")},
                     {QStringLiteral("video"), QStringLiteral("Videos")},
                     {QStringLiteral("audio"), QStringLiteral("Sound")},
                     {QStringLiteral("document"), QStringLiteral("Documents")},
                     {QStringLiteral("archive"), QStringLiteral("Archives")},
                     {QStringLiteral("other"), QStringLiteral("Other files")},
                     {QStringLiteral("trash"), QStringLiteral("Trash")},
                     {QStringLiteral("people"), QStringLiteral("Files of others")}};
    static const QStringList documents{QStringLiteral("pdf"), QStringLiteral("text"), QStringLiteral("spreadsheet"),
                                       QStringLiteral("presentation"), QStringLiteral("drawing")};
    const auto shareOf = [&all](const QString& icon) -> Share& {
        const QString name = documents.contains(icon) ? QStringLiteral("document") : icon;
        const auto named = [](const QString& wanted) {
            return [wanted](const Share& share) { return share.name == wanted; };
        };
        const auto found = std::find_if(all.begin(), all.end(), named(name));
        return found == all.end() ? *std::find_if(all.begin(), all.end(), named(QStringLiteral("other"))) : *found;
    };
    const QList<Row> rows = session.rows(
        QStringLiteral("SELECT f.mime_type, f.trashed, IFNULL(p.role = ?, 0), TOTAL(f.quota_used) FROM files f "
                       "LEFT JOIN permissions p ON p.file_id = f.id AND p.id = ? GROUP BY 1, 2, 3"),
        {static_cast<int>(Role::owner), caller.user.permissionId()});
    for (const Row& row : rows) {
        const QString name = !row[2].toBool()  ? QStringLiteral("people")
                             : row[1].toBool() ? QStringLiteral("trash")
                                               : typeIcon(row[0].toString());
        shareOf(name).bytes += row[3].toLongLong();
    }
    all.removeIf([](const Share& share) { return share.bytes == 0; });
    std::stable_sort(all.begin(), all.end(), [](const Share& a, const Share& b) { return a.bytes > b.bytes; });
    return all;
}

} // namespace

void AccountPages::addRoutes(HttpServer& server) {
    server.Get("/www/settings/storage", [this](const Request& request, Response& response) {
        const auto fill = [this](Work& work, PageTemplates::Values& values) -> Result<QString> {
            return storage(work, values);
        };
        frame_.answer(QStringLiteral("storage"), fill, request, response);
    });
    server.Get("/drive/app", [this](const Request& request, Response& response) {
        const auto fill = [this](Work&, PageTemplates::Values& values) -> Result<QString> {
            return frame_.pages().fill(QStringLiteral("app"), values);
        };
        frame_.answer(QStringLiteral("app"), fill, request, response);
    });
}

QString AccountPages::storage(Work& work, PageTemplates::Values& values) const {
    const PageTemplates& pages = frame_.pages();
    const qint64 total = std::max<qint64>(work.store().settings().quotaBytesTotal, 1);
    const qint64 used = quotaUsed(work.session());
    QString bars;
    QString legend;
    qint64 from = 0;
    for (const Share& share : shares(work.session(), work.caller())) {
        // A Drive that is hardly used would show nothing but its emptiness: then the bar is of what is used.
        const qint64 whole = used < total / 50 ? std::max<qint64>(used, 1) : total;
        const qint64 width = std::max<qint64>(
            4, static_cast<qint64>(static_cast<double>(share.bytes) / static_cast<double>(whole) * barWidth));
        const PageTemplates::Values texts{{QStringLiteral("name"), share.name},
                                          {QStringLiteral("title"), share.title},
                                          {QStringLiteral("from"), QString::number(from)},
                                          {QStringLiteral("width"), QString::number(width)},
                                          {QStringLiteral("bytes"), bytesText(share.bytes)}};
        bars += pages.fill(QStringLiteral("storagebar"), texts);
        legend += pages.fill(QStringLiteral("storagekind"), texts);
        from += width;
    }
    QString files;
    for (const FileRecord& file : FileBrowser(work).largest(shownFiles)) {
        files += pages.fill(
            QStringLiteral("storagefile"),
            {{QStringLiteral("title"), file.title},
             {QStringLiteral("link"), links::page(QUrl(), file)},
             {QStringLiteral("icon"), pages.assetLink(QStringLiteral("icons/%1.svg").arg(typeIcon(file.mimeType)))},
             {QStringLiteral("where"), file.trashed ? QStringLiteral("in the trash") : typeText(file.mimeType)},
             {QStringLiteral("size"), bytesText(file.quotaUsed)}});
    }
    values.insert(QStringLiteral("free"), bytesText(std::max<qint64>(0, total - used)));
    values.insert(QStringLiteral("bars"), bars);
    values.insert(QStringLiteral("legend"), legend);
    values.insert(QStringLiteral("files"), files);
    return pages.fill(QStringLiteral("storage"), values);
}

} // namespace quenby::localdrive
