#include "localdrive/server/web/Export.h"

#include "localdrive/server/web/Drawing.h"
#include "localdrive/server/web/ZipArchive.h"

#include <QHash>

#include <functional>

namespace quenby::localdrive {
namespace {

constexpr char xmlHead[] = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n";

QByteArray escaped(const QString& title) { return title.toHtmlEscaped().toUtf8(); }

QByteArray svg(const QString& title) {
    return xmlHead +
           QByteArray("<svg xmlns=\"http://www.w3.org/2000/svg\" viewBox=\"0 0 320 180\">"
                      "<text x=\"20\" y=\"95\" font-family=\"sans-serif\">") +
           escaped(title) + "</text></svg>\n";
}

// PDF 1.4 with one page. Characters outside ASCII would need a font of their own; they become "?".
QByteArray pdf(const QString& title) {
    QByteArray text;
    for (const QChar character : title) {
        const bool isPlain = character >= QLatin1Char(' ') && character <= QLatin1Char('~');
        if (character == QLatin1Char('(') || character == QLatin1Char(')') || character == QLatin1Char('\\'))
            text += '\\';
        text += isPlain ? character.toLatin1() : '?';
    }
    const QByteArray drawing = "BT /F1 18 Tf 72 740 Td (" + text + ") Tj ET";
    const QList<QByteArray> objects{
        "<< /Type /Catalog /Pages 2 0 R >>",
        "<< /Type /Pages /Kids [3 0 R] /Count 1 >>",
        "<< /Type /Page /Parent 2 0 R /MediaBox [0 0 595 842] /Contents 4 0 R "
        "/Resources << /Font << /F1 << /Type /Font /Subtype /Type1 /BaseFont /Helvetica >> >> >> >>",
        "<< /Length " + QByteArray::number(drawing.size()) + " >>\nstream\n" + drawing + "\nendstream",
    };
    QByteArray file = "%PDF-1.4\n";
    QByteArray table = "0000000000 65535 f \n";
    for (qsizetype i = 0; i < objects.size(); ++i) {
        table += QByteArray::number(file.size()).rightJustified(10, '0') + " 00000 n \n";
        file += QByteArray::number(i + 1) + " 0 obj\n" + objects[i] + "\nendobj\n";
    }
    const QByteArray count = QByteArray::number(objects.size() + 1);
    const QByteArray start = QByteArray::number(file.size());
    return file + "xref\n0 " + count + '\n' + table + "trailer\n<< /Size " + count + " /Root 1 0 R >>\nstartxref\n" +
           start + "\n%%EOF\n";
}

QByteArray zip(const QString& title) {
    ZipArchive archive;
    archive.add("document.txt", title.toUtf8() + '\n');
    return archive.bytes();
}

// OpenDocument 1.2: the type comes first and uncompressed.
QByteArray openDocument(const QByteArray& type, const QByteArray& bodyXml) {
    ZipArchive archive;
    archive.add("mimetype", type);
    archive.add("META-INF/manifest.xml",
                xmlHead +
                    QByteArray("<manifest:manifest manifest:version=\"1.2\" "
                               "xmlns:manifest=\"urn:oasis:names:tc:opendocument:xmlns:manifest:1.0\">"
                               "<manifest:file-entry manifest:full-path=\"/\" manifest:media-type=\"") +
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

QByteArray odt(const QString& title) {
    return openDocument("application/vnd.oasis.opendocument.text",
                        "<office:text><text:p>" + escaped(title) + "</text:p></office:text>");
}

QByteArray ods(const QString& title) {
    return openDocument("application/vnd.oasis.opendocument.spreadsheet",
                        "<office:spreadsheet><table:table table:name=\"1\"><table:table-row><table:table-cell "
                        "office:value-type=\"string\"><text:p>" +
                            escaped(title) +
                            "</text:p></table:table-cell></table:table-row></table:table></office:spreadsheet>");
}

constexpr char officeNamespace[] = "http://schemas.openxmlformats.org/";

// Office Open XML (ECMA-376): a package whose main part is found through its relationships.
class OfficePackage {
public:
    void addPart(const QByteArray& name, const QByteArray& type, const QByteArray& content) {
        types_ += "<Override PartName=\"/" + name + "\" ContentType=\"application/vnd.openxmlformats-officedocument." +
                  type + "+xml\"/>";
        archive_.add(name, xmlHead + content);
    }

    // `owner`: the part that refers to the target, empty for the package.
    void addRelation(const QByteArray& folder, const QByteArray& owner, const QByteArray& type,
                     const QByteArray& target) {
        archive_.add(folder + "_rels/" + owner + ".rels",
                     xmlHead + QByteArray("<Relationships xmlns=\"") + officeNamespace +
                         "package/2006/relationships\"><Relationship Id=\"r1\" Type=\"" + officeNamespace +
                         "officeDocument/2006/relationships/" + type + "\" Target=\"" + target +
                         "\"/></Relationships>");
    }

    QByteArray bytes() {
        archive_.add("[Content_Types].xml",
                     xmlHead + QByteArray("<Types xmlns=\"") + officeNamespace +
                         "package/2006/content-types\"><Default Extension=\"rels\" "
                         "ContentType=\"application/vnd.openxmlformats-package.relationships+xml\"/>" +
                         types_ + "</Types>");
        return archive_.bytes();
    }

private:
    ZipArchive archive_;
    QByteArray types_;
};

QByteArray docx(const QString& title) {
    OfficePackage package;
    package.addRelation({}, {}, "officeDocument", "word/document.xml");
    package.addPart("word/document.xml", "wordprocessingml.document.main",
                    QByteArray("<w:document xmlns:w=\"") + officeNamespace +
                        "wordprocessingml/2006/main\"><w:body><w:p><w:r><w:t>" + escaped(title) +
                        "</w:t></w:r></w:p></w:body></w:document>");
    return package.bytes();
}

QByteArray xlsx(const QString& title) {
    const QByteArray space = QByteArray(" xmlns=\"") + officeNamespace + "spreadsheetml/2006/main\"";
    OfficePackage package;
    package.addRelation({}, {}, "officeDocument", "xl/workbook.xml");
    package.addRelation("xl/", "workbook.xml", "worksheet", "sheet1.xml");
    package.addPart("xl/workbook.xml", "spreadsheetml.sheet.main",
                    "<workbook" + space + " xmlns:r=\"" + officeNamespace +
                        "officeDocument/2006/relationships\"><sheets><sheet name=\"1\" sheetId=\"1\" "
                        "r:id=\"r1\"/></sheets></workbook>");
    package.addPart("xl/sheet1.xml", "spreadsheetml.worksheet",
                    "<worksheet" + space + "><sheetData><row r=\"1\"><c r=\"A1\" t=\"inlineStr\"><is><t>" +
                        escaped(title) + "</t></is></c></row></sheetData></worksheet>");
    return package.bytes();
}

QByteArray line(const QString& title) { return title.toUtf8() + '\n'; }

QByteArray csv(const QString& title) { return '"' + title.toUtf8().replace('"', "\"\"") + "\"\r\n"; }

QByteArray png(const QString&) { return iconPng(QStringLiteral("document")).value_or(QByteArray()); }

struct Format {
    QByteArray (*make)(const QString& title);
    const char* mimeType;
};

} // namespace

std::optional<ExportedDocument> exportDocument(const QString& title, const QString& format) {
    static const QHash<QString, Format> formats{
        {QStringLiteral("txt"), {line, "text/plain; charset=utf-8"}},
        {QStringLiteral("csv"), {csv, "text/csv"}},
        {QStringLiteral("tsv"), {line, "text/tab-separated-values"}},
        {QStringLiteral("svg"), {svg, "image/svg+xml"}},
        {QStringLiteral("png"), {png, "image/png"}},
        {QStringLiteral("pdf"), {pdf, "application/pdf"}},
        {QStringLiteral("zip"), {zip, "application/zip"}},
        {QStringLiteral("odt"), {odt, "application/vnd.oasis.opendocument.text"}},
        {QStringLiteral("ods"), {ods, "application/x-vnd.oasis.opendocument.spreadsheet"}},
        {QStringLiteral("docx"), {docx, "application/vnd.openxmlformats-officedocument.wordprocessingml.document"}},
        {QStringLiteral("xlsx"), {xlsx, "application/vnd.openxmlformats-officedocument.spreadsheetml.sheet"}},
    };
    const auto found = formats.find(format);
    if (found == formats.end())
        return std::nullopt;
    return ExportedDocument{found->make(title), found->mimeType};
}

} // namespace quenby::localdrive
