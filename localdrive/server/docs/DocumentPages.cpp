#include "localdrive/server/docs/DocumentPages.h"

#include "localdrive/server/docs/Export.h"
#include "localdrive/server/docs/TextExports.h"
#include "localdrive/server/share/ShareState.h"
#include "localdrive/store/Documents.h"

#include <QJsonArray>
#include <QJsonDocument>

namespace quenby::localdrive {
namespace {

using httplib::Request;
using httplib::Response;

constexpr qint64 printedOfText = 1024 * 1024;

struct KindWords {
    const char* noun;
    const char* application; // in page titles
};

KindWords wordsOf(const NativeKind& kind) {
    static const QHash<QString, KindWords> words{
        {QStringLiteral("document"), {"document", "Google Docs"}},
        {QStringLiteral("presentation"), {"presentation", "Google Docs"}},
        {QStringLiteral("spreadsheets"), {"spreadsheet", "Google Sheets"}},
        {QStringLiteral("drawings"), {"drawing", "Google Drawings"}},
        {QStringLiteral("forms"), {"form", "Google Forms"}},
    };
    return words[kind.path];
}

QString formatLabel(const QString& format) {
    static const QHash<QString, QString> labels{
        {QStringLiteral("docx"), QStringLiteral("Word document")},
        {QStringLiteral("odt"), QStringLiteral("OpenDocument text")},
        {QStringLiteral("txt"), QStringLiteral("Plain text")},
        {QStringLiteral("pdf"), QStringLiteral("PDF")},
        {QStringLiteral("zip"), QStringLiteral("Web page, zipped")},
        {QStringLiteral("xlsx"), QStringLiteral("Excel workbook")},
        {QStringLiteral("ods"), QStringLiteral("OpenDocument spreadsheet")},
        {QStringLiteral("csv"), QStringLiteral("Comma-separated values")},
        {QStringLiteral("tsv"), QStringLiteral("Tab-separated values")},
        {QStringLiteral("pptx"), QStringLiteral("PowerPoint presentation")},
        {QStringLiteral("png"), QStringLiteral("PNG picture")},
        {QStringLiteral("jpeg"), QStringLiteral("JPEG picture")},
        {QStringLiteral("svg"), QStringLiteral("SVG picture")},
    };
    return labels[format];
}

// Whether a person goes here on purpose: by a link of this computer's pages, or by typing the address. Browsers say
// which site makes them ask, what for, and when they only look ahead.
bool isOwnVisit(const Request& request) {
    const QByteArray site = header(request, "Sec-Fetch-Site");
    const bool isFromHere = site.isEmpty() || site == "none" || site == "same-origin" || site == "same-site";
    const QByteArray mode = header(request, "Sec-Fetch-Mode");
    const QByteArray target = header(request, "Sec-Fetch-Dest");
    const bool isPage = (mode.isEmpty() || mode == "navigate") && (target.isEmpty() || target == "document");
    const bool looksAhead =
        header(request, "Sec-Purpose").contains("prefetch") || header(request, "Purpose").contains("prefetch");
    return request.method == "GET" && isFromHere && isPage && !looksAhead;
}

QString iconLink(const PageTemplates& pages, const QString& mimeType) {
    return pages.assetLink(QStringLiteral("icons/%1.svg").arg(iconName(mimeType)));
}

QString createLink(const NativeKind& kind, const QString& folder) {
    return QStringLiteral("/docs/%1/create?usp=drive_web&folder=%2")
        .arg(kind.path, QString::fromLatin1(QUrl::toPercentEncoding(folder)));
}

QJsonArray parentList(const QString& folder) {
    return folder.isEmpty() ? QJsonArray() : QJsonArray{QJsonObject{{QStringLiteral("id"), folder}}};
}

QJsonObject stateOf(const documents::Document& document, const NativeKind& kind, const QString& suffix) {
    return {{QStringLiteral("id"), document.file.id},
            {QStringLiteral("kind"), kind.path},
            {QStringLiteral("title"), document.file.title},
            {QStringLiteral("suffix"), suffix},
            {QStringLiteral("revision"), document.revision},
            {QStringLiteral("content"), contentOf(document).toJson()},
            {QStringLiteral("canEdit"), document.role >= Role::writer},
            {QStringLiteral("canTrash"), document.role >= Role::owner},
            {QStringLiteral("trashed"), document.file.trashed}};
}

QString textPart(DriveStore& store, const Caller& caller, const QString& fileId) {
    const auto content = store.content(caller, fileId);
    return content ? QString::fromUtf8(content->file->read(printedOfText)) : QString();
}

} // namespace

void DocumentPages::addRoutes(HttpServer& server) {
    for (const NativeKind& kind : nativeKinds()) {
        const std::string folder = "/docs/" + kind.path.toStdString();
        const std::string formerFolder = '/' + kind.path.toStdString();
        server.Get(folder + "/create",
                   [this, &kind](const Request& request, Response& response) { create(kind, request, response); });
        for (const std::string& place : {folder, formerFolder})
            server.Get(place + "/d/([^/]+)/edit",
                       [this, &kind](const Request& request, Response& response) { edit(kind, request, response); });
    }
    server.Get("/viewer/([^/]+)",
               [this](const Request& request, Response& response) { showForPrinting(request, response); });
}

void DocumentPages::create(const NativeKind& kind, const Request& request, Response& response) const {
    const auto caller = guard_.visitor(request, response);
    if (!caller)
        return;
    if (!isOwnVisit(request))
        return askBeforeCreating(kind, request, response);
    const QString title = QStringLiteral("Untitled ") + QLatin1String(wordsOf(kind).noun);
    const QJsonObject resource{{QStringLiteral("mimeType"), kind.mimeType}, {QStringLiteral("title"), title}};
    const Result<QJsonObject> made = insert(resource, parameter(request, "folder"), *caller);
    if (!made) {
        return frame_.showMessage(500, QStringLiteral("Nothing was created"),
                                  made.error().detail(errorKey::reason).toString(), response);
    }
    const QString id = (*made)[QLatin1String("id")].toString();
    const QJsonObject nothing = NativeContent::empty(kind.path).toJson();
    if (const auto written = documents::write(store_, *caller, id, nothing, 0); !written)
        qWarning("A new document begins with its title: %s", qUtf8Printable(written.error().description()));
    response.set_header("Cache-Control", "no-store");
    response.set_redirect(editLink({}, kind.mimeType, id).toStdString());
}

// Where it was asked for, else in the root folder, and for guests, who have none, in no folder.
Result<QJsonObject> DocumentPages::insert(QJsonObject resource, const QString& folder, const Caller& caller) const {
    const QString root = QStringLiteral("root");
    const QList<QString> places{folder.isEmpty() ? root : folder, root, QString()};
    for (qsizetype i = 0;; ++i) {
        resource.insert(QStringLiteral("parents"), parentList(places[i]));
        const auto made = sharing::call(methods_, QStringLiteral("drive.files.insert"),
                                        {{QStringLiteral("resource"), resource}}, caller);
        if (made || i + 1 == places.size())
            return made;
    }
}

void DocumentPages::askBeforeCreating(const NativeKind& kind, const Request& request, Response& response) const {
    const QString page = frame_.pages().fill(
        QStringLiteral("docscreate"), {{QStringLiteral("noun"), QLatin1String(wordsOf(kind).noun)},
                                       {QStringLiteral("link"), createLink(kind, parameter(request, "folder"))}});
    PageTemplates::send(response, 200, page);
}

void DocumentPages::edit(const NativeKind& kind, const Request& request, Response& response) const {
    const auto caller = guard_.visitor(request, response);
    if (!caller)
        return;
    const QString id = pathPart(request, 1);
    const auto document = documents::read(store_, *caller, id);
    if (!document)
        return showMissing(*caller, response);
    if (document->file.mimeType != kind.mimeType)
        return response.set_redirect(editLink({}, document->file.mimeType, id).toStdString());
    const PageTemplates& pages = frame_.pages();
    QString exports;
    for (const ExportFormat& format : kind.formats) {
        exports +=
            pages.fill(QStringLiteral("docsexport"), {{QStringLiteral("link"), exportLink({}, kind, id, format.name)},
                                                      {QStringLiteral("label"), formatLabel(format.name)},
                                                      {QStringLiteral("extension"), format.name}});
    }
    const QString suffix = QStringLiteral(" - ") + QLatin1String(wordsOf(kind).application);
    const QByteArray state = QJsonDocument(stateOf(*document, kind, suffix)).toJson(QJsonDocument::Compact);
    PageTemplates::sendApplication(
        response, 200,
        pages.fill(QStringLiteral("docs"),
                   {{QStringLiteral("title"), document->file.title},
                    {QStringLiteral("suffix"), suffix},
                    {QStringLiteral("icon"), iconLink(pages, kind.mimeType)},
                    {QStringLiteral("kind"), kind.path},
                    {QStringLiteral("id"), id},
                    {QStringLiteral("email"), caller->user.emailAddress},
                    {QStringLiteral("key"), QString::fromLatin1(guard_.key(request))},
                    {QStringLiteral("state"), QString::fromUtf8(state)},
                    {QStringLiteral("noexports"), kind.formats.isEmpty() ? QStringLiteral("hidden") : QString()},
                    {QStringLiteral("exports"), exports}}));
}

std::optional<QString> DocumentPages::printed(const QString& fileId, const QJsonObject& file,
                                              const Caller& caller) const {
    if (const auto document = documents::read(store_, caller, fileId))
        return QString::fromUtf8(htmlBody(contentOf(*document)));
    const QString type = file[QLatin1String("mimeType")].toString();
    const PageTemplates& pages = frame_.pages();
    if (type.startsWith(QLatin1String("image/")))
        return pages.fill(QStringLiteral("printpicture"), {{QStringLiteral("id"), fileId}});
    if (type.startsWith(QLatin1String("text/")))
        return pages.fill(QStringLiteral("printtext"), {{QStringLiteral("text"), textPart(store_, caller, fileId)}});
    return std::nullopt;
}

void DocumentPages::showForPrinting(const Request& request, Response& response) const {
    const auto caller = guard_.visitor(request, response);
    if (!caller)
        return;
    const QString id = pathPart(request, 1);
    const auto file =
        sharing::call(methods_, QStringLiteral("drive.files.get"), {{QStringLiteral("fileId"), id}}, *caller);
    if (!file)
        return showMissing(*caller, response);
    const auto body = printed(id, *file, *caller);
    if (!body) {
        return frame_.showMessage(415, QStringLiteral("This file can't be printed here"),
                                  QStringLiteral("Download it, and print it with a program that shows it."), response);
    }
    const QString type = (*file)[QLatin1String("mimeType")].toString();
    const NativeKind* kind = nativeKind(type);
    const bool isPrinted = parameter(request, "print") == QLatin1String("true");
    const QString page = isPrinted ? QStringLiteral("print") : QStringLiteral("printview");
    PageTemplates::sendApplication(
        response, 200,
        frame_.pages().fill(page, {{QStringLiteral("title"), (*file)[QLatin1String("title")].toString()},
                                   {QStringLiteral("kind"), kind ? kind->path : QStringLiteral("file")},
                                   {QStringLiteral("icon"), iconLink(frame_.pages(), type)},
                                   {QStringLiteral("link"), (*file)[QLatin1String("alternateLink")].toString()},
                                   {QStringLiteral("body"), *body}}));
}

void DocumentPages::showMissing(const Caller& caller, Response& response) const {
    frame_.showMessage(404, QStringLiteral("Nothing to see here"),
                       QStringLiteral("It was deleted, or nobody has shared it with %1.").arg(caller.user.emailAddress),
                       response);
}

} // namespace quenby::localdrive
