#include "localdrive/server/docs/OfficeDocuments.h"

#include "localdrive/server/docs/Markup.h"
#include "localdrive/server/docs/OfficePackage.h"

namespace quenby::localdrive {
namespace {

QByteArray wordText(const QString& line) {
    QByteArray xml;
    for (const QString& part : line.split(QLatin1Char('\t')))
        xml +=
            (xml.isEmpty() ? "" : "<w:tab/>") + QByteArray("<w:t xml:space=\"preserve\">") + escaped(part) + "</w:t>";
    return xml;
}

QByteArray wordParagraphs(const QString& text, const QByteArray& runProperties = {}) {
    QByteArray xml;
    for (const QString& line : text.split(QLatin1Char('\n')))
        xml += "<w:p><w:r>" + runProperties + wordText(line) + "</w:r></w:p>";
    return xml;
}

// 0 is A, 26 is AA.
QByteArray columnName(qsizetype column) {
    QByteArray name;
    for (; column >= 0; column = column / 26 - 1)
        name.prepend(static_cast<char>('A' + column % 26));
    return name;
}

QByteArray sheetRow(const QStringList& cells, qsizetype number) {
    const QByteArray row = QByteArray::number(number);
    QByteArray xml = "<row r=\"" + row + "\">";
    for (qsizetype column = 0; column < cells.size(); ++column)
        if (!cells[column].isEmpty())
            xml += "<c r=\"" + columnName(column) + row + "\" t=\"inlineStr\"><is><t xml:space=\"preserve\">" +
                   escaped(cells[column]) + "</t></is></c>";
    return xml + "</row>";
}

} // namespace

QByteArray officeText(const NativeContent& content) {
    QByteArray paragraphs;
    for (const Section& section : content.sections) {
        if (!section.title.isEmpty())
            paragraphs += wordParagraphs(section.title, "<w:rPr><w:b/><w:sz w:val=\"36\"/></w:rPr>");
        paragraphs += wordParagraphs(section.text);
    }
    const QByteArray page = "<w:sectPr><w:pgSz w:w=\"11906\" w:h=\"16838\"/><w:pgMar w:top=\"1440\" w:right=\"1440\" "
                            "w:bottom=\"1440\" w:left=\"1440\" w:header=\"708\" w:footer=\"708\" w:gutter=\"0\"/>"
                            "</w:sectPr>";
    OfficePackage package("word/document.xml");
    package.addPart("word/document.xml", "wordprocessingml.document.main",
                    "<w:document" + OfficePackage::xmlns("wordprocessingml", "w") + "><w:body>" + paragraphs + page +
                        "</w:body></w:document>");
    return package.bytes();
}

QByteArray officeSpreadsheet(const NativeContent& content) {
    const QByteArray space = OfficePackage::xmlns("spreadsheetml");
    QByteArray rows;
    for (qsizetype i = 0; i < content.rows.size(); ++i)
        rows += sheetRow(content.rows[i], i + 1);
    OfficePackage package("xl/workbook.xml");
    package.addPart("xl/workbook.xml", "spreadsheetml.sheet.main",
                    "<workbook" + space + OfficePackage::relationXmlns() +
                        "><sheets><sheet name=\"Sheet 1\" sheetId=\"1\" r:id=\"rId1\"/></sheets></workbook>",
                    {{"worksheet", "worksheets/sheet1.xml"}});
    package.addPart("xl/worksheets/sheet1.xml", "spreadsheetml.worksheet",
                    "<worksheet" + space + "><sheetData>" + rows + "</sheetData></worksheet>");
    return package.bytes();
}

} // namespace quenby::localdrive
