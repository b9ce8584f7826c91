#include "localdrive/server/web/ListPages.h"

#include "localdrive/server/web/FileRows.h"
#include "localdrive/store/ApiError.h"
#include "localdrive/store/Links.h"

#include <QUrlQuery>

#include <algorithm>

namespace quenby::localdrive {
namespace {

using httplib::Request;
using httplib::Response;

constexpr qint64 usualCount = 200;
constexpr qint64 largestCount = 5000;
constexpr qsizetype longestChoice = 16;

// What a list is called, and what it says while nothing is in it.
struct PlaceTexts {
    QString name; // in data-place, and of the part of the page for the empty list
    QString navigation;
    QString title;
    QString emptyHeading;
    QString emptyText;
};

PlaceTexts textsOf(Place place) {
    switch (place) {
    case Place::recent:
        return {QStringLiteral("recent"), QStringLiteral("recent"), QStringLiteral("Recent"),
                QStringLiteral("Nothing happened yet"), QStringLiteral("Files that you or others change appear here.")};
    case Place::shared:
        return {QStringLiteral("shared"), QStringLiteral("shared"), QStringLiteral("Shared with me"),
                QStringLiteral("Nothing is shared with you"),
                QStringLiteral("Files and folders that others let you see appear here.")};
    case Place::trash:
        return {QStringLiteral("trash"), QStringLiteral("trash"), QStringLiteral("Trash"),
                QStringLiteral("The trash is empty"), QStringLiteral("What you put there can be restored.")};
    case Place::search:
        return {QStringLiteral("search"), QString(), QStringLiteral("Search results"),
                QStringLiteral("Nothing was found"), QStringLiteral("Try other words, or fewer.")};
    case Place::folder:
        break;
    }
    return {QStringLiteral("folder"), QStringLiteral("home"), QStringLiteral("My Drive"),
            QStringLiteral("Nothing is here yet"), QStringLiteral("Drop files onto this page, or use “New”.")};
}

// What the visitor chose is remembered by the browser: in the address now, in a cookie the next time.
QString choice(const Request& request, Response& response, const char* name) {
    const QByteArray cookieName = QByteArray("quenby_") + name;
    if (!request.has_param(name))
        return QString::fromLatin1(cookie(request, cookieName));
    QString chosen = parameter(request, name);
    const QByteArray whole = cookieName + '=' + QUrl::toPercentEncoding(chosen.left(longestChoice)) +
                             "; Path=/; Max-Age=31536000; SameSite=Lax";
    response.headers.emplace("Set-Cookie", whole.toStdString());
    return chosen;
}

qint64 number(const Request& request, const char* name, qint64 usual, qint64 largest) {
    bool isNumber = false;
    const qint64 asked = parameter(request, name).toLongLong(&isNumber);
    return isNumber ? std::clamp<qint64>(asked, 0, largest) : usual;
}

// This list's address with something else chosen.
QString addressWith(const Request& request, const QString& key, const QString& value) {
    QUrlQuery query;
    if (request.has_param("q"))
        query.addQueryItem(QStringLiteral("q"), QString::fromLatin1(QUrl::toPercentEncoding(parameter(request, "q"))));
    query.addQueryItem(key, value);
    return QLatin1Char('?') + query.toString(QUrl::FullyEncoded);
}

// The head of a column: pressed once it sorts, pressed again the other way round.
void addSorting(PageTemplates::Values& values, SortOrder order, bool canChange, const Request& request) {
    struct Column {
        SortOrder::By by;
        QString name;
        bool startsDescending; // the newest and the largest are what people look for
    };
    for (const Column& column : {Column{SortOrder::By::name, QStringLiteral("name"), false},
                                 Column{SortOrder::By::modified, QStringLiteral("modified"), true},
                                 Column{SortOrder::By::size, QStringLiteral("size"), true}}) {
        const bool isCurrent = order.by == column.by;
        const SortOrder next{column.by, isCurrent ? !order.descending : column.startsDescending};
        if (canChange) {
            const QString link = addressWith(request, QStringLiteral("sort"), next.toText());
            values.insert(QStringLiteral("sort_") + column.name,
                          QStringLiteral("href=\"%1\"").arg(link.toHtmlEscaped()));
        }
        const QString state = order.descending ? QStringLiteral("descending") : QStringLiteral("ascending");
        values.insert(QStringLiteral("order_") + column.name, isCurrent ? state : QStringLiteral("none"));
    }
}

} // namespace

void ListPages::addRoutes(HttpServer& server) {
    server.Get("/", [this](const Request& request, Response& response) {
        showFolder(store_.rootFolderId(), request, response);
    });
    server.Get("/drive/folders/([^/]+)", [this](const Request& request, Response& response) {
        showFolder(pathPart(request, 1), request, response);
    });
    const std::pair<const char*, Place> places[] = {{"/drive/recent", Place::recent},
                                                    {"/drive/shared", Place::shared},
                                                    {"/drive/trash", Place::trash},
                                                    {"/drive/search", Place::search}};
    for (const auto& [path, place] : places)
        server.Get(path, [this, place = place](const Request& request, Response& response) {
            show(place, request, response);
        });
}

void ListPages::showFolder(const QString& folderId, const Request& request, Response& response) const {
    QString elsewhere; // where a file is shown that is no folder
    const auto fill = [&](Work& work, PageTemplates::Values& values) -> Result<QString> {
        const QString id = resolvedId(work, folderId);
        ListRequest list{Place::folder, id};
        QString title = textsOf(Place::folder).title;
        if (id != store_.rootFolderId()) {
            const Result<FileRecord> folder = findFile(work, id);
            if (!folder)
                return folder.error();
            if (!folder->isFolder())
                elsewhere = links::page(QUrl(), *folder);
            title = folder->title;
            list.isInTrash = folder->trashed;
            values.insert(QStringLiteral("notice"),
                          folder->trashed ? frame_.pages().fill(QStringLiteral("trashed"), {}) : QString());
        }
        values.insert(QStringLiteral("title"), title);
        values.insert(QStringLiteral("folder"), id);
        values.insert(QStringLiteral("crumbs"), breadcrumbs(work, id));
        return page(list, work, values, request, response);
    };
    frame_.answer(QStringLiteral("home"), fill, request, response);
    if (!elsewhere.isEmpty())
        response.set_redirect(elsewhere.toStdString());
}

void ListPages::show(Place place, const Request& request, Response& response) const {
    const PlaceTexts texts = textsOf(place);
    const auto fill = [&](Work& work, PageTemplates::Values& values) -> Result<QString> {
        ListRequest list{place};
        if (place == Place::search) {
            list.text = parameter(request, "q");
            values.insert(QStringLiteral("q"), list.text);
        }
        values.insert(QStringLiteral("title"), texts.title);
        values.insert(QStringLiteral("crumbs"),
                      frame_.pages().fill(QStringLiteral("crumbhere"), {{QStringLiteral("title"), texts.title}}));
        return page(list, work, values, request, response);
    };
    frame_.answer(texts.navigation, fill, request, response);
}

QString ListPages::page(ListRequest list, Work& work, PageTemplates::Values values, const Request& request,
                        Response& response) const {
    const PageTemplates& pages = frame_.pages();
    const PlaceTexts texts = textsOf(list.place);
    list.order = SortOrder::parse(choice(request, response, "sort"));
    list.from = number(request, "from", 0, std::numeric_limits<qint32>::max());
    list.count = std::max<qint64>(1, number(request, "count", usualCount, largestCount));
    const bool isGrid = choice(request, response, "view") == QLatin1String("grid");
    const FileList found = FileBrowser(work).list(list);

    const bool isRecent = list.place == Place::recent;
    addSorting(values, isRecent ? SortOrder{SortOrder::By::modified, true} : list.order, !isRecent, request);
    const QString next = QString::number(list.from + found.files.size());
    values.insert(QStringLiteral("place"), texts.name);
    values.insert(QStringLiteral("view"), isGrid ? QStringLiteral("grid") : QStringLiteral("list"));
    values.insert(isGrid ? QStringLiteral("now_grid") : QStringLiteral("now_list"),
                  QStringLiteral("aria-current=\"true\""));
    values.insert(QStringLiteral("to_list"), addressWith(request, QStringLiteral("view"), QStringLiteral("list")));
    values.insert(QStringLiteral("to_grid"), addressWith(request, QStringLiteral("view"), QStringLiteral("grid")));
    values.insert(QStringLiteral("rows"), rowsOf(found.files, pages, work.caller().now));
    if (found.hasMore) {
        values.insert(QStringLiteral("more"),
                      pages.fill(QStringLiteral("more"),
                                 {{QStringLiteral("link"), addressWith(request, QStringLiteral("from"), next)}}));
    }
    if (found.files.isEmpty()) {
        const QString icon =
            QStringLiteral("#s-") + (list.place == Place::folder ? QStringLiteral("drop") : texts.name);
        values.insert(QStringLiteral("empty"),
                      pages.fill(QStringLiteral("empty"), {{QStringLiteral("symbol"), icon},
                                                           {QStringLiteral("heading"), texts.emptyHeading},
                                                           {QStringLiteral("text"), texts.emptyText}}));
    }
    if (list.place == Place::trash)
        values.insert(QStringLiteral("placeactions"), pages.fill(QStringLiteral("emptytrash"), {}));
    return pages.fill(QStringLiteral("drive"), values);
}

QString ListPages::breadcrumbs(Work& work, const QString& folderId) const {
    const PageTemplates& pages = frame_.pages();
    const QList<NamedFolder> way = FileBrowser(work).way(folderId);
    QString crumbs;
    if (!way.isEmpty() && way.first().id != store_.rootFolderId()) {
        crumbs += pages.fill(QStringLiteral("crumb"), {{QStringLiteral("link"), QStringLiteral("/drive/shared")},
                                                       {QStringLiteral("title"), QStringLiteral("Shared with me")}});
    }
    for (const NamedFolder& folder : way) {
        const bool isRoot = folder.id == store_.rootFolderId();
        const QString link = isRoot ? QStringLiteral("/") : QStringLiteral("/drive/folders/") + folder.id;
        crumbs += pages.fill(folder.id == folderId ? QStringLiteral("crumbhere") : QStringLiteral("crumb"),
                             {{QStringLiteral("link"), link},
                              {QStringLiteral("id"), folder.id},
                              {QStringLiteral("title"), folder.title}});
    }
    return crumbs;
}

} // namespace quenby::localdrive
