#include "localdrive/server/rest/MultipartBody.h"

#include <QRegularExpression>
#include <QString>

namespace quenby::localdrive {
namespace {

QByteArray boundaryOf(const QByteArray& contentType) {
    static const QRegularExpression form(
        QStringLiteral("^multipart/[a-z]+\\s*;(?:.*;)?\\s*boundary=(?:\"([^\"]+)\"|([^\\s;]+))"),
        QRegularExpression::CaseInsensitiveOption);
    const auto match = form.match(QString::fromLatin1(contentType));
    return (match.captured(1).isEmpty() ? match.captured(2) : match.captured(1)).toLatin1();
}

// Behind the line's end; -1 when the delimiter does not end a line there.
qsizetype behindLine(const QByteArray& body, qsizetype from) {
    while (from < body.size() && (body[from] == ' ' || body[from] == '\t'))
        ++from;
    if (body.mid(from, 2) == "\r\n")
        return from + 2;
    return body.mid(from, 1) == "\n" ? from + 1 : -1;
}

// The line break before a delimiter belongs to the delimiter.
QByteArrayView withoutLineEnd(QByteArrayView bytes) {
    if (bytes.endsWith(QByteArrayView("\r\n")))
        return bytes.chopped(2);
    return bytes.endsWith('\n') ? bytes.chopped(1) : bytes;
}

} // namespace

QByteArray MultipartPart::header(QByteArrayView name) const {
    for (const auto& [key, value] : headers)
        if (name.compare(key, Qt::CaseInsensitive) == 0)
            return value;
    return {};
}

MultipartPart MultipartPart::parse(QByteArrayView bytes) {
    MultipartPart part;
    while (!bytes.isEmpty()) {
        const qsizetype end = bytes.indexOf('\n');
        const QByteArray line = bytes.first(end < 0 ? bytes.size() : end).toByteArray().trimmed();
        bytes = end < 0 ? QByteArrayView() : bytes.sliced(end + 1);
        if (line.isEmpty())
            break;
        const qsizetype colon = line.indexOf(':');
        part.headers.append({line.left(colon).trimmed(), colon < 0 ? QByteArray() : line.mid(colon + 1).trimmed()});
    }
    part.content = bytes.toByteArray();
    return part;
}

std::optional<QList<MultipartPart>> multipartParts(const QByteArray& contentType, const QByteArray& body) {
    const QByteArray boundary = boundaryOf(contentType);
    if (boundary.isEmpty())
        return std::nullopt;
    const QByteArray delimiter = "--" + boundary;
    QList<MultipartPart> parts;
    qsizetype begin = -1; // of the part that is being read
    for (qsizetype at = body.indexOf(delimiter); at >= 0; at = body.indexOf(delimiter, at + 1)) {
        if (at > 0 && body[at - 1] != '\n')
            continue;
        const qsizetype behind = at + delimiter.size();
        const bool isLast = body.mid(behind, 2) == "--";
        const qsizetype next = behindLine(body, behind);
        if (!isLast && next < 0)
            continue; // some other line that begins alike
        if (begin >= 0)
            parts.append(MultipartPart::parse(withoutLineEnd(QByteArrayView(body).sliced(begin, at - begin))));
        if (isLast)
            return parts;
        begin = next;
    }
    return std::nullopt;
}

} // namespace quenby::localdrive
