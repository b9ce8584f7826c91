#include "localdrive/store/NativeTypes.h"

#include <algorithm>
#include <vector>

namespace quenby::localdrive {
namespace {

struct ExportFormat {
    QString mimeType;
    QString path; // below the application's address; the document's id follows or, for %1, stands inside
};

struct NativeKind {
    QString mimeType;
    QString application; // first part of its pages' paths
    QString icon;
    std::vector<ExportFormat> formats;
};

const std::vector<NativeKind>& nativeKinds() {
    static const std::vector<NativeKind> kinds{
        {QStringLiteral("application/vnd.google-apps.document"),
         QStringLiteral("document"),
         QStringLiteral("document"),
         {{QStringLiteral("application/vnd.openxmlformats-officedocument.wordprocessingml.document"),
           QStringLiteral("export?format=docx&id=%1")},
          {QStringLiteral("application/vnd.oasis.opendocument.text"), QStringLiteral("export?format=odt&id=%1")},
          {QStringLiteral("text/plain"), QStringLiteral("export?format=txt&id=%1")},
          {QStringLiteral("application/pdf"), QStringLiteral("export?format=pdf&id=%1")},
          {QStringLiteral("application/zip"), QStringLiteral("export?format=zip&id=%1")}}},
        {QStringLiteral("application/vnd.google-apps.spreadsheet"),
         QStringLiteral("spreadsheets"),
         QStringLiteral("spreadsheet"),
         {{QStringLiteral("application/vnd.openxmlformats-officedocument.spreadsheetml.sheet"),
           QStringLiteral("export?format=xlsx&id=%1")},
          {QStringLiteral("application/x-vnd.oasis.opendocument.spreadsheet"),
           QStringLiteral("export?format=ods&id=%1")},
          {QStringLiteral("application/pdf"), QStringLiteral("export?format=pdf&id=%1")},
          {QStringLiteral("text/csv"), QStringLiteral("export?format=csv&id=%1")},
          {QStringLiteral("text/tab-separated-values"), QStringLiteral("export?format=tsv&id=%1")},
          {QStringLiteral("application/zip"), QStringLiteral("export?format=zip&id=%1")}}},
        {QStringLiteral("application/vnd.google-apps.presentation"),
         QStringLiteral("presentation"),
         QStringLiteral("presentation"),
         {{QStringLiteral("text/plain"), QStringLiteral("d/%1/export/txt?id=%1")},
          {QStringLiteral("application/vnd.openxmlformats-officedocument.presentationml.presentation"),
           QStringLiteral("d/%1/export/pptx?id=%1")},
          {QStringLiteral("image/jpeg"), QStringLiteral("d/%1/export/jpeg?id=%1")},
          {QStringLiteral("image/png"), QStringLiteral("d/%1/export/png?id=%1")},
          {QStringLiteral("application/pdf"), QStringLiteral("d/%1/export/pdf?id=%1")},
          {QStringLiteral("image/svg+xml"), QStringLiteral("d/%1/export/svg?id=%1")}}},
        {QStringLiteral("application/vnd.google-apps.drawing"),
         QStringLiteral("drawings"),
         QStringLiteral("drawing"),
         {{QStringLiteral("application/pdf"), QStringLiteral("d/%1/export/pdf?id=%1")},
          {QStringLiteral("image/svg+xml"), QStringLiteral("d/%1/export/svg?id=%1")},
          {QStringLiteral("image/png"), QStringLiteral("d/%1/export/png?id=%1")},
          {QStringLiteral("image/jpeg"), QStringLiteral("d/%1/export/jpeg?id=%1")}}},
    };
    return kinds;
}

const NativeKind* kindOf(const QString& mimeType) {
    const auto& kinds = nativeKinds();
    const auto found = std::find_if(kinds.begin(), kinds.end(),
                                    [&mimeType](const NativeKind& kind) { return kind.mimeType == mimeType; });
    return found == kinds.end() ? nullptr : &*found;
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

QStringList documentTypes() {
    QStringList types;
    for (const NativeKind& kind : nativeKinds())
        types.append(kind.mimeType);
    return types;
}

QStringList exportTypes(const QString& mimeType) {
    QStringList types;
    if (const NativeKind* kind = kindOf(mimeType))
        for (const ExportFormat& format : kind->formats)
            types.append(format.mimeType);
    return types;
}

QJsonObject exportLinks(const QUrl& base, const QString& mimeType, const QString& id) {
    QJsonObject links;
    if (const NativeKind* kind = kindOf(mimeType))
        for (const ExportFormat& format : kind->formats)
            links.insert(format.mimeType,
                         QStringLiteral("%1/%2/%3").arg(base.toString(), kind->application, format.path.arg(id)));
    return links;
}

QString editLink(const QUrl& base, const QString& mimeType, const QString& id) {
    const NativeKind* kind = kindOf(mimeType);
    return kind ? QStringLiteral("%1/%2/d/%3/edit").arg(base.toString(), kind->application, id) : QString();
}

QString iconName(const QString& mimeType) {
    if (mimeType == folderMimeType)
        return QStringLiteral("folder");
    if (const NativeKind* kind = kindOf(mimeType))
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
