// What an export link of a document yields.
#pragma once

#include "localdrive/server/docs/NativeContent.h"
#include "localdrive/store/Documents.h"
#include "localdrive/store/NativeTypes.h"

#include <QByteArray>
#include <QString>

#include <optional>

namespace quenby::localdrive {

struct ExportedDocument {
    QByteArray bytes;
    QByteArray mimeType;
};

// What a document holds; its title while nobody has written to it.
NativeContent contentOf(const documents::Document& document);

// The document in one of its kind's formats (NativeKind::formats); nothing for others. Forms, which have none, can be
// had as "txt". Threads: any, in a program with a QGuiApplication.
std::optional<ExportedDocument> exportDocument(const documents::Document& document, const QString& format);

// The format for whoever does not choose one.
QString usualFormat(const NativeKind& kind);

} // namespace quenby::localdrive
