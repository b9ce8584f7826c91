#include "localdrive/server/docs/TextExports.h"

#include "localdrive/server/docs/FileNames.h"
#include "localdrive/server/docs/Markup.h"
#include "localdrive/server/docs/ZipArchive.h"

#include <algorithm>

namespace quenby::localdrive {
namespace {

QByteArray quotedIfNeeded(const QString& cell) {
    const bool isPlain = std::none_of(cell.begin(), cell.end(), [](QChar character) {
        return character == QLatin1Char('"') || character == QLatin1Char(',') || character == QLatin1Char('\n');
    });
    return isPlain ? cell.toUtf8() : '"' + cell.toUtf8().replace('"', "\"\"") + '"';
}

QByteArray withoutBreaks(const QString& cell) {
    return QString(cell)
        .replace(QLatin1Char('\t'), QLatin1Char(' '))
        .replace(QLatin1Char('\n'), QLatin1Char(' '))
        .toUtf8();
}

QByteArray separated(const NativeContent& content, QByteArray (*cellText)(const QString&), char separator,
                     const char* lineEnd) {
    QByteArray text;
    const qsizetype columns = content.columnCount();
    for (const QStringList& row : content.rows) {
        for (qsizetype column = 0; column < columns; ++column)
            text += (column > 0 ? QByteArray(1, separator) : QByteArray()) + cellText(row.value(column));
        text += lineEnd;
    }
    return text;
}

QByteArray htmlTable(const NativeContent& content) {
    QByteArray table = "<table>\n";
    const qsizetype columns = content.columnCount();
    for (const QStringList& row : content.rows) {
        table += "<tr>";
        for (qsizetype column = 0; column < columns; ++column)
            table += "<td>" + escaped(row.value(column)).replace('\n', "<br>") + "</td>";
        table += "</tr>\n";
    }
    return table + "</table>\n";
}

QByteArray htmlSection(const Section& section) {
    QByteArray html = "<section>\n";
    if (!section.title.isEmpty())
        html += "<h2>" + escaped(section.title) + "</h2>\n";
    for (const QString& line : section.text.split(QLatin1Char('\n')))
        html += "<p>" + (line.isEmpty() ? QByteArray("&nbsp;") : escaped(line)) + "</p>\n";
    return html + "</section>\n";
}

} // namespace

QByteArray plainText(const NativeContent& content) {
    QStringList parts;
    for (const Section& section : content.sections) {
        QStringList lines;
        for (const QString& part : {section.title, section.text})
            if (!part.isEmpty())
                lines.append(part);
        parts.append(lines.join(QLatin1Char('\n')));
    }
    return parts.join(QLatin1String("\n\n")).toUtf8() + '\n';
}

QByteArray commaSeparated(const NativeContent& content) { return separated(content, quotedIfNeeded, ',', "\r\n"); }

QByteArray tabSeparated(const NativeContent& content) { return separated(content, withoutBreaks, '\t', "\n"); }

QByteArray htmlBody(const NativeContent& content) {
    QByteArray html;
    for (const Section& section : content.sections)
        html += htmlSection(section);
    return content.rows.isEmpty() ? html : html + htmlTable(content);
}

QByteArray zippedPage(const QString& title, const NativeContent& content) {
    ZipArchive archive;
    archive.add(fileName(title, QStringLiteral(".html")).toUtf8(),
                "<!DOCTYPE html>\n<html>\n<head>\n<meta charset=\"utf-8\">\n<title>" + escaped(printable(title)) +
                    "</title>\n<style>body { font-family: sans-serif; } p { margin: 0; white-space: pre-wrap; } "
                    "table { border-collapse: collapse; } td { border: 1px solid #999; padding: 2px 6px; }"
                    "</style>\n</head>\n<body>\n" +
                    htmlBody(content) + "</body>\n</html>\n");
    return archive.bytes();
}

} // namespace quenby::localdrive
