#include "localdrive/store/NativeTypes.h"

#include <algorithm>

namespace quenby::localdrive {
namespace {

ExportFormat format(const char* name, const char* mimeType) {
    return {QString::fromLatin1(name), QString::fromLatin1(mimeType)};
}

constexpr char officeText[] = "application/vnd.openxmlformats-officedocument.wordprocessingml.document";
constexpr char officeSheet[] = "application/vnd.openxmlformats-officedocument.spreadsheetml.sheet";
constexpr char officeSlides[] = "application/vnd.openxmlformats-officedocument.presentationml.presentation";

// Where a kind's exports are: at one address for all documents, at the document's, or below it.
QString exportPath(const NativeKind& kind, const QString& id, const QString& format) {
    if (kind.path == QLatin1String("document"))
        return QStringLiteral("export?format=%1&id=%2").arg(format, id);
    if (kind.path == QLatin1String("spreadsheets"))
        return QStringLiteral("d/%2/export?format=%1&id=%2").arg(format, id);
    return QStringLiteral("d/%2/export/%1?id=%2").arg(format, id);
}

struct IconRule {
    QLatin1String prefix; // of the MIME type
    QLatin1String icon;
};

constexpr IconRule iconRules[] = {
    {QLatin1String("image/"), QLatin1String("image")},
    {QLatin1String("video/"), QLatin1String("video")},
    {QLatin1String("audio/"), QLatin1String("audio")},
    {QLatin1String("text/"), QLatin1String("text")},
    {QLatin1String("application/pdf"), QLatin1String("pdf")},
    {QLatin1String("application/zip"), QLatin1String("archive")},
    {QLatin1String("application/x-tar"), QLatin1String("archive")},
    {QLatin1String("application/gzip"), QLatin1String("archive")},
    {QLatin1String("application/x-7z"), QLatin1String("archive")},
    {QLatin1String("application/json"), QLatin1String("text")},
    {QLatin1String("application/xml"), QLatin1String("text")},
    {QLatin1String("application/rtf"), QLatin1String("document")},
    {QLatin1String("application/msword"), QLatin1String("document")},
    {QLatin1String("application/vnd.oasis.opendocument.text"), QLatin1String("document")},
    {QLatin1String("application/vnd.openxmlformats-officedocument.wordprocessingml"), QLatin1String("document")},
    {QLatin1String("application/vnd.ms-excel"), QLatin1String("spreadsheet")},
    {QLatin1String("application/vnd.oasis.opendocument.spreadsheet"), QLatin1String("spreadsheet")},
    {QLatin1String("application/vnd.openxmlformats-officedocument.spreadsheetml"), QLatin1String("spreadsheet")},
    {QLatin1String("application/vnd.ms-powerpoint"), QLatin1String("presentation")},
    {QLatin1String("application/vnd.oasis.opendocument.presentation"), QLatin1String("presentation")},
    {QLatin1String("application/vnd.openxmlformats-officedocument.presentationml"), QLatin1String("presentation")},
};

} // namespace

bool isNativeType(const QString& mimeType) {
    return mimeType.startsWith(QLatin1String("application/vnd.google-apps."));
}

const std::vector<NativeKind>& nativeKinds() {
    static const std::vector<NativeKind> kinds{
        {QStringLiteral("application/vnd.google-apps.document"),
         QStringLiteral("document"),
         QStringLiteral("document"),
         {format("docx", officeText), format("odt", "application/vnd.oasis.opendocument.text"),
          format("txt", "text/plain"), format("pdf", "application/pdf"), format("zip", "application/zip")}},
        {QStringLiteral("application/vnd.google-apps.spreadsheet"),
         QStringLiteral("spreadsheets"),
         QStringLiteral("spreadsheet"),
         {format("xlsx", officeSheet), format("ods", "application/x-vnd.oasis.opendocument.spreadsheet"),
          format("pdf", "application/pdf"), format("csv", "text/csv"), format("tsv", "text/tab-separated-values"),
          format("zip", "application/zip")}},
        {QStringLiteral("application/vnd.google-apps.presentation"),
         QStringLiteral("presentation"),
         QStringLiteral("presentation"),
         {format("pptx", officeSlides), format("pdf", "application/pdf"), format("txt", "text/plain"),
          format("png", "image/png"), format("jpeg", "image/jpeg"), format("svg", "image/svg+xml")}},
        {QStringLiteral("application/vnd.google-apps.drawing"),
         QStringLiteral("drawings"),
         QStringLiteral("drawing"),
         {format("png", "image/png"), format("jpeg", "image/jpeg"), format("svg", "image/svg+xml"),
          format("pdf", "application/pdf")}},
        {QStringLiteral("application/vnd.google-apps.form"), QStringLiteral("forms"), QStringLiteral("form"), {}},
    };
    return kinds;
}

const NativeKind* nativeKind(const QString& mimeType) {
    const auto& kinds = nativeKinds();
    const auto found = std::find_if(kinds.begin(), kinds.end(),
                                    [&mimeType](const NativeKind& kind) { return kind.mimeType == mimeType; });
    return found == kinds.end() ? nullptr : &*found;
}

QStringList documentTypes() {
    QStringList types;
    for (const NativeKind& kind : nativeKinds())
        if (!kind.formats.isEmpty())
            types.append(kind.mimeType);
    return types;
}

QStringList exportTypes(const QString& mimeType) {
    QStringList types;
    if (const NativeKind* kind = nativeKind(mimeType))
        for (const ExportFormat& format : kind->formats)
            types.append(format.mimeType);
    return types;
}

QString exportLink(const QUrl& base, const NativeKind& kind, const QString& id, const QString& format) {
    return QStringLiteral("%1/docs/%2/%3").arg(base.toString(), kind.path, exportPath(kind, id, format));
}

QJsonObject exportLinks(const QUrl& base, const QString& mimeType, const QString& id) {
    QJsonObject links;
    if (const NativeKind* kind = nativeKind(mimeType))
        for (const ExportFormat& format : kind->formats)
            links.insert(format.mimeType, exportLink(base, *kind, id, format.name));
    return links;
}

QString editLink(const QUrl& base, const QString& mimeType, const QString& id) {
    const NativeKind* kind = nativeKind(mimeType);
    return kind ? QStringLiteral("%1/docs/%2/d/%3/edit").arg(base.toString(), kind->path, id) : QString();
}

QString iconName(const QString& mimeType) {
    if (mimeType == folderMimeType)
        return QStringLiteral("folder");
    if (const NativeKind* kind = nativeKind(mimeType))
        return kind->icon;
    for (const IconRule& rule : iconRules)
        if (mimeType.startsWith(rule.prefix))
            return rule.icon;
    return QStringLiteral("generic");
}

QStringList iconNames() {
    QStringList names{QStringLiteral("folder"), QStringLiteral("generic")};
    for (const NativeKind& kind : nativeKinds())
        names.append(kind.icon);
    for (const IconRule& rule : iconRules)
        if (!names.contains(rule.icon))
            names.append(rule.icon);
    return names;
}

} // namespace quenby::localdrive
