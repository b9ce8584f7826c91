// What an export link of a document yields. The Drive's own documents have no body yet, so an export is a document of
// the format that holds the title.
#pragma once

#include <QByteArray>
#include <QString>

#include <optional>

namespace quenby::localdrive {

struct ExportedDocument {
    QByteArray bytes;
    const char* mimeType;
};

// `format` as in the links: "txt", "csv", "tsv", "svg", "png", "pdf", "zip", "odt", "ods", "docx", "xlsx". Nothing for
// others.
std::optional<ExportedDocument> exportDocument(const QString& title, const QString& format);

} // namespace quenby::localdrive
