#include "localdrive/store/Links.h"

#include "localdrive/store/NativeTypes.h"

namespace quenby::localdrive::links {
namespace {

// The picture itself is the thumbnail, which has to be something that a list of files would load.
constexpr qint64 largestThumbnail = 4 * 1024 * 1024;

bool isPicture(const QString& mimeType) {
    return mimeType.startsWith(QLatin1String("image/")) && !mimeType.startsWith(QLatin1String("image/svg"));
}

} // namespace

QString api(const QUrl& base, const QStringList& path) {
    QString address = base.toString() + QStringLiteral("/drive/v2");
    for (const QString& part : path)
        address += QLatin1Char('/') + QString::fromLatin1(QUrl::toPercentEncoding(part));
    return address;
}

QString download(const QUrl& base, const QString& fileId, const QString& revisionId) {
    const QString address = api(base, {QStringLiteral("files"), fileId}) + QStringLiteral("?alt=media");
    return revisionId.isEmpty() ? address : address + QStringLiteral("&revisionId=") + revisionId;
}

QString page(const QUrl& base, const FileRecord& file) {
    if (file.isFolder())
        return QStringLiteral("%1/drive/folders/%2").arg(base.toString(), file.id);
    const QString edit = editLink(base, file.mimeType, file.id);
    return edit.isEmpty() ? QStringLiteral("%1/file/d/%2/view").arg(base.toString(), file.id) : edit;
}

QString icon(const QUrl& base, const QString& mimeType) {
    return QStringLiteral("%1/icons/%2.png").arg(base.toString(), iconName(mimeType));
}

QString face(const QUrl& base, const QString& permissionId) {
    return QStringLiteral("%1/faces/%2.png").arg(base.toString(), permissionId);
}

QString thumbnail(const QUrl& base, const FileRecord& file) {
    if (!file.hasContent() || !isPicture(file.mimeType) || file.size > largestThumbnail)
        return {};
    return QStringLiteral("%1/thumbnails/%2?revision=%3").arg(base.toString(), file.id, file.headRevision);
}

} // namespace quenby::localdrive::links
