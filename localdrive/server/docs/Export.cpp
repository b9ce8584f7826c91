#include "localdrive/server/docs/Export.h"

#include "localdrive/server/docs/OfficeDocuments.h"
#include "localdrive/server/docs/OpenDocument.h"
#include "localdrive/server/docs/Pictures.h"
#include "localdrive/server/docs/TextExports.h"

#include <QHash>

namespace quenby::localdrive {
namespace {

using Make = QByteArray (*)(const QString& title, const NativeContent& content);

// For formats that hold the content alone.
template <QByteArray (*make)(const NativeContent&)>
QByteArray untitled(const QString&, const NativeContent& content) {
    return make(content);
}

QByteArray png(const QString&, const NativeContent& content) { return picture(content, "png"); }
QByteArray jpeg(const QString&, const NativeContent& content) { return picture(content, "jpeg"); }

// Slides and drawings are pictures, others are texts and tables.
QByteArray pdf(const NativeKind& kind, const QString& title, const NativeContent& content) {
    const bool isPicture = kind.path == QLatin1String("presentation") || kind.path == QLatin1String("drawings");
    return isPicture ? slidesPdf(title, content) : sheetsPdf(title, content);
}

Make makerOf(const QString& format) {
    static const QHash<QString, Make> makers{
        {QStringLiteral("txt"), untitled<plainText>},
        {QStringLiteral("csv"), untitled<commaSeparated>},
        {QStringLiteral("tsv"), untitled<tabSeparated>},
        {QStringLiteral("svg"), untitled<svg>},
        {QStringLiteral("png"), png},
        {QStringLiteral("jpeg"), jpeg},
        {QStringLiteral("zip"), zippedPage},
        {QStringLiteral("odt"), untitled<openDocumentText>},
        {QStringLiteral("ods"), untitled<openDocumentSpreadsheet>},
        {QStringLiteral("docx"), untitled<officeText>},
        {QStringLiteral("xlsx"), untitled<officeSpreadsheet>},
        {QStringLiteral("pptx"), untitled<officePresentation>},
    };
    return makers.value(format);
}

const ExportFormat& formOfForms() {
    static const ExportFormat format{QStringLiteral("txt"), QStringLiteral("text/plain")};
    return format;
}

const ExportFormat* findFormat(const NativeKind& kind, const QString& name) {
    if (kind.formats.isEmpty())
        return name == formOfForms().name ? &formOfForms() : nullptr;
    const auto found = std::find_if(kind.formats.begin(), kind.formats.end(),
                                    [&name](const ExportFormat& format) { return format.name == name; });
    return found == kind.formats.end() ? nullptr : &*found;
}

} // namespace

NativeContent contentOf(const documents::Document& document) {
    const NativeKind* kind = nativeKind(document.file.mimeType);
    const NativeContent initial = NativeContent::initial(kind ? kind->path : QString(), document.file.title);
    return document.revision == 0 ? initial : NativeContent::fromJson(document.content).valueOr(initial);
}

std::optional<ExportedDocument> exportDocument(const documents::Document& document, const QString& format) {
    const NativeKind* kind = nativeKind(document.file.mimeType);
    const ExportFormat* found = kind ? findFormat(*kind, format) : nullptr;
    if (!found)
        return std::nullopt;
    const NativeContent content = contentOf(document);
    const QString& title = document.file.title;
    QByteArray type = found->mimeType.toLatin1();
    if (type.startsWith("text/"))
        type += "; charset=utf-8";
    if (format == QLatin1String("pdf"))
        return ExportedDocument{pdf(*kind, title, content), type};
    return ExportedDocument{makerOf(format)(title, content), type};
}

QString usualFormat(const NativeKind& kind) {
    return kind.formats.isEmpty() ? formOfForms().name : kind.formats.first().name;
}

} // namespace quenby::localdrive
