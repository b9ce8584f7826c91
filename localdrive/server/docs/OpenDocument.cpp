#include "localdrive/server/docs/OpenDocument.h"

#include "localdrive/server/docs/Markup.h"
#include "localdrive/server/docs/ZipArchive.h"

namespace quenby::localdrive {
namespace {

// The type comes first and uncompressed, so that it can be seen without unpacking.
QByteArray package(const QByteArray& type, const QByteArray& bodyXml) {
    ZipArchive archive;
    archive.add("mimetype", type);
    archive.add("META-INF/manifest.xml",
                xmlHead +
                    QByteArray("<manifest:manifest manifest:version=\"1.2\" "
                               "xmlns:manifest=\"urn:oasis:names:tc:opendocument:xmlns:manifest:1.0\">"
                               "<manifest:file-entry manifest:full-path=\"/\" manifest:version=\"1.2\" "
                               "manifest:media-type=\"") +
                    type +
                    "\"/><manifest:file-entry manifest:full-path=\"content.xml\" "
                    "manifest:media-type=\"text/xml\"/></manifest:manifest>");
    archive.add("content.xml",
                xmlHead +
                    QByteArray("<office:document-content office:version=\"1.2\" "
                               "xmlns:office=\"urn:oasis:names:tc:opendocument:xmlns:office:1.0\" "
                               "xmlns:table=\"urn:oasis:names:tc:opendocument:xmlns:table:1.0\" "
                               "xmlns:text=\"urn:oasis:names:tc:opendocument:xmlns:text:1.0\"><office:body>") +
                    bodyXml + "</office:body></office:document-content>");
    return archive.bytes();
}

// Readers make one blank of several, as in HTML; the others have elements of their own.
QByteArray paragraph(const QString& line) {
    QByteArray xml = "<text:p>";
    bool isAfterBlank = true;
    QString plain;
    const auto flush = [&] {
        xml += escaped(plain);
        plain.clear();
    };
    for (const QChar character : line) {
        const bool isBlank = character == QLatin1Char(' ');
        if (character == QLatin1Char('\t') || (isBlank && isAfterBlank)) {
            flush();
            xml += isBlank ? "<text:s/>" : "<text:tab/>";
        } else {
            plain += character;
        }
        isAfterBlank = isBlank || character == QLatin1Char('\t');
    }
    flush();
    return xml + "</text:p>";
}

QByteArray paragraphs(const QString& text) {
    QByteArray xml;
    for (const QString& line : text.split(QLatin1Char('\n')))
        xml += paragraph(line);
    return xml;
}

} // namespace

QByteArray openDocumentText(const NativeContent& content) {
    QByteArray xml;
    for (const Section& section : content.sections) {
        if (!section.title.isEmpty())
            xml += "<text:h text:outline-level=\"1\">" + escaped(section.title) + "</text:h>";
        xml += paragraphs(section.text);
    }
    return package("application/vnd.oasis.opendocument.text", "<office:text>" + xml + "</office:text>");
}

QByteArray openDocumentSpreadsheet(const NativeContent& content) {
    QByteArray rows;
    for (const QStringList& row : content.rows) {
        rows += "<table:table-row>";
        for (const QString& cell : row)
            rows += cell.isEmpty()
                        ? QByteArray("<table:table-cell/>")
                        : "<table:table-cell office:value-type=\"string\">" + paragraphs(cell) + "</table:table-cell>";
        rows += row.isEmpty() ? "<table:table-cell/></table:table-row>" : "</table:table-row>";
    }
    if (rows.isEmpty())
        rows = "<table:table-row><table:table-cell/></table:table-row>";
    const QByteArray columns = QByteArray::number(std::max<qsizetype>(1, content.columnCount()));
    return package("application/vnd.oasis.opendocument.spreadsheet",
                   "<office:spreadsheet><table:table table:name=\"Sheet 1\"><table:table-column "
                   "table:number-columns-repeated=\"" +
                       columns + "\"/>" + rows + "</table:table></office:spreadsheet>");
}

} // namespace quenby::localdrive
