#include "localdrive/server/web/FilePage.h"

#include "localdrive/server/web/FileRows.h"
#include "localdrive/server/web/FileTexts.h"
#include "localdrive/store/FileTree.h"
#include "localdrive/store/Links.h"
#include "localdrive/store/NativeTypes.h"

#include <QFile>
#include <QMimeDatabase>

namespace quenby::localdrive {
namespace {

using httplib::Request;
using httplib::Response;

constexpr qint64 shownOfText = qint64{256} * 1024;

// What browsers show as a picture. SVG can run nothing there: it is shown as an image.
bool isPicture(const QString& mimeType) {
    static const QStringList shown{QStringLiteral("image/png"),    QStringLiteral("image/jpeg"),
                                   QStringLiteral("image/gif"),    QStringLiteral("image/webp"),
                                   QStringLiteral("image/avif"),   QStringLiteral("image/bmp"),
                                   QStringLiteral("image/x-icon"), QStringLiteral("image/svg+xml")};
    return shown.contains(mimeType);
}

bool isText(const QString& mimeType) {
    const QMimeType type = QMimeDatabase().mimeTypeForName(mimeType);
    return mimeType.startsWith(QLatin1String("text/")) ||
           (type.isValid() && type.inherits(QStringLiteral("text/plain")));
}

} // namespace

void FilePage::addRoutes(HttpServer& server) {
    const auto show = [this](const Request& request, Response& response) {
        const QString id = pathPart(request, 1);
        QString elsewhere; // folders and documents have pages of their own
        const auto fill = [&](Work& work, PageTemplates::Values& values) -> Result<QString> {
            const Result<FileRecord> file = findFile(work, id);
            if (file && isNativeType(file->mimeType))
                elsewhere = links::page(QUrl(), *file);
            return page(id, work, values);
        };
        frame_.answer({}, fill, request, response);
        if (!elsewhere.isEmpty() && elsewhere.toStdString() != request.path)
            response.set_redirect(elsewhere.toStdString());
    };
    server.Get("/file/d/([^/]+)/view", show);
    server.Get("/file/([^/]+)", show);
}

Result<QString> FilePage::page(const QString& fileId, Work& work, PageTemplates::Values& values) const {
    const Result<FileRecord> found = findFile(work, fileId);
    if (!found)
        return found.error();
    const FileRecord& file = *found;
    const PageTemplates& pages = frame_.pages();
    const ListedFile listed = FileBrowser(work).listed(file);
    values.insert(QStringLiteral("data"), dataAttributes(listed, pages));
    values.insert(QStringLiteral("title"), file.title);
    values.insert(QStringLiteral("icon"), pages.assetLink(QStringLiteral("icons/%1.svg").arg(typeIcon(file.mimeType))));
    values.insert(QStringLiteral("link"), links::page(QUrl(), file));
    values.insert(QStringLiteral("place"), file.trashed ? QStringLiteral("trash") : QStringLiteral("file"));
    values.insert(QStringLiteral("notice"), file.trashed ? pages.fill(QStringLiteral("trashed"), {}) : QString());
    values.insert(QStringLiteral("type"), typeText(file.mimeType));
    values.insert(QStringLiteral("mimetype"), file.mimeType);
    values.insert(QStringLiteral("size"), sizeText(file));
    values.insert(QStringLiteral("created"), longDateText(file.created));
    values.insert(QStringLiteral("modified"), longDateText(file.modified));
    values.insert(QStringLiteral("modifier"), work.user(file.modifiedBy)[QLatin1String("displayName")].toString());
    values.insert(QStringLiteral("owner"), listed.owner.isEmpty() ? QStringLiteral("me") : listed.owner);
    values.insert(QStringLiteral("location"), location(file, work));
    values.insert(QStringLiteral("preview"), preview(file));
    return pages.fill(QStringLiteral("file"), values);
}

QString FilePage::preview(const FileRecord& file) const {
    const PageTemplates& pages = frame_.pages();
    if (file.hasContent() && isPicture(file.mimeType)) {
        return pages.fill(
            QStringLiteral("previewpicture"),
            {{QStringLiteral("source"), QStringLiteral("/thumbnails/%1?revision=%2").arg(file.id, file.headRevision)},
             {QStringLiteral("title"), file.title}});
    }
    QFile content(file.hasContent() && isText(file.mimeType) ? store_.blobs().path(file.blobId) : QString());
    if (!content.fileName().isEmpty() && content.open(QIODevice::ReadOnly)) {
        QString text = QString::fromUtf8(content.read(shownOfText));
        const bool isWhole = content.atEnd();
        // A page can't hold it, and nobody sees it.
        text.remove(QChar(u'\0'));
        return pages.fill(
            QStringLiteral("previewtext"),
            {{QStringLiteral("text"), text},
             {QStringLiteral("rest"), isWhole ? QString() : QStringLiteral("Only the first 256 kB are shown here.")}});
    }
    return pages.fill(
        QStringLiteral("previewnone"),
        {{QStringLiteral("icon"), pages.assetLink(QStringLiteral("icons/%1.svg").arg(typeIcon(file.mimeType)))}});
}

QString FilePage::location(const FileRecord& file, Work& work) const {
    const QList<NamedFolder> way = FileBrowser(work).way(FileTree(work).parents(file.id).value(0));
    if (way.isEmpty())
        return frame_.pages().fill(QStringLiteral("locationlink"),
                                   {{QStringLiteral("link"), QStringLiteral("/drive/shared")},
                                    {QStringLiteral("title"), QStringLiteral("Shared with me")}});
    return frame_.pages().fill(QStringLiteral("locationlink"),
                               {{QStringLiteral("link"), QStringLiteral("/drive/folders/") + way.last().id},
                                {QStringLiteral("title"), way.last().title}});
}

} // namespace quenby::localdrive
