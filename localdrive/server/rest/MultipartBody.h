// Bodies of several parts (RFC 2046, section 5.1): "multipart/related" of an upload, "multipart/mixed" of a batch.
#pragma once

#include <QByteArray>
#include <QByteArrayView>
#include <QList>
#include <QPair>

#include <optional>

namespace quenby::localdrive {

struct MultipartPart {
    QList<QPair<QByteArray, QByteArray>> headers;
    QByteArray content;

    // Empty when there is no such header.
    QByteArray header(QByteArrayView name) const;

    // Header lines, an empty line and the content. Lines may end with LF alone.
    static MultipartPart parse(QByteArrayView bytes);
};

// The parts between the boundary lines that the content type announces. Nothing when it names no boundary, or the
// closing line is missing.
std::optional<QList<MultipartPart>> multipartParts(const QByteArray& contentType, const QByteArray& body);

} // namespace quenby::localdrive
